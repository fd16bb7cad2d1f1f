#include "examples/frameloop/Text.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace hostapp {

CString Wide(const std::string& text)
{
    CString wide;
    wide.Format(L"%hs", text.c_str());
    return wide;
}

std::wstring Printable(const std::string& text)
{
    std::wstring printable = Wide(text).GetString();
    std::ranges::replace_if(
        printable, [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); }, L'?');
    return printable;
}

std::string Fixed(double number, int digits)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << number;
    return text.str();
}

} // namespace hostapp
