#include "qmini/Command.h"
#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <sys/sendfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <sstream>

namespace {

enum class Fault
{
    Kill,       ///< the process is killed
    FailOnce,   ///< as for a disk that is full until the file is put back
    FailAlways, ///< as for a disk that breaks
    Lose,       ///< the call does nothing and succeeds
};

Fault fault = Fault::FailOnce;
std::function<void()> beforeCopy = [] {};
int callsLeft = -1; ///< how many calls succeed before the fault

/// @return whether the call succeeds
bool Proceed()
{
    if (callsLeft != 0) {
        callsLeft -= callsLeft > 0;
        return true;
    }
    if (fault == Fault::Kill)
        kill(getpid(), SIGKILL);
    if (fault != Fault::FailAlways)
        callsLeft = -1;
    errno = ENOSPC;
    return false;
}

template <class Result, class... Parameters>
Result Real(Result (*ours)(Parameters...), const char* name, std::type_identity_t<Parameters>... arguments)
{
    return reinterpret_cast<decltype(ours)>(dlsym(RTLD_NEXT, name))(arguments...);
}

/// @param lost what a call returns that is lost
template <class Result, class... Parameters>
Result Call(Result (*ours)(Parameters...), const char* name, std::type_identity_t<Result> lost,
            std::type_identity_t<Parameters>... arguments)
{
    return Proceed() ? Real(ours, name, arguments...) : fault == Fault::Lose ? lost : -1;
}

} // namespace

// The standard library calls these for the system's.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the system's are reserved

extern "C" ssize_t write(int file, const void* buffer, std::size_t size)
{
    if (callsLeft == 0 && fault != Fault::Lose)
        Real(&write, "write", file, buffer, size / 2); // half of it arrives
    return Call(&write, "write", static_cast<ssize_t>(size), file, buffer, size);
}

extern "C" ssize_t sendfile(int to, int from, off_t* at, std::size_t size) noexcept
{
    beforeCopy();
    return Call(&sendfile, "sendfile", static_cast<ssize_t>(size), to, from, at, size);
}

extern "C" int truncate(const char* path, off_t size) noexcept
{
    return Call(&truncate, "truncate", 0, path, size);
}

extern "C" int remove(const char* path) noexcept { return Call(&remove, "remove", -1, path); }

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

using Rewrite = TemporaryFolder;

TEST_F(Rewrite, LeavesOneWholeVersionWhateverFails)
{
    const std::string before = " [S]\n key=value\n other=value\n";
    const std::pair<std::vector<std::string>, std::string> edits[] = {
        {{"set", Path("f"), "S", "key", "longer value"}, " [S]\n key=longer value\n other=value\n"},
        {{"delete", Path("f"), "S", "key"}, " [S]\n other=value\n"},
    };
    const std::string copy = Path("f.qmini-save");
    int faults = 0;
    for (const auto& [edit, after] : edits)
        for (const Fault kind : {Fault::Kill, Fault::FailOnce, Fault::FailAlways, Fault::Lose})
            for (int calls = 0, reached = 1; reached != 0; ++calls) {
                std::filesystem::remove(copy);
                Write(before, "f");
                std::ostringstream said;
                const auto run = [&, &edit = edit] {
                    fault = kind;
                    callsLeft = calls;
                    const int code = qmini::Run(edit, {std::cin, said, said});
                    reached = callsLeft <= 0;
                    callsLeft = -1;
                    return code;
                };
                int code = 0;
                if (kind != Fault::Kill)
                    code = run();
                else if (const pid_t child = fork(); child != 0) {
                    waitpid(child, &code, 0);
                    reached = WIFSIGNALED(code);
                } else
                    _exit(run());
                faults += reached;
                const std::string file = Read(Path("f"));
                const std::string saved = Read(copy);
                EXPECT_TRUE(file == before || file == after || saved == before) << file << saved;
                if (std::filesystem::exists(copy)) { // named by what is said, at the latest when tried again
                    EXPECT_NE(code, 0);
                    EXPECT_EQ(kind == Fault::Kill ? qmini::Run(edit, {std::cin, said, said}) : 1, 1);
                    EXPECT_NE(said.str().find(copy), std::string::npos) << said.str();
                } else {
                    EXPECT_TRUE(kind == Fault::Kill || file == (code == 0 ? after : before)) << said.str();
                }
            }
    EXPECT_GT(faults, 20);
}

TEST_F(Rewrite, LeavesWhatSomeoneElseWroteMeanwhile)
{
    Write("[S]\n", "f");
    beforeCopy = [&] { Write("[T]\n", "f"); };
    std::ostringstream said;
    EXPECT_EQ(qmini::Run({"add", Path("f"), "N"}, {std::cin, said, said}), 1);
    beforeCopy = [] {};
    EXPECT_EQ(said.str(), "qmini: " + Path("f") + " was changed by someone else meanwhile\n");
    EXPECT_EQ(Read(Path("f")), "[T]\n");
    EXPECT_FALSE(std::filesystem::exists(Path("f.qmini-save")));
}

} // namespace
