#include "qmUtility/platform/WidePrint.h"

#include "qmUtility/framework/CString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>

namespace {

template <class... Arguments>
std::wstring Printed(const wchar_t* format, Arguments... arguments)
{
    CString text;
    text.Format(format, arguments...);
    return text.GetString();
}

TEST(WidePrint, StringsAndCharacters)
{
    EXPECT_EQ(Printed(L"%s%ls%ws%lS%c%lc%wc", L"a", L"b", L"c", L"d", L'e', L'\u0416', L'g'),
              L"abcde\u0416g");
    EXPECT_EQ(Printed(L"%hs%S%hS%hhs%hc%C%hhc", "a", "b", "c", "d", 'e', '\xE9', '\xE9'),
              L"abcde\u00E9\u00E9");
    EXPECT_EQ(Printed(L"%5s|%-5s|%.2s|%*s|", L"ab", L"ab", L"abc", -4, L"x"), L"   ab|ab   |ab|x   |");
    const wchar_t unterminated[] = {L'a', L'b'};
    EXPECT_EQ(Printed(L"%-*.*s|", 3, 2, unterminated), L"ab |");
    EXPECT_EQ(Printed(L"%s %hs %.3s", nullptr, nullptr, nullptr), L"(null) (null) (nu");
    EXPECT_EQ(Printed(nullptr), L"");
    EXPECT_EQ(Printed(L"%99999s|%*s|", L"x", INT_MIN, L"x").size(), 2 * 65536U);
    const std::wstring text(100'000, L'x'); // is not truncated
    EXPECT_EQ(Printed(L"<%s%5000d>", text.c_str(), 1), L"<" + text + std::wstring(4999, L' ') + L"1>");
}

TEST(WidePrint, NarrowTextIsUtf8)
{
    EXPECT_EQ(Printed(L"%hs", "Gr\u00F6\u00DFe \u20AC \U0001F600"), L"Gr\u00F6\u00DFe \u20AC \U0001F600");
    // Bytes that are not: Latin-1; an overlong sequence, a surrogate, past the last character; incomplete at the end
    EXPECT_EQ(Printed(L"%hs|%hs|%hs", "caf\xE9 ", "\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF", "\xC3\xC3"),
              L"caf\xE9 |\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF|\xC3\xC3");
}

TEST(WidePrint, Numbers)
{
    EXPECT_EQ(Printed(L"%d|%5i|%-5d|%05d|%+d|% d|%.3d", -1, 2, 3, -4, 5, 6, 7),
              L"-1|    2|3    |-0004|+5| 6|007");
    EXPECT_EQ(Printed(L"%hhd|%hd|%hhu|%hu|%u|%I32x", 257, 65537, -1, -1, -1, -1),
              L"1|1|255|65535|4294967295|ffffffff");
    EXPECT_EQ(Printed(L"%I64x|%ld|%lu|%#x|%X|%o", INT64_MIN, -5L, 5UL, 255, 255, 8),
              L"8000000000000000|-5|5|0xff|FF|10");
    for (const wchar_t* const format : {L"%lld", L"%I64d", L"%jd", L"%zd", L"%td", L"%Id"})
        EXPECT_EQ(Printed(format, INT64_MIN), L"-9223372036854775808") << format;
    EXPECT_EQ(Printed(L"%p", reinterpret_cast<void*>(0x1F)), L"0x1f");
    EXPECT_EQ(Printed(L"%.2f|%.5lf|%8.1f|%g|%e|%.1Lf", 1.005, 0.25, -2.25, 1e-7, 1.0, 2.5L),
              L"1.00|0.25000|    -2.2|1e-07|1.000000e+00|2.5");
    for (const std::size_t digits : {125U, 126U, 200U}) // around the size of the buffer for numbers
        EXPECT_EQ(Printed(L"%.*f", static_cast<int>(digits), 0.0), L"0." + std::wstring(digits, L'0'));
}

TEST(WidePrint, NothingIsStoredAndUnknownDirectivesAreUnchanged)
{
    int stored = 77;
    EXPECT_EQ(Printed(L"a%nb%hhnc%d%%", &stored, &stored, 5), L"abc5%");
    EXPECT_EQ(stored, 77);
    for (const wchar_t* const format :
         {L"%y|%5|%-.3k|", L"%", L"%.", L"%5.2", L"%ll", L"%-+ #0", L"%I6", L"%99999999999999999999y"})
        EXPECT_EQ(Printed(format), format);
}

TEST(WidePrint, TextThatDoesNotFitIsTruncated)
{
    const std::wstring whole = L"a   b|cd  12\u00E95%y";
    for (std::size_t capacity = 0; capacity != 20; ++capacity) {
        const bool fits = capacity > whole.size();
        const std::wstring kept = capacity == 0 ? L"" : whole.substr(0, capacity - 1) + L'\0';
        std::wstring buffer(20, L'#');
        EXPECT_EQ(platform::Print(buffer.data(), capacity, L"a%4s|%-4s%.2hs%hs%d%y%.0s", L"b", L"cd", "123",
                                  "\u00E9", 5, L"x"),
                  fits ? static_cast<std::ptrdiff_t>(whole.size()) : -1);
        EXPECT_EQ(buffer, kept + std::wstring(20 - kept.size(), L'#'));
    }
    const char unterminated[] = {'1', '2', '3'}; // fills the buffer, so nothing after it is read
    wchar_t buffer[6];
    EXPECT_EQ(platform::Print(buffer, 3, L"%1hs", unterminated), -1);
    platform::Append(buffer, 6, L"34%d");
    platform::Append(buffer, 6, L"5");
    EXPECT_STREQ(buffer, L"1234%");
}

TEST(CString, ReplacesAndTrims)
{
    CString text = L" \t\r\n\v\f\x85\xA0\x2003\x3000x y\x200B\x3000\n ";
    EXPECT_STREQ(text.TrimLeft().GetString(), L"x y\x200B\x3000\n ");
    EXPECT_STREQ(text.TrimRight().GetString(), L"x y\x200B");
    EXPECT_EQ(text.Replace(L'y', L'x') + text.Replace(L'z', L'a') + text.Replace(L'x', L'x'), 1);
    text.Format(L"%s, %s", text.GetString(), L"z"); // an argument that points into the string
    EXPECT_STREQ(text.GetString(), L"x x\x200B, z");
    EXPECT_STREQ(CString(nullptr).TrimLeft().TrimRight().GetString(), L"");
    EXPECT_STREQ(CString(L" \n ").TrimRight().GetString(), L"");
}

} // namespace
