#include "host/qmConsole.h"
#include "ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <unistd.h>

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

TEST_F(Threads, ConsoleLinesDoNotMix)
{
    const int output = dup(STDOUT_FILENO);
    const int file = open(Path("log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, STDOUT_FILENO);
    const auto letter = [](int thread) { return static_cast<char>('a' + thread); };
    InEachThread([&](int thread) {
        const std::wstring text(3000, static_cast<wchar_t>(letter(thread)));
        for (int i = 0; i != rounds; ++i)
            CQMConsoleAPI::Log(L"%s %d\n", text.c_str(), i);
    });
    dup2(output, STDOUT_FILENO);
    close(output);
    close(file);

    std::ifstream log(Path("log"));
    int next[threads] = {};
    int lines = 0;
    for (std::string line; std::getline(log, line); ++lines) {
        const int thread = line.at(0) - 'a';
        ASSERT_TRUE(thread >= 0 && thread < threads) << line;
        EXPECT_EQ(line, std::string(3000, letter(thread)) + ' ' + std::to_string(next[thread]++));
    }
    EXPECT_EQ(lines, threads * rounds);
}

} // namespace
