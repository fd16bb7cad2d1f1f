#include "qmUtility/platform/WidePrint.h"

#include "qmUtility/framework/CString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <locale>
#include <string>
#include <tuple>

namespace {

#if defined(_WIN32) // where the C++ library has no other
constexpr const char* Locales[] = {"C"};
#else
constexpr const char* Locales[] = {"C", "C.UTF-8"};
#endif

template <class... Arguments>
std::wstring Printed(const wchar_t* format, Arguments... arguments)
{
    CString text;
    text.Format(format, arguments...);
    return text.GetString();
}

TEST(WidePrint, StringsAndCharacters)
{
    EXPECT_EQ(Printed(L"%s|%ls|%ws|%lS", L"aa", L"bb", L"cc", L"dd"), L"aa|bb|cc|dd");
    EXPECT_EQ(Printed(L"%hs|%S|%hS|%hhs", "a", "b", "c", "d"), L"a|b|c|d");
    EXPECT_EQ(Printed(L"%c%lc%hc%C%hhc", L'\u0416', L'\u0416', 'a', '\xE9', '\xE9'),
              L"\u0416\u0416a\u00E9\u00E9");
    EXPECT_EQ(Printed(L"%5s|%-5s|%.2s|%*s|", L"ab", L"ab", L"abc", -4, L"x"), L"   ab|ab   |ab|x   |");
    const wchar_t unended[] = {L'a', L'b'};
    EXPECT_EQ(Printed(L"%-*.*s|", 3, 2, unended), L"ab |");
    EXPECT_EQ(Printed(L"%s %hs %.3s", nullptr, nullptr, nullptr), L"(null) (null) (nu");
    EXPECT_EQ(Printed(nullptr), L"");
    EXPECT_EQ(Printed(L"%99999s|%*s|", L"x", INT_MIN, L"x").size(), 2 * 65536U);
    const std::wstring text(100'000, L'x'); // is kept whole
    EXPECT_EQ(Printed(L"<%s%5000d>", text.c_str(), 1), L"<" + text + std::wstring(4999, L' ') + L"1>");
}

TEST(WidePrint, NarrowTextIsUtf8WhateverTheLocale)
{
    const std::pair<const char*, std::wstring> cases[] = {
        {"Gr\u00F6\u00DFe", L"Gr\u00F6\u00DFe"},
        {"\u20AC \U0001F600", L"\u20AC \U0001F600"},
        {"caf\xE9 \xC3\xC3", L"caf\u00E9 \u00C3\u00C3"}, // Latin-1; a sequence that the text ends in
        {"\xC0\xAF\xED\xA0\x80", L"\u00C0\u00AF\u00ED\u00A0\u0080"}, // overlong; a surrogate
        {"\xF4\x90\x80\x80\xFF", L"\u00F4\u0090\u0080\u0080\u00FF"}, // past the last character
    };
    for (const char* const locale : Locales) {
        std::locale::global(std::locale(locale));
        for (const auto& [narrow, wide] : cases)
            EXPECT_EQ(Printed(L"%hs", narrow), wide) << locale << ": " << narrow;
    }
    std::locale::global(std::locale::classic());
}

TEST(WidePrint, Numbers)
{
    EXPECT_EQ(Printed(L"%d|%5i|%-5d|%05d|%+d|% d|%.3d", -1, 2, 3, -4, 5, 6, 7),
              L"-1|    2|3    |-0004|+5| 6|007");
    EXPECT_EQ(Printed(L"%hhd|%hd|%hhu|%hu|%u|%I32x", 257, 65537, -1, -1, -1, -1),
              L"1|1|255|65535|4294967295|ffffffff");
    constexpr std::int64_t large = INT64_MIN;
    for (const wchar_t* const format : {L"%lld", L"%I64d", L"%jd", L"%zd", L"%td", L"%Id"})
        EXPECT_EQ(Printed(format, large), L"-9223372036854775808") << format;
    EXPECT_EQ(Printed(L"%I64x %ld %lu %p", large, -5L, 5UL, reinterpret_cast<void*>(0x1F)),
              L"8000000000000000 -5 5 0x1f");
    EXPECT_EQ(Printed(L"%#x %X %o %*d", 255, 255, 8, 3, 1), L"0xff FF 10   1");
    EXPECT_EQ(Printed(L"%.2f|%.5lf|%8.1f|%g|%e|%.1Lf", 1.005, 0.25, -2.25, 1e-7, 1.0, 2.5L),
              L"1.00|0.25000|    -2.2|1e-07|1.000000e+00|2.5");
    for (const int digits : {125, 126, 200}) // past the buffer that most numbers fit
        EXPECT_EQ(Printed(L"%.*f", digits, 0.0),
                  L"0." + std::wstring(static_cast<std::size_t>(digits), L'0'));
}

TEST(WidePrint, NothingIsStoredAndWhatIsNoDirectiveStaysAsItIs)
{
    int stored = 77;
    EXPECT_EQ(Printed(L"a%nb%hhnc%d%%", &stored, &stored, 5), L"abc5%");
    EXPECT_EQ(stored, 77);
    for (const wchar_t* const format :
         {L"%y|%5|%-.3k|", L"%", L"%.", L"%5.2", L"%ll", L"%-+ #0", L"%I6", L"%99999999999999999999y"})
        EXPECT_EQ(Printed(format), format);
}

TEST(WidePrint, ABufferIsCutAndAlwaysEnded)
{
    const std::tuple<std::size_t, const wchar_t*, std::ptrdiff_t, const wchar_t*> cases[] = {
        {6, L"%s", 5, L"12345"},
        {5, L"%s", -1, L"1234"},
        {5, L"%s%.0s", -1, L"1234"},
        {6, L"%5.0s", 5, L"     "},
        {1, L"%s", -1, L""},
        {6, L"%2147483647s", -1, L"     "},
        {6, L"a%9.4s", -1, L"a    "},
        {6, L"%-9s", -1, L"12345"},
        {6, L"%.3s%%%y", -1, L"123%%"},
        {1, L"", 0, L""},
        {0, L"", -1, L"########"},
    };
    for (const auto& [capacity, format, result, text] : cases) {
        std::wstring buffer(8, L'#');
        EXPECT_EQ(platform::Print(buffer.data(), capacity, format, L"12345", L""), result) << format;
        EXPECT_STREQ(buffer.c_str(), text) << format;
        EXPECT_EQ(buffer[capacity], L'#') << format;
    }
    const char longer[] = {'1', '2', '3'}; // than the buffer, and not read any further
    wchar_t buffer[6] = L"123";
    EXPECT_EQ(platform::Print(buffer, 3, L"%1hs", longer), -1);
    EXPECT_STREQ(buffer, L"12");
    platform::Append(buffer, 6, L"34%d");
    platform::Append(buffer, 6, L"5");
    EXPECT_STREQ(buffer, L"1234%");
}

TEST(CString, HoldsATextOfItsOwn)
{
    CString a = L"one";
    CString b = a;
    EXPECT_EQ(b.Replace(L'o', L'0'), 1);
    EXPECT_EQ(b.Replace(L'n', L'n'), 0);
    EXPECT_NE(a, b);
    a.Format(L"%s, %s", a.GetString(), b.GetString());
    EXPECT_EQ(a, CString(L"one, 0ne"));
    EXPECT_EQ(a.GetLength(), 8);
    EXPECT_TRUE(CString(nullptr).IsEmpty());
}

TEST(CString, TrimsEachEnd)
{
    CString text = L" \t\r\n\v\f\x85\xA0\x2003\x3000x y\x200B\x3000\n ";
    EXPECT_STREQ(text.TrimLeft().GetString(), L"x y\x200B\x3000\n ");
    EXPECT_STREQ(text.TrimRight().GetString(), L"x y\x200B");
    EXPECT_TRUE(CString(L" \n ").TrimRight().IsEmpty());
    EXPECT_TRUE(CString(L" \n ").TrimLeft().IsEmpty());
}

} // namespace
