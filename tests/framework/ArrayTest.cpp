#include "qmUtility/framework/CArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>

namespace {

using Words = CArray<std::uint16_t>;

/// @return the cause of the archive exception that the call throws, -1 for another exception, 0 for none.
template <class Call>
int Cause(Call call)
{
    int cause = 0;
    try {
        call();
    } catch (CException* exception) { // NOLINT: the framework throws pointers
        const auto* const archiveException = dynamic_cast<CArchiveException*>(exception);
        cause = archiveException != nullptr ? archiveException->m_cause : -1;
        exception->Delete();
    }
    return cause;
}

TEST(Array, GrowsByAnEighthWithinBounds)
{
    CArray<int> array;
    std::vector<std::ptrdiff_t> moves; // the sizes at which the elements moved to new storage
    const auto add = [&](int count) {
        for (; count != 0; --count) {
            const int* const before = &array[0];
            const std::ptrdiff_t size = array.GetSize();
            EXPECT_EQ(array.Add(array[0]), size); // a reference that growing invalidates
            EXPECT_EQ(array[size], 77);
            if (&array[0] != before)
                moves.push_back(array.GetSize());
        }
    };
    for (int round = 0; round != 2; ++round) {
        array.Add(77);
        add(59);
        array.SetSize(20'000);
        add(1100);
        EXPECT_EQ(moves, (std::vector<std::ptrdiff_t>{2, 6, 10, 14, 18, 22, 26, 30, 34, 38, 42, 47, 52, 58,
                                                      20'001, 21'025}));
        EXPECT_EQ(array[60], 0);
        array.SetSize(0); // releases the storage: the second round is like the first
        moves.clear();
    }
}

TEST(Array, RejectsIndexesAndSizesOutOfRange)
{
    Words array;
    array.SetSize(2);
    for (const std::ptrdiff_t index : {PTRDIFF_MIN, std::ptrdiff_t{-1}, std::ptrdiff_t{2}, PTRDIFF_MAX})
        EXPECT_EQ(Cause([&] { array[index] = 1; }), -1) << index;
    EXPECT_EQ(Cause([&] { array.SetSize(-1); }), -1);
    EXPECT_THROW(CArray<int>().SetSize(PTRDIFF_MAX), std::length_error);
}

TEST(Array, LoadsWhatItStoresWhenElementsAreTrivial)
{
    using namespace std::string_literals;
    Words words;
    words.Add('a' | 'b' << 8);
    words.Add('c' | 'd' << 8);
    std::stringbuf file;
    CArchive archive(file, CArchive::store);
    words.Serialize(archive);
    EXPECT_EQ(file.str(), "\2\0abcd"s);

    const auto load = [](const std::string& bytes, CObject& array) {
        std::stringbuf from(bytes);
        CArchive loading(from, CArchive::load);
        return Cause([&] { array.Serialize(loading); });
    };
    for (const std::string& bytes : {""s, "\1"s, "\2\0abc"s})
        EXPECT_EQ(load(bytes, words), CArchiveException::endOfFile) << bytes;
    EXPECT_EQ(load("\3\0abcdef"s, words), 0);
    EXPECT_EQ(words[2], 'e' | 'f' << 8);

    CArray<std::string> strings;
    strings.SetSize(4);
    EXPECT_EQ(load("\1\0"s + std::string(sizeof(std::string), 'a'), strings), CArchiveException::badClass);
    EXPECT_EQ(strings.GetSize(), 4);
    EXPECT_EQ(load("\0\0"s, strings), 0);
    EXPECT_EQ(strings.GetSize(), 0);
}

TEST(Archive, CountsTakeTwoSixOrFourteenBytes)
{
    const std::pair<std::uint64_t, std::string> cases[] = {
        {0xFFFE, "\xFE\xFF"},
        {0xFFFF, {"\xFF\xFF\xFF\xFF\0\0", 6}},
        {0xFFFFFFFE, "\xFF\xFF\xFE\xFF\xFF\xFF"},
        {0xFFFFFFFF, {"\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\0\0\0", 14}},
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

} // namespace
