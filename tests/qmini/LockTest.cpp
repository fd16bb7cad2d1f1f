// SPDX-License-Identifier: MIT
#include "qmUtility/platform/FileLock.h"
#include "tests/qmini/Qmini.h"

#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <thread>

namespace {

std::function<void()> duringSleep;  ///< takes the place of sleeping, if it is set
std::function<void()> beforeLock;   ///< is called between opening and locking a file, if it is set
const std::filesystem::path Name("f");
std::error_code error;

bool TryLock(platform::FileLock& lock) { return lock.TryLock(platform::SystemPath(Name), error); }

}  // namespace

extern "C" int nanosleep(const timespec* time, timespec* left) {
    if (!duringSleep) return static_cast<int>(syscall(SYS_nanosleep, time, left));
    duringSleep();
    return 0;
}

extern "C" int flock(int file, int operation) noexcept {
    if (beforeLock) beforeLock();
    return static_cast<int>(syscall(SYS_flock, file, operation));
}

using Lock = Qmini;

TEST_F(Lock, KeepsEveryEditOfManyWriters) {
    Write("[S]\n", "f");
    std::filesystem::create_symlink("f", "link");
    std::vector<std::thread> writers;
    std::vector<int> codes(20);
    for (std::size_t i = 0; i != codes.size(); ++i)
        writers.emplace_back([&, i] {
            codes[i] = Run((i % 2 != 0 ? "set|f|S|k" : "set|link|S|k") + std::to_string(i) + "|v").first;
        });
    for (std::thread& writer : writers) writer.join();
    const std::string text = Read("f");
    for (std::size_t i = 0; i != codes.size(); ++i)
        EXPECT_EQ(codes[i] == 0, text.find("\nk" + std::to_string(i) + '=') != std::string::npos) << text;
}

TEST_F(Lock, WaitsButNotForEver) {
    Write("[S]\n", "f");
    platform::FileLock other;
    ASSERT_TRUE(TryLock(other));
    int sleeps = 0;  // of 10 ms each
    int silentSleeps = 0;
    std::istringstream in;
    std::ostringstream out;
    duringSleep = [&] { ++sleeps, silentSleeps += out.str().empty() ? 1 : 0; };
    EXPECT_EQ(qmini::Run({"add", "f", "N"}, {in, out, out}), 1);
    EXPECT_EQ(out.str(),
              "qmini: waiting for another program that has locked f\n"
              "qmini: cannot edit f: another program has locked it\n");
    EXPECT_EQ(std::pair(silentSleeps, sleeps), std::pair(100, 500));
    duringSleep = nullptr;
}

TEST_F(Lock, IsOnTheFileThatReplacedAnother) {
    Write("[S]\n", "f");
    beforeLock = [&] {
        std::filesystem::rename(Write("[T]\n", "new"), "f");
        beforeLock = nullptr;
    };
    platform::FileLock lock;
    EXPECT_FALSE(TryLock(lock) || error);
    EXPECT_TRUE(TryLock(lock));
}
