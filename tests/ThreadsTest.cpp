// SPDX-License-Identifier: MIT
/// @file
/// What several threads may do at once. The thread sanitizer finds what the results do not show.

#include "qmUtility/framework/ExtensionModule.h"
#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <future>
#include <string>
#include <vector>

namespace {

using Threads = TemporaryFolder;

/// Calls `run` with the numbers 0 to 7, each on a thread of its own.
template <class Run>
void InEachThread(Run run)
{
    std::vector<std::future<void>> threads; // their destructors wait
    for (std::size_t i = 0; i != 8; ++i)
        threads.push_back(std::async(std::launch::async, run, i));
}

TEST_F(Threads, EachEditsAFileOfItsOwn)
{
    InEachThread([this](std::size_t thread) {
        const std::string path = Write("[S]\nk=0\n", std::to_string(thread));
        const std::wstring wide(path.begin(), path.end());
        for (int i = 0; i != 50; ++i) {
            EXPECT_TRUE(INIParser::SetValue("k", std::to_string(i), "S", path));
            EXPECT_TRUE(INIParser::SetValue(L"w", std::to_wstring(i), L"W", wide));
            EXPECT_TRUE(INIParser::CommentRecord(INIParser::Hash, "w", "W", path));
            EXPECT_EQ(INIParser::GetValue(L"w", L"W", wide), std::to_wstring(i));
        }
        EXPECT_EQ(Read(path), " [S]\n k=49\n [W]\n#w=49\n");
    });
}

TEST(ModuleList, IsUsableFromEachThread)
{
    InEachThread([](std::size_t /*thread*/) {
        AFX_EXTENSION_MODULE state{};
        for (int i = 0; i != 100; ++i) {
            EXPECT_NE(AfxInitExtensionModule(state, &state), 0);
            new CDynLinkLibrary(state);
            const std::vector<HINSTANCE> modules = framework::ExtensionModules();
            EXPECT_EQ(std::count(modules.begin(), modules.end(), static_cast<HINSTANCE>(&state)), 1);
            AfxTermExtensionModule(state);
        }
    });
}

} // namespace
