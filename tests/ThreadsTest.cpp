#include "qmUtility/host/qmConsole.h"
#include "qmUtility/ini/INIParser.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <latch>
#include <thread>
#include <vector>

namespace {

constexpr int threads = 8;
constexpr int rounds = 50;

using Threads = TemporaryFolder;

/// Calls `run` with the number of each thread, in all of them at once.
template <class Run>
void InEachThread(Run run)
{
    std::latch start(threads);
    std::vector<std::jthread> running;
    for (int i = 0; i != threads; ++i)
        running.emplace_back([&, i] {
            start.arrive_and_wait();
            run(i);
        });
}

TEST_F(Threads, EachEditsAFileOfItsOwn)
{
    std::vector<std::string> paths;
    for (int i = 0; i != threads; ++i)
        paths.push_back(Write("[S]\nk=0\n", std::to_string(i)));
    InEachThread([&](int thread) {
        const std::string& path = paths[static_cast<std::size_t>(thread)];
        const std::wstring wide(path.begin(), path.end());
        for (int i = 0; i != rounds; ++i) {
            EXPECT_TRUE(INIParser::SetValue("k", std::to_string(i), "S", path));
            EXPECT_TRUE(INIParser::SetValue(L"w", std::to_wstring(i), L"W", wide));
            EXPECT_TRUE(INIParser::CommentRecord(INIParser::Hash, "w", "W", path));
            EXPECT_EQ(INIParser::GetValue("k", "S", path), std::to_string(i));
            EXPECT_EQ(INIParser::GetValue(L"w", L"W", wide), std::to_wstring(i));
            EXPECT_TRUE(INIParser::Sort(path, i % 2 == 0));
        }
    });
    for (const std::string& path : paths)
        EXPECT_EQ(Read(path), " [S]\n k=49\n [W]\n#w=49\n");
}

TEST_F(Threads, ReadersBesideAWriterSeeWhatIsThereYet)
{
    // Values of one length, so that what a reader puts together of two rewrites still has whole lines.
    const std::string path = Write(" [S]\n k=aaaa\n [T]\n l=1\n");
    InEachThread([&](int thread) {
        for (int i = 0; i != rounds * 4; ++i)
            if (thread == 0) {
                EXPECT_TRUE(INIParser::SetValue("k", i % 2 == 0 ? "bbbb" : "aaaa", "S", path));
            } else {
                const std::string value = INIParser::GetValue("k", "S", path);
                EXPECT_TRUE(value.empty() || value == "aaaa" || value == "bbbb") << value;
                const std::vector<std::string> names = INIParser::GetSectionNames(path);
                EXPECT_LE(names.size(), 2);
                EXPECT_TRUE(names.empty() || names.front() == "S");
            }
    });
    EXPECT_EQ(Read(path), " [S]\n k=aaaa\n [T]\n l=1\n");
}

TEST(Console, LinesDoNotMix)
{
    Capture console(STDOUT_FILENO);
    InEachThread([](int thread) {
        for (int i = 0; i != 5; ++i)
            CQMConsoleAPI::Log(L"%s\n", std::wstring(300, static_cast<wchar_t>(L'a' + thread)).c_str());
    });
    const auto lines = console.Writes();
    EXPECT_EQ(lines.size(), threads * 5U);
    for (const std::string& line : lines)
        EXPECT_EQ(line, std::string(300, line[0]) + '\n');
}

} // namespace
