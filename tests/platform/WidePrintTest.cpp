// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>

namespace {

template <class... Arguments>
std::wstring Printed(const wchar_t* format, Arguments... arguments) {
    CString text;
    text.Format(format, arguments...);
    return text.GetString();
}

TEST(WidePrint, StringsAndCharactersAreWideOrUtf8) {
    EXPECT_EQ(Printed(L"%s%ls%ws%lS%C%lc%wc|%5s|%-5s|%.2s|%*s|", L"a", L"b", L"c", L"d", L'e', L'\u0416',
                      L'g', L"ab", L"ab", L"abc", -4, L"x"),
              L"abcde\u0416g|   ab|ab   |ab|x   |");
    const wchar_t unterminated[] = {L'a', L'b'};
    const char unterminatedNarrow[] = {'c', 'd'};
    EXPECT_EQ(Printed(L"%-*.*s|%3.2hs|", 3, 2, unterminated, unterminatedNarrow), L"ab | cd|");
    EXPECT_EQ(Printed(L"%s %hs %.3s", nullptr, nullptr, nullptr) + Printed(nullptr), L"(null) (null) (nu");
    EXPECT_EQ(Printed(L"%99999s|%*s|", L"x", INT_MIN, L"x").size(), 2 * 65536U);
    EXPECT_EQ(Printed(L"%hs%S%hS%hhs%hc%C%hhc", "a", "b", "c", "\u20AC \U0001F600", 'e', '\xE9', '\xE9'),
              L"abc\u20AC \U0001F600e\u00E9\u00E9");
    // Bytes that are not: Latin-1; an overlong sequence, a surrogate, past the last character; incomplete at
    // the end
    EXPECT_EQ(Printed(L"%hs|%hs|%hs", "caf\xE9 ", "\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF", "\xC3\xC3"),
              L"caf\xE9 |\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF|\xC3\xC3");
}

TEST(WidePrint, NumbersPrintAsInTheCLibrary) {
    EXPECT_EQ(Printed(L"%d|%5i|%-5d|%05d|%+d|% d|%.3d|%hhd|%hd|%hhu|%hu|%u|%I32x|%ld|%lu|%#x|%X|%o", -1, 2, 3,
                      -4, 5, 6, 7, 257, 65537, -1, -1, -1, -1, -5L, 5UL, 255, 255, 8),
              L"-1|    2|3    |-0004|+5| 6|007|1|1|255|65535|4294967295|ffffffff|-5|5|0xff|FF|10");
    EXPECT_EQ(Printed(L"%p|%I64x|%zx|%.2f|%.5lf|%8.1f|%g|%e|%.1Lf", reinterpret_cast<void*>(0x1F), INT64_MIN,
                      std::size_t{1} << 32, 1.005, 0.25, -2.25, 1e-7, 1.0, 2.5L),
              L"0x1f|8000000000000000|100000000|1.00|0.25000|    -2.2|1e-07|1.000000e+00|2.5");
    for (const std::size_t digits : {125U, 126U, 200U})  // around the size of the buffer for numbers
        EXPECT_EQ(Printed(L"%.*f", static_cast<int>(digits), 0.0), L"0." + std::wstring(digits, L'0'));
}

TEST(WidePrint, NothingIsStoredAndUnknownDirectivesAreUnchanged) {
    int stored = 77;
    EXPECT_EQ(Printed(L"a%nb%hhnc%d%%", &stored, &stored, 5), L"abc5%");
    EXPECT_EQ(stored, 77);
    for (const wchar_t* const format :
         {L"%y|%5|%-.3k|", L"%", L"%.", L"%5.2", L"%ll", L"%-+ #0", L"%I6", L"%99999999999999999999y"})
        EXPECT_EQ(Printed(format), format);
}

TEST(CString, ReplacesAndTrims) {
    CString text = L" \t\r\n\v\f\x85\xA0\x2003\x3000x y\x200B\x3000\n ";
    EXPECT_STREQ(text.TrimLeft().GetString(), L"x y\x200B\x3000\n ");
    EXPECT_STREQ(text.TrimRight().GetString(), L"x y\x200B");
    EXPECT_EQ(text.Replace(L'y', L'x') + text.Replace(L'z', L'a') + text.Replace(L'x', L'x'), 1);
    text.Format(L"%s, %s", text.GetString(), L"z");  // an argument that points into the string
    EXPECT_STREQ(text.GetString(), L"x x\x200B, z");
    EXPECT_STREQ(CString(L" \n ").TrimRight().TrimLeft().GetString(), L"");
}

}  // namespace
