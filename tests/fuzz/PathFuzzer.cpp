/// @file
/// Watched paths: what is kept of them, and what the system is asked for.

#include "qmUtility/filecheck/QMFileCheck.h"
#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/stat.h>

#include <climits>
#include <clocale>
#include <cwctype>
#include <string_view>

namespace {

/// The path that the system was last asked for.
std::string asked;

} // namespace

// The library asks for a file's status with this.
extern "C" int statx(int, const char* path, int, unsigned, struct statx*)
{
    asked = path;
    return -1;
}

namespace {

class Kept : public CQMFileCheck
{
public:
    using CQMFileCheck::CQMFileCheck;
    std::wstring Path() const { return m_strPath.GetString(); }
};

bool IsSpace(wchar_t c)
{
    constexpr std::wstring_view noBreak = L"\x85\xA0\u2007\u202F"; // which are no spaces to the C library
    return std::iswspace(static_cast<std::wint_t>(c)) != 0 || noBreak.find(c) != std::wstring_view::npos;
}

/// @return UTF-8 with slashes, or nothing for what is not Unicode.
std::string ToSystem(const std::wstring& path)
{
    std::string bytes;
    for (const wchar_t c : path) {
        char character[MB_LEN_MAX];
        std::mbstate_t state{};
        const std::size_t length = std::wcrtomb(character, c == L'\\' ? L'/' : c, &state);
        if (length == static_cast<std::size_t>(-1) || c > 0x10FFFF)
            return {};
        bytes.append(character, length);
    }
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    [[maybe_unused]] static const char* const locale = std::setlocale(LC_CTYPE, "C.UTF-8");
    FuzzedDataProvider data(bytes, size);
    std::wstring path;
    while (data.remaining_bytes() != 0 && path.size() < 20'000) {
        auto c = data.ConsumeIntegral<unsigned char>();
        if (c == 0x80)
            path += std::wstring(data.ConsumeIntegralInRange<std::size_t>(0, 5'000), L'x');
        else if (c > 0x80 && c <= 0xE0) // among the spaces and the dashes
            path += static_cast<wchar_t>(0x2000 + c - 0x80);
        else if (c > 0xE0 && c < 0xF0)
            path += data.PickValueInArray({L'\x85', L'\xA0', L'\x1680', L'\x180E', L'\x3000', L'\xFEFF'});
        else
            path += c >= 0xF0 ? data.ConsumeIntegral<wchar_t>() : static_cast<wchar_t>(c);
    }

    const Kept kept(path.c_str());

    std::wstring expected = path.substr(0, path.find(L'\0'));
    std::replace(expected.begin(), expected.end(), L'/', L'\\');
    while (!expected.empty() && IsSpace(expected.front()))
        expected.erase(expected.begin());
    while (!expected.empty() && IsSpace(expected.back()))
        expected.pop_back();
    Require(kept.Path() == expected, "the path that is kept");
    if (expected.size() < PATH_MAX)
        Require(asked == ToSystem(expected), "the path that the system is asked for");
    else
        Require(asked.empty() || asked.size() >= PATH_MAX, "a long path names no other file");
    return 0;
}
