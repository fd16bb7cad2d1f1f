// SPDX-License-Identifier: MIT
#include "tests/qmini/Qmini.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace {

enum class Fault
{
    Fail,   ///< the call fails, as for a disk that is full until the file is put back
    Kill,   ///< this call and all later ones fail: the disk is left as by a process that is killed
    Lose,   ///< the call does nothing and succeeds
    Change, ///< someone else writes the file before the call
};

Fault fault = Fault::Fail;
int callsLeft = -1; ///< how many calls succeed before the fault

/// Makes a system call, or the fault in its place.
/// @param lost the result of a call that is lost
template <class... Arguments>
int Call(std::size_t lost, long number, Arguments... arguments)
{
    if (callsLeft == 0 && fault == Fault::Change) {
        callsLeft = -1;
        std::ofstream("f") << "[T]\n";
    }
    if (callsLeft != 0) {
        callsLeft -= callsLeft > 0;
        return static_cast<int>(syscall(number, arguments...));
    }
    if (fault != Fault::Kill)
        callsLeft = -1;
    errno = ENOSPC;
    return fault == Fault::Lose ? static_cast<int>(lost) : -1;
}

} // namespace

// The standard library calls these functions in place of those of the C library.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the originals have reserved names

extern "C" ssize_t write(int file, const void* buffer, std::size_t size)
{
    if (callsLeft == 0 && fault != Fault::Lose)
        syscall(SYS_write, file, buffer, size / 2); // half of it arrives
    return Call(size, SYS_write, file, buffer, size);
}

extern "C" ssize_t sendfile(int to, int from, off_t* at, std::size_t size) noexcept
{
    return Call(size, SYS_sendfile, to, from, at, size);
}

extern "C" int truncate(const char* path, off_t size) noexcept { return Call(0, SYS_truncate, path, size); }

extern "C" int remove(const char* path) noexcept
{
    const int flags = std::filesystem::is_directory(path) ? AT_REMOVEDIR : 0;
    return Call(std::size_t(-1), SYS_unlinkat, AT_FDCWD, path, flags);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

using Rewrite = Qmini;

TEST_F(Rewrite, LeavesOneWholeVersionWhateverFails)
{
    const std::string before = " [S]\n key=value\n other=value\n";
    const std::string copy = "f.qmini-save";
    int faults = 0;
    for (const std::string value : {"longer value", "v"})
        for (const Fault kind : {Fault::Fail, Fault::Kill, Fault::Lose})
            for (int calls = 0, reached = 1; reached != 0; ++calls, faults += reached) {
                const std::string after = " [S]\n key=" + value + "\n other=value\n";
                std::filesystem::remove(copy);
                Write(before, "f");
                fault = kind;
                callsLeft = calls;
                const int code = Run("set|f|S|key|" + value);
                reached = callsLeft <= 0;
                callsLeft = -1;
                const std::string file = Read("f");
                EXPECT_TRUE(file == before || file == after || Read(copy) == before) << file << Read(copy);
                if (std::filesystem::exists(copy)) {
                    // The message names it, and so does that of the next edit.
                    EXPECT_TRUE(code == 1 && m_said.find(copy) != std::string::npos) << m_said;
                    EXPECT_TRUE(Run("add|f|N") == 1 && m_said.find(copy) != std::string::npos) << m_said;
                } else
                    EXPECT_EQ(file, code == 0 ? after : before) << m_said;
            }
    EXPECT_GT(faults, 20);
}

TEST_F(Rewrite, LeavesWhatSomeoneElseWroteMeanwhile)
{
    Write("[S]\n", "f");
    fault = Fault::Change;
    callsLeft = 0;
    EXPECT_EQ(Run("add|f|N"), 1);
    EXPECT_EQ(m_said, "qmini: f was changed by someone else meanwhile\n");
    EXPECT_EQ(Read("f") + Read("f.qmini-save"), "[T]\n");
}

} // namespace
