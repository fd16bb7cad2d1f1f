#include "qmUtility/framework/CArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Strings = CArray<std::wstring>;
using Words = CArray<std::uint16_t>;

constexpr int done = 0;
constexpr int writeFailed = 1;
constexpr int fileEnded = 3;
constexpr int badClass = 6;
constexpr int badArgument = -1;

/// @return the cause of the framework's exception that the work ends with.
template <class Work>
int Outcome(Work work)
{
    try {
        work();
        return done;
    } catch (CException* exception) { // NOLINT: the framework throws pointers
        const auto* const archiveException = dynamic_cast<CArchiveException*>(exception);
        const int cause = archiveException != nullptr ? archiveException->m_cause : badArgument;
        exception->Delete();
        return cause;
    }
}

TEST(Array, GrowsByAnEighthWithinBounds)
{
    CArray<int> array;
    EXPECT_EQ(array.GetData(), nullptr);
    std::vector<std::ptrdiff_t> moves; // the sizes for which the elements were moved to new storage
    const int first = 77;
    const auto add = [&](int count) {
        for (int i = 0; i != count; ++i) {
            const int* const before = array.GetData();
            const std::ptrdiff_t index = array.Add(array.GetSize() == 0 ? first : array[0]); // which may move
            EXPECT_EQ(index, array.GetSize() - 1);
            if (array.GetData() != before)
                moves.push_back(array.GetSize());
        }
    };
    add(60);
    EXPECT_EQ(moves, (std::vector<std::ptrdiff_t>{1, 2, 6, 10, 14, 18, 22, 26, 30, 34, 38, 42, 47, 52, 58}));
    moves.clear();
    array.SetSize(90);
    add(1);
    array.SetSize(20'000);
    EXPECT_EQ(array[59], first);
    EXPECT_EQ(array[19'999], 0);
    add(1100);
    EXPECT_EQ(moves, (std::vector<std::ptrdiff_t>{91, 20'001, 21'025}));
    array.SetSize(0);
    EXPECT_EQ(array.GetData(), nullptr);
}

TEST(Array, RefusesWhatIsOutOfRange)
{
    Strings array;
    array.SetSize(2);
    for (const std::ptrdiff_t index : {PTRDIFF_MIN, std::ptrdiff_t{-1}, std::ptrdiff_t{2}, PTRDIFF_MAX}) {
        EXPECT_EQ(Outcome([&] { array[index].clear(); }), badArgument) << index;
        EXPECT_EQ(Outcome([&] { (void)std::as_const(array)[index].size(); }), badArgument) << index;
    }
    EXPECT_EQ(Outcome([&] { array.SetSize(-1); }), badArgument);
    EXPECT_THROW(array.SetSize(PTRDIFF_MAX), std::length_error);
    EXPECT_EQ(array.GetSize(), 2);
}

TEST(Array, IsAsItWasWhenAnElementCannotBeCopiedIn)
{
    struct Element
    {
        Element() = default;
        Element(const Element&) = default;
        Element& operator=(const Element& /*other*/) { throw std::bad_alloc(); } // NOLINT(cert-oop54-cpp)
    };
    CArray<Element> array;
    EXPECT_THROW(array.Add(Element()), std::bad_alloc);
    EXPECT_EQ(array.GetSize(), 0);
}

template <class Array>
int Load(Array& array, const std::string& bytes)
{
    std::stringbuf file(bytes);
    CArchive archive(file, CArchive::load);
    return Outcome([&] { array.Serialize(archive); });
}

TEST(Array, SerializesItsElementsAsTheyLieInMemory)
{
    std::stringbuf file;
    CArchive archive(file, CArchive::store);
    Words words;
    words.Add(0x1234);
    words.Add(0x5678);
    CObject& object = words;
    object.Serialize(archive);
    const std::uint16_t expected[] = {2, 0x1234, 0x5678};
    EXPECT_EQ(file.str(), std::string(reinterpret_cast<const char*>(expected), sizeof expected));
    EXPECT_STREQ(object.GetRuntimeClass()->m_lpszClassName, "CObject");

    Words loaded;
    EXPECT_EQ(Load(loaded, file.str()), done);
    ASSERT_EQ(loaded.GetSize(), 2);
    EXPECT_EQ(loaded[1], 0x5678);
}

TEST(Array, RefusesWhatCannotBeLoaded)
{
    const std::tuple<std::string, int, int> cases[] = {
        {"", fileEnded, fileEnded},
        {"\1", fileEnded, fileEnded},
        {{"\2\0abc", 5}, fileEnded, badClass},
        {{"\2\0abcd", 6}, done, badClass},
        {{"\0\0", 2}, done, done},
    };
    for (const auto& [bytes, wordsOutcome, stringsOutcome] : cases) {
        Words words;
        Strings strings;
        strings.SetSize(4);
        EXPECT_EQ(Load(words, bytes), wordsOutcome) << bytes.size();
        EXPECT_EQ(Load(strings, bytes), stringsOutcome) << bytes.size();
        EXPECT_EQ(strings.GetSize(), stringsOutcome == done ? 0 : 4);
    }
}

TEST(Archive, CountsTakeAsManyBytesAsTheyNeed)
{
    const std::pair<std::uint64_t, std::string> cases[] = {
        {0, {"\0\0", 2}},
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
    EXPECT_EQ(Outcome([&] { CArchive(readOnly, CArchive::store).WriteCount(1); }), writeFailed);
}

} // namespace
