// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CArray.h"
#include "qmUtility/framework/CFile.h"
#include "qmUtility/framework/CString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <sstream>
#include <tuple>

namespace {

using namespace std::string_literals;

/// @return the cause of the archive exception that the call throws, -1 for another exception, 0 for none.
template <class Call>
int Cause(Call call) {
    try {
        call();
        return 0;
    } catch (CException* exception) {  // NOLINT(*-throw-by-value*,cert-err*): the framework throws pointers
        const auto* const archiveException = dynamic_cast<CArchiveException*>(exception);
        const int cause = archiveException != nullptr ? archiveException->m_cause : -1;
        exception->Delete();
        return cause;
    }
}

TEST(Array, GrowsByAnEighthWithinBoundsAndRejectsIndexesAndSizesOutOfRange) {
    CArray<int> array;
    for (const auto& [size, growth] : {std::pair(1, 4), {41, 5}, {20'000, 1024}}) {
        array.SetSize(0);  // releases the storage
        array.SetSize(size);
        array[0] = 77;
        EXPECT_EQ(array.Add(array[0]), size);  // a reference that growing invalidates
        EXPECT_EQ(array[size], 77);
        const int* const storage = &array[0];
        while (array.GetSize() != size + growth) array.Add(0);
        EXPECT_EQ(&array[0], storage);
        array.Add(0);
        EXPECT_NE(&array[0], storage);
    }
    for (const std::ptrdiff_t index : {PTRDIFF_MIN, std::ptrdiff_t{-1}, array.GetSize(), PTRDIFF_MAX})
        EXPECT_EQ(Cause([&] { array[index] = 1; }), -1) << index;
    EXPECT_EQ(Cause([&] { array.SetSize(-1); }), -1);
    EXPECT_THROW(array.SetSize(PTRDIFF_MAX), std::length_error);
}

TEST(Framework, TypesHaveTheMembersThatTheirUsersExpect) {
    const CString text = L"ab";
    EXPECT_EQ(std::wstring(text), L"ab");
    EXPECT_TRUE(CString().IsEmpty() && !text.IsEmpty());
    EXPECT_TRUE(text.GetLength() == 2 && text[0] == L'a' && text[2] == L'\0');
    for (const std::ptrdiff_t index : {-1, 3}) EXPECT_EQ(Cause([&] { (void)text[index]; }), -1) << index;
    CString sum = L'<' + text + L"c" + text;
    (sum += L"d") += L'e';
    EXPECT_EQ(sum + L'>', L"<abcabde>");

    const auto compare = [](const auto& a, const auto& b) {
        return std::tuple(a == b, a != b, a<b, a> b, a <= b, a >= b);
    };
    for (const std::wstring other : {L"ab", L"b", L"a"}) {
        EXPECT_EQ(compare(text, other.c_str()), compare(L"ab"s, other));
        EXPECT_EQ(compare(other.c_str(), text), compare(other, L"ab"s));
    }

    EXPECT_TRUE(CTime(7, 5).GetTime() == 7 && CTime(6, 9) < CTime(7, 5) && CTime(7, 4) < CTime(7, 5) &&
                !(CTime(7, 5) < CTime(7, 5) || CTime(7, 5) < CTime(6, 9)));
}

TEST(Array, AddsAndRemovesElements) {
    CArray<int> array;
    for (const int value : {0, 1, 2, 3, 4}) array.Add(value);
    using Range = std::pair<std::ptrdiff_t, std::ptrdiff_t>;
    for (const auto& [index, count] : {Range(-1, 1), {0, -1}, {5, 1}, {4, 2}, {6, 0}, {1, PTRDIFF_MAX}})
        EXPECT_EQ(Cause([&, i = index, n = count] { array.RemoveAt(i, n); }), -1) << index << ", " << count;
    array.RemoveAt(1);
    array.RemoveAt(2, 2);
    array.RemoveAt(2, 0);
    const CArray<int>& rest = array;
    EXPECT_TRUE(rest.GetCount() == 2 && rest[0] == 0 && rest[1] == 2 && !rest.IsEmpty());
    EXPECT_EQ(Cause([&] { (void)rest[2]; }), -1);
    array.RemoveAt(0, 2);
    EXPECT_TRUE(rest.IsEmpty());
}

TEST(Array, LoadsWhatItStoresWhenElementsAreTrivial) {
    CArray<std::uint16_t> words;
    words.Add('a' | 'b' << 8);
    words.Add('c' | 'd' << 8);
    std::stringbuf file;
    CArchive archive(file, CArchive::store);
    words.Serialize(archive);
    EXPECT_EQ(file.str(), "\2\0abcd"s);

    const auto load = [](auto& array, const std::string& bytes) {
        std::stringbuf from(bytes);
        CArchive loading(from, CArchive::load);
        const int cause = Cause([&] { array.Serialize(loading); });
        return std::tuple(cause, array.GetSize());
    };
    CArray<std::string> strings;
    strings.SetSize(2);
    for (const std::string& bytes : {""s, "\1"s, "\2\0abc"s, std::string(14, '\xFF')}) {
        EXPECT_EQ(load(strings, bytes), std::tuple(CArchiveException::endOfFile, 2)) << bytes;
        EXPECT_EQ(load(words, bytes), std::tuple(CArchiveException::endOfFile, 2)) << bytes;
    }
    EXPECT_EQ(load(strings, "\1\0"s + std::string(sizeof(std::string), 'a')),
              std::tuple(CArchiveException::badClass, 2));
    EXPECT_EQ(load(strings, "\0\0"s), std::tuple(0, 0));
    EXPECT_EQ(load(words, "\3\0abcdef"s), std::tuple(0, 3));
    EXPECT_EQ(words[2], 'e' | 'f' << 8);
}

TEST(Archive, CountsTakeTwoSixOrFourteenBytes) {
    const std::tuple<std::uint64_t, std::string> cases[] = {
        {0xFFFE, "\xFE\xFF"},
        {0xFFFF, "\xFF\xFF\xFF\xFF\0\0"s},
        {0xFFFFFFFE, "\xFF\xFF\xFE\xFF\xFF\xFF"},
        {0xFFFFFFFF, std::string(10, '\xFF') + "\0\0\0\0"s},
    };
    for (const auto& [count, bytes] : cases) {
        std::stringbuf file;
        CArchive(file, CArchive::store).WriteCount(count);
        EXPECT_EQ(file.str(), bytes);
        EXPECT_EQ(CArchive(file, CArchive::load).ReadCount(), count);
    }
    std::stringbuf readOnly("", std::ios::in);
    EXPECT_EQ(Cause([&] { CArchive(readOnly, CArchive::store).WriteCount(1); }),
              CArchiveException::genericException);
}

template <class... Arguments>
std::wstring Printed(const wchar_t* format, Arguments... arguments) {
    CString text;
    text.Format(format, arguments...);
    return text.GetString();
}

TEST(Format, StringsAndCharactersAreWideOrUtf8) {
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
    // Not UTF-8: Latin-1; an overlong sequence, a surrogate, past the last character; incomplete at the end.
    EXPECT_EQ(Printed(L"%hs|%hs|%hs", "caf\xE9 ", "\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF", "\xC3\xC3"),
              L"caf\xE9 |\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xFF|\xC3\xC3");
}

TEST(Format, NumbersHaveTheWidthsOfTheirTypes) {  // a fuzzer compares the rest with the C library
    EXPECT_EQ(Printed(L"%+.3d|%hhd|%hu|%I32x|%ld|%lu|%I64x|%zx|%.5lf|%.1Lf|%p|%g|%e|%#x|%05d", 7, 257, -1, -1,
                      -5L, 5UL, INT64_MIN, std::size_t{1} << 32, 0.25, 2.5L, reinterpret_cast<void*>(0x1F),
                      1e-7, 1.0, 255, -4),
              L"+007|1|65535|ffffffff|-5|5|8000000000000000|100000000|0.25000|2.5|0x1f|1e-07|1.000000e+00|"
              L"0xff|-0004");
    for (const std::size_t digits : {125U, 126U, 200U})  // around the size of the buffer for numbers
        EXPECT_EQ(Printed(L"%.*f", static_cast<int>(digits), 0.0), L"0." + std::wstring(digits, L'0'));
}

TEST(Format, NothingIsStoredAndUnknownDirectivesAreUnchanged) {
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
