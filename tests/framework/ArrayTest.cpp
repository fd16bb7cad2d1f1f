// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CArray.h"
#include "qmUtility/framework/CFile.h"
#include "qmUtility/framework/CString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <tuple>

namespace {

using namespace std::string_literals;
using Words = CArray<std::uint16_t>;

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
        std::vector<std::ptrdiff_t> moves;  // the indices of the elements for which the others moved
        while (moves.size() != 2) {
            const int* const before = &array[0];
            const std::ptrdiff_t index = array.Add(array[0]);  // a reference that growing invalidates
            EXPECT_EQ(array[index], 77);
            if (&array[0] != before) moves.push_back(index);
        }
        EXPECT_EQ(moves, (std::vector<std::ptrdiff_t>{size, size + growth}));
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
    Words words;
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
    const std::string element(sizeof(std::string), 'a');
    for (const std::string& bytes : {""s, "\1"s, "\2\0abc"s, std::string(14, '\xFF')}) {
        EXPECT_EQ(load(strings, bytes), std::tuple(CArchiveException::endOfFile, 2)) << bytes;
        EXPECT_EQ(load(words, bytes), std::tuple(CArchiveException::endOfFile, 2)) << bytes;
    }
    EXPECT_EQ(load(strings, "\1\0"s + element), std::tuple(CArchiveException::badClass, 2));
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

}  // namespace
