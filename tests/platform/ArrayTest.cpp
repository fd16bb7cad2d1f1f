#include "platform/CArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Strings = CArray<std::wstring>;
using Words = CArray<std::uint16_t>;

/// @return the cause of the archive exception that the work throws, which it has to.
template <class Work>
int Cause(Work work)
{
    try {
        work();
    } catch (CArchiveException* exception) { // NOLINT: the framework throws pointers
        const int cause = exception->m_cause;
        exception->Delete();
        return cause;
    }
    return CArchiveException::none;
}

TEST(Array, GrowsByAnEighthWithinBounds)
{
    CArray<int> array;
    EXPECT_EQ(array.GetData(), nullptr);
    std::vector<int> moves; // the sizes for which the elements were moved to new storage
    const auto add = [&](int count) {
        for (int i = 0; i != count; ++i) {
            const int* const before = array.GetData();
            const std::ptrdiff_t index = array.Add(i);
            EXPECT_EQ(index, array.GetSize() - 1);
            if (array.GetData() != before)
                moves.push_back(static_cast<int>(array.GetSize()));
        }
    };
    add(60);
    EXPECT_EQ(moves, (std::vector{1, 2, 6, 10, 14, 18, 22, 26, 30, 34, 38, 42, 47, 52, 58}));
    moves.clear();
    array.SetSize(20'000);
    EXPECT_EQ(array[59], 59);
    EXPECT_EQ(array[19'999], 0);
    add(1100);
    EXPECT_EQ(moves, (std::vector{20'001, 21'025}));
    array.SetSize(0);
    EXPECT_EQ(array.GetData(), nullptr);
    array.SetSize(3);
    add(1);
    EXPECT_EQ(array.GetSize(), 4);
}

TEST(Array, OwnsItsElements)
{
    const std::wstring text(100, L'x');
    Strings array;
    array.Add(text);
    for (int i = 0; i != 20; ++i)
        array.Add(array[0]);
    array.SetSize(10);
    array[1] = L"short";
    EXPECT_EQ(array[1], L"short");
    EXPECT_EQ(array[9], text);
    array.SetSize(11);
    EXPECT_EQ(array[10], L"");
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
}

TEST(Array, RefusesWhatIsOutOfRange)
{
    Strings array;
    array.SetSize(2);
    const Strings& constant = array;
    for (const std::ptrdiff_t index : {PTRDIFF_MIN, std::ptrdiff_t{-1}, std::ptrdiff_t{2}, PTRDIFF_MAX})
        for (int way = index < 0 ? 0 : 1; way != 3; ++way) {
            try {
                way == 0 ? array.SetSize(index) : (void)(way == 1 ? array[index] : constant[index]).size();
                ADD_FAILURE() << index;
            } catch (CInvalidArgException* exception) { // NOLINT: the framework throws pointers
                exception->Delete();
            }
        }
    EXPECT_THROW(array.SetSize(PTRDIFF_MAX), std::length_error);
    EXPECT_EQ(array.GetSize(), 2);
}

TEST(Array, SerializesItsElementsAsTheyLieInMemory)
{
    std::stringbuf file;
    CArchive storing(file, CArchive::store);
    Words words;
    words.Add(0x1234);
    words.Add(0x5678);
    CObject& object = words;
    object.Serialize(storing);
    const std::uint16_t expected[] = {2, 0x1234, 0x5678};
    EXPECT_EQ(file.str(), std::string(reinterpret_cast<const char*>(expected), sizeof expected));

    Words loaded;
    loaded.SetSize(5);
    CArchive loading(file, CArchive::load);
    loaded.Serialize(loading);
    ASSERT_EQ(loaded.GetSize(), 2);
    EXPECT_EQ(loaded[0], 0x1234);
    EXPECT_EQ(loaded[1], 0x5678);
    EXPECT_STREQ(object.GetRuntimeClass()->m_lpszClassName, "CObject");
}

TEST(Array, RefusesWhatCannotBeLoaded)
{
    struct
    {
        std::string Bytes;
        int WordsCause;
        int StringsCause;
    } const cases[] = {
        {"", CArchiveException::endOfFile, CArchiveException::endOfFile},
        {"\1", CArchiveException::endOfFile, CArchiveException::endOfFile},
        {{"\2\0abc", 5}, CArchiveException::endOfFile, CArchiveException::badClass},
        {{"\2\0abcd", 6}, CArchiveException::none, CArchiveException::badClass},
        {{"\0\0", 2}, CArchiveException::none, CArchiveException::none},
    };
    EXPECT_EQ(int{CArchiveException::endOfFile}, 3);
    for (const auto& [bytes, wordsCause, stringsCause] : cases) {
        Strings strings;
        strings.SetSize(4);
        for (const bool isWords : {true, false}) {
            std::stringbuf file(bytes);
            CArchive archive(file, CArchive::load);
            Words words;
            EXPECT_EQ(Cause([&] { isWords ? words.Serialize(archive) : strings.Serialize(archive); }),
                      isWords ? wordsCause : stringsCause)
                << bytes.size();
        }
        EXPECT_EQ(strings.GetSize(), stringsCause == CArchiveException::none ? 0 : 4);
    }
}

TEST(Archive, CountsTakeAsManyBytesAsTheyNeed)
{
    struct
    {
        std::uint64_t Count;
        std::string Bytes;
    } const cases[] = {
        {0, {"\0\0", 2}},
        {0xFFFE, "\xFE\xFF"},
        {0xFFFF, {"\xFF\xFF\xFF\xFF\0\0", 6}},
        {0xFFFFFFFE, "\xFF\xFF\xFE\xFF\xFF\xFF"},
        {0xFFFFFFFF, {"\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\0\0\0", 14}},
    };
    for (const auto& [count, bytes] : cases) {
        std::stringbuf file;
        CArchive storing(file, CArchive::store);
        storing.WriteCount(count);
        EXPECT_EQ(file.str(), bytes);
        CArchive loading(file, CArchive::load);
        EXPECT_EQ(loading.ReadCount(), count);
        EXPECT_EQ(Cause([&] { loading.ReadCount(); }), CArchiveException::endOfFile);
    }
}

TEST(Archive, TellsThatNotAllCouldBeWritten)
{
    std::stringbuf file("", std::ios::in);
    CArchive archive(file, CArchive::store);
    EXPECT_EQ(Cause([&] { archive.WriteCount(1); }), CArchiveException::genericException);
}

} // namespace
