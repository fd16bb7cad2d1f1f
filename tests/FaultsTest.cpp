// SPDX-License-Identifier: MIT
// Fault injection: operations with each system call and allocation failing, saves that are killed.

#include "qmUtility/filecheck/QMFileCheck.h"
#include "qmUtility/host/qmConsole.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"
#include "qmUtility/platform/FileLock.h"
#include "qmUtility/timing/QMFPSCounter.h"
#include "qmUtility/timing/QMTimer.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <functional>
#include <locale>
#include <new>
#include <tuple>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// What fails: one call, that call and all later ones, or the process, which ends before the call.
enum class Failure { One, All, Kill } failure = Failure::One;
int callsLeft = -1;        ///< that still succeed; negative: all do
int reason = EIO;          ///< the error of calls that fail
std::string_view failed;   ///< the first call that failed
bool isReluctant = false;  ///< calls are interrupted once, and writes take one byte
std::string_view interrupted;
constexpr std::string_view Interruptible[] = {
    "close", "close of a new file", "fsync", "fsync of a folder", "ftruncate", "openat", "read", "write"};
int lowest = INT_MAX;                    ///< descriptor of a file; -1: one that is not closed on exec
int reopened = -1;                       ///< what the host makes its standard output during the next call
int newFile = -1;                        ///< descriptor of the file that was created last
unsigned order = 0;                      ///< a digit for each file synchronised, renamed, folder synchronised
constexpr std::string_view New = "new";  ///< the call that fails for lack of memory

bool Fails(std::string_view call) {
    if (isReluctant && std::ranges::count(Interruptible, call) != 0) {
        interrupted = interrupted != call ? call : "";
        errno = EINTR;
        return !interrupted.empty();
    }
    if (callsLeft != 0) {
        callsLeft -= callsLeft > 0;
        return false;
    }
    if (failure == Failure::Kill) _exit(2);
    if (failure == Failure::One) callsLeft = -1;
    if (failed.empty()) failed = call;
    errno = reason;
    return true;
}

}  // namespace

// The library calls these in place of the system's: they fail, or call the real function.

#define REAL(name) reinterpret_cast<decltype(&(name))>(dlsym(RTLD_NEXT, #name))
#define CALL(name, ...) (Fails(#name) ? -1 : REAL(name)(__VA_ARGS__))
#define REPLACE(type, name, parameters, ...) \
    extern "C" type name parameters { return CALL(name, __VA_ARGS__); }

REPLACE(int, fchmod, (int file, mode_t mode) noexcept, file, mode)
REPLACE(int, fchown, (int file, uid_t owner, gid_t group) noexcept, file, owner, group)
REPLACE(ssize_t, fgetxattr, (int f, const char* name, void* to, std::size_t size) noexcept, f, name, to, size)
REPLACE(ssize_t, flistxattr, (int file, char* to, std::size_t size) noexcept, file, to, size)
REPLACE(int, fremovexattr, (int file, const char* name) noexcept, file, name)
REPLACE(int, fsetxattr, (int f, const char* n, const void* v, std::size_t s, int o) noexcept, f, n, v, s, o)
REPLACE(int, fstat, (int file, struct stat* status) noexcept, file, status)
REPLACE(int, fstatat, (int at, const char* path, struct stat* to, int flags) noexcept, at, path, to, flags)
REPLACE(int, fstatfs, (int file, struct statfs* status) noexcept, file, status)
REPLACE(int, ftruncate, (int file, off_t size) noexcept, file, size)
REPLACE(off_t, lseek, (int file, off_t offset, int from) noexcept, file, offset, from)
REPLACE(ssize_t, read, (int file, void* to, std::size_t size), file, to, size)
REPLACE(ssize_t, readlinkat, (int at, const char* path, char* to, std::size_t n) noexcept, at, path, to, n)
REPLACE(int, unlinkat, (int at, const char* path, int flags) noexcept, at, path, flags)
REPLACE(ssize_t, write, (int file, const void* from, std::size_t size), file, from, isReluctant ? 1 : size)

// The library always passes a mode; that of other callers may be missing, and is not used then.
extern "C" int OpenAt(int folder, const char* path, int flags, mode_t mode) asm("openat");
int OpenAt(int folder, const char* path, int flags, mode_t mode) {
    if (reopened != -1) dup2(std::exchange(reopened, -1), STDOUT_FILENO);
    const int file = CALL(openat, folder, path, flags, mode);
    if (file >= 0) lowest = std::min(lowest, (flags & O_CLOEXEC) != 0 ? file : -1);
    if ((flags & O_EXCL) != 0) newFile = file;
    return file;
}

extern "C" int fsync(int file) {  // tests need not wait for a disk
    const bool isFolder = (fcntl(file, F_GETFL) & O_DIRECTORY) != 0;
    if (Fails(isFolder ? "fsync of a folder" : "fsync")) return -1;
    order = 10 * order + (isFolder ? 3 : 1);
    return 0;
}

extern "C" int renameat(int at, const char* from, int toAt, const char* to) noexcept {
    order = 10 * order + 2;
    return CALL(renameat, at, from, toAt, to);
}

extern "C" int close(int file) {
    const int result = REAL(close)(file);  // which closes it even if it fails
    const bool isNew = file == newFile;
    if (isNew) newFile = -1;
    return Fails(isNew ? "close of a new file" : "close") ? -1 : result;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Fails(New) ? nullptr : std::malloc(size);
}
// Not inlined, or the compiler would take the memory for one of the original functions.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = operator new(size, std::nothrow);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

/// Operations of `INIParser`. Edits differ only in what they do to the records.
const struct Operation {
    std::string_view Name;
    int Writes;  ///< one for each record, so that what is written survives the host
    /// @return how much was found, or whether all went well; the opposite when the file cannot be read or not
    ///   be opened for writing.
    std::function<std::size_t(const std::string& path)> Run;
} Operations[] = {
    {"GetValue", 0, [](auto& p) { return INIParser::GetValue("l", "S", p).size(); }},
    {"wide GetValue", 0, [](auto& p) { return INIParser::GetValue(L"l", L"S", Widen(p)).size(); }},
    {"GetSection", 0, [](auto& p) { return INIParser::GetSection("S", p).size(); }},
    {"RecordExists", 0, [](auto& p) { return INIParser::RecordExists("x", "S", p); }},
    {"wide SectionExists", 0, [](auto& p) { return INIParser::SectionExists(L"x", Widen(p)); }},
    {"Content", 0, [](auto& p) { return INIParser::Content(p).size(); }},
    {"Create", 0, [](auto& p) { return INIParser::Create(p); }},
    {"Sort", 10, [](auto& p) { return INIParser::Sort(p, true); }},
    {"SetValue", 8, [](auto& p) { return INIParser::SetValue("k", "2", "S", p); }},
    {"wide SetValue", 8, [](auto& p) { return INIParser::SetValue(L"k", L"2", L"S", Widen(p)); }},
};

constexpr std::size_t Threw = std::string::npos;  ///< the result of an operation that ended with an exception

class Faults : public TemporaryFolder {
protected:
    /// Calls a function, of which call `n` fails.
    static std::size_t Try(int n, const std::function<std::size_t()>& function) {
        std::size_t result = Threw;
        failed = {};
        callsLeft = n;
        try {
            result = function();
        } catch (const std::bad_alloc&) {
        }
        callsLeft = -1;
        return result;
    }

    static auto CountFiles(const std::string& folder) {
        return std::distance(fs::directory_iterator(folder), {});
    }
};

TEST_F(Faults, EachCallOfEachOperationFails) {
    const auto check = [this](const Operation& operation, std::size_t length) {
        const std::string text =
            "above=1\n; n\n[S]\nk=1\n#l=" + std::string(length, 'v') + "\n[T]\nm=1\n[S]\nk=3\n";
        const auto run = [&](int n) {
            Write(text);
            const std::size_t result = Try(n, [&] { return operation.Run(m_path); });
            return std::pair(result, Read(m_path));
        };
        const auto [good, edited] = run(-1);
        int writes = 0;
        for (int n = 0; n == 0 || !failed.empty(); ++n) {
            const auto [result, after] = run(n);
            writes += failed == "write";
            bool isAsDocumented = result == good && after == edited && failed != New;
            if (result == Threw)
                isAsDocumented = after == text && (failed == New || failure == Failure::All);
            else if (failed == "write")  // is not reported, and what has been written stays
                isAsDocumented = result == good && edited.starts_with(after);
            else if (result == std::size_t{!good})
                isAsDocumented = after == text;
            EXPECT_TRUE(isAsDocumented) << operation.Name << ", call " << n << " (" << failed << ") gave "
                                        << result << " and a file of " << after.size() << " bytes";
        }
        EXPECT_EQ(writes, operation.Writes) << operation.Name;
    };
    const auto descriptors = CountFiles("/proc/self/fd");
    for (const auto& [kind, locale, length] :  // the long text is written past the buffer
         {std::tuple(Failure::All, "C", 10U),
          {Failure::One, "C.UTF-8", 10U},
          {Failure::One, "C", 110'000U}}) {
        const std::locale before = std::locale::global(std::locale(locale));
        failure = kind;
        for (const Operation& operation : Operations) check(operation, length);
        std::locale::global(before);
    }
    EXPECT_EQ(CountFiles("/proc/self/fd"), descriptors) << "a descriptor was left open";
}

TEST_F(Faults, AnEditOfADocumentIsDoneOrNot) {
    const std::function<bool(INIDocument&)> edits[] = {
        [](auto& d) { return d.Load("/dev/null"); },
        [](auto& d) { return d.Parse("[a text that needs memory]\nk=1\n"); },
        [](auto& d) { return d.SetValue("k", "a value that needs memory", "S"); },
        [](auto& d) { return d.SetValue("x", "v", "a name that needs memory"); },
        [](auto& d) { return d.DeleteSection("S"); },
        [](auto& d) { return d.RenameSection("S", "a name that needs memory"); },
        [](auto& d) { return d.CommentSection(INICommentChar::Hash, "S"); },
        [](auto& d) { return d.SetRecordComments("; comments that need\n; memory\n", "k", "S"); },
        [](auto& d) { return d.Sort(true); },
        [](auto& d) { return d = INIDocument(d), true; },
    };
    INIDocument original;
    ASSERT_TRUE(original.Parse("above=1\n; note\n[S]\nk=1\n#l=v\n[T]\nm=1\n[S]\nk=3\n"));
    for (const auto& edit : edits) {
        INIDocument edited = original;
        ASSERT_TRUE(edit(edited));
        bool isDone = false;
        for (int n = 0; !isDone; ++n) {
            INIDocument document = original;
            isDone = Try(n, [&] { return edit(document); }) == 1;
            EXPECT_EQ(document.Text(), (isDone ? edited : original).Text())
                << "edit " << &edit - edits << ", call " << n;
            EXPECT_TRUE(isDone || (edit(document) && document.Text() == edited.Text()));
        }
    }
}

TEST_F(Faults, ADocumentReleasesTheTextsThatEditsReplace) {
    INIDocument document;
    const auto used = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };  // 0 under sanitizers
    const std::size_t before = used();
    for (int i = 0; i != 10'000; ++i)
        document.SetValue("k", "a value that needs memory" + std::to_string(i), "S");
    EXPECT_LT(used(), before + 50'000);
}

TEST_F(Faults, AFrameCounterWithoutMemoryForOtherRatesKeepsItsOwn) {
    CQMFPSCounter counter;
    EXPECT_EQ(Try(0, [&] { return counter.SetFPSAverageSampleCount(2), 1; }), Threw);
    EXPECT_THROW(counter.SetFPSAverageSampleCount(ULONG_MAX / 2 + 6), std::bad_alloc);  // more than 32 bits
    EXPECT_EQ(counter.GetFPSSampleCount(), 16);
    EXPECT_GT(counter.GetFPSSample(0), 0);
}

void MakeNothing(const std::string& /*path*/) {}
void MakeLink(const std::string& path) {
    if (fs::exists(path)) fs::rename(path, path + ".target");
    fs::create_symlink("test.ini.target", path);
}
void MakeName(const std::string& path) { fs::create_hard_link(path, path + ".same"); }
/// Attributes, and an access list that new files inherit from the folder, where the file system has them.
void MakeAttributes(const std::string& path) {
    constexpr unsigned list[] = {2, 0x60001, ~0U, 0x60002, 1, 0x40004, ~0U, 0x60010, ~0U, 0x40020, ~0U};
    setxattr(fs::path(path).parent_path().c_str(), "system.posix_acl_default", list, sizeof list, 0);
    setxattr(path.c_str(), "user.note", "text", 4, 0);
    EXPECT_TRUE(chown(path.c_str(), 1, 2) == 0 || geteuid() != 0);
    chmod(path.c_str(), 02640);
}

/// What is saved to, made anew for each save.
constexpr struct Target {
    const char* Name;
    std::size_t Length;  ///< of its content; 0: there is none
    void (*Make)(const std::string& path);
} Targets[] = {
    {"file", 40, MakeNothing},
    {"no file", 0, MakeNothing},
    {"link", 60, MakeLink},
    {"link to no file", 0, MakeLink},
    {"attributes", 60, MakeAttributes},
    {"shorter file with two names", 10, MakeName},  // written in place, which a kill may interrupt
    {"longer file with two names", 90, MakeName},
};

class Saves : public Faults {
protected:
    /// @return the content of the file, its status, and the number of files in its folder.
    auto Now() const {
        struct stat status = {};
        stat(m_file.c_str(), &status);
        const auto attribute = [this](const char* name) {
            char value[100] = {};
            const ssize_t size = getxattr(m_file.c_str(), name, value, sizeof value);
            return std::string(value, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        };
        return std::tuple(fs::exists(m_file) ? Read(m_file) : "none", CountFiles(m_folder),
                          fs::is_symlink(m_file), status.st_mode, status.st_uid, status.st_gid,
                          status.st_nlink, attribute("user.note"), attribute("system.posix_acl_access"));
    }

    auto Make(const Target& target) const {
        fs::remove_all(m_folder);
        fs::create_directory(m_folder);
        if (target.Length != 0) Write(std::string(target.Length, 'o'), "folder/test.ini");
        target.Make(m_file);
        return Now();
    }

    /// @return what a save is to make of a target: the same as a plain write.
    auto MakeSaved(const Target& target) const {
        Make(target);
        Write(m_new, "folder/test.ini");
        return Now();
    }

    bool Save(const std::string& text) {
        INIDocument document;
        return document.Parse(text) && document.Save(m_file, m_error);
    }

    /// @return the status of a process of its own that calls a function: 0 if that returns true.
    static int StatusOf(const std::function<bool()>& function) {
        if (fork() == 0) _exit(function() ? 0 : 1);
        int status = -1;
        wait(&status);
        return status;
    }

    const std::string m_folder = Path("folder");
    const std::string m_file = m_folder + "/test.ini";
    const std::string m_new = std::string(50, 'n');
    std::error_code m_error;
};

TEST_F(Saves, AreDoneOrNotWhicheverCallsFailOrAreInterrupted) {
    constexpr std::string_view steps[] = {
        "close of a new file", "fchmod", "fchown", "fremovexattr", "fsetxattr", "fsync",
        "ftruncate",           "lseek",  "openat", "renameat",     "write"};
    const auto descriptors = CountFiles("/proc/self/fd");
    for (const Target& target : Targets) {
        const auto saved = MakeSaved(target);
        Make(target);
        order = 0;
        isReluctant = true;
        EXPECT_TRUE(Save(m_new));
        isReluctant = false;
        EXPECT_EQ(Now(), saved) << target.Name;
        EXPECT_EQ(order, target.Make == MakeName ? 1U : 123U) << target.Name;
        for (const int error : {EPERM, EIO}) {  // it is not allowed, or goes wrong
            reason = error;
            bool isFirstOpen = true;  // a file that may not be written to is not replaced
            for (int n = 0; n == 0 || !failed.empty(); ++n) {
                const auto before = Make(target);
                const std::size_t result = Try(n, [&] { return Save(m_new); });
                const bool hasReason = result == Threw ? failed == New : bool(m_error) == (result == 0);
                // What a new file may not have or do, the file has that is written in place.
                const bool canOverwrite = error == EPERM && target.Length != 0 && target.Make != MakeName;
                const bool isStep =
                    std::ranges::count(steps, failed) != 0 && (failed != "openat" || error == EIO);
                const bool isProtected = failed == "openat" && std::exchange(isFirstOpen, false);
                EXPECT_TRUE(hasReason && Now() == (result == 1 ? saved : before) &&
                            (failed.empty() ? result == 1 : !isStep || result == canOverwrite) &&
                            (!isProtected || result == 0))
                    << target.Name << ", call " << n << " (" << failed << ") gave " << result;
            }
        }
    }
    EXPECT_EQ(CountFiles("/proc/self/fd"), descriptors) << "a descriptor was left open";
}

TEST_F(Saves, LeaveOneContentWholeWhenTheProcessIsKilled) {
    for (const Target& target : Targets)
        for (int n = 0, status = -1; target.Make != MakeName && status != 0; ++n) {
            ASSERT_LT(n, 1000) << target.Name << " cannot be saved to";
            const auto before = std::get<0>(Make(target));
            status = StatusOf([&] {
                failure = Failure::Kill;
                callsLeft = n;
                return Save(m_new);
            });
            const auto after = std::get<0>(Now());
            EXPECT_TRUE(after == m_new || (after == before && status != 0)) << target.Name << ", call " << n;
        }
}

TEST_F(Saves, AreNeverSeenInPart) {
    const std::string texts[] = {std::string(10, 'a'), std::string(100'000, 'b')};
    Make(Targets[0]);
    ASSERT_TRUE(Save(texts[0]));
    if (fork() == 0) {
        int saves = 0;
        while (saves != 500 && Save(texts[saves % 2])) ++saves;
        _exit(saves == 500 ? 0 : 1);
    }
    int status = -1;
    while (waitpid(-1, &status, WNOHANG) == 0) {
        const std::string text = Read(m_file);
        EXPECT_TRUE(text == texts[0] || text == texts[1]);
    }
    EXPECT_EQ(status, 0);
}

TEST_F(Saves, AndLogsWriteAllToPipesAndDevices) {
    Capture output(STDOUT_FILENO);
    INIDocument document;
    isReluctant = true;
    EXPECT_TRUE(document.Parse("ab") && document.Save("/dev/stdout"));
    CQMConsoleAPI::Log(L"cd");
    isReluctant = false;
    std::string all;
    for (const std::string& bytes : output.Writes()) all += bytes;
    EXPECT_EQ(all, "abcd");
    EXPECT_FALSE(document.Save("/dev/full") || document.Save(Path("")));
}

TEST_F(Faults, AWatchedPipeIsNotWaitedFor) {
    mkfifo(m_path.c_str(), 0600);
    EXPECT_FALSE(CQMFileCheck(m_widePath.c_str()).CheckDeleted());
}

TEST_F(Saves, AndOtherCallsTakeNoClosedStandardStream) {
    Make(Targets[0]);
    CQMFileCheck check(Widen(m_file).c_str());
    platform::FileLock lock;
    const std::function<bool()> calls[] = {
        [&] { return Save(m_new); }, [&] { return !check.CheckDeleted(); },
        [&] { return lock.TryLock(platform::SystemPath(m_file), m_error); },  // keeps the file open
    };
    for (const auto& call : calls) {
        const int status = StatusOf([&] {
            reopened = fcntl(STDOUT_FILENO, F_DUPFD, 3);
            for (const int stream : {0, 1, 2}) close(stream);
            lowest = INT_MAX;
            const bool isDone = call() && lowest > 2 && lowest != INT_MAX && fcntl(1, F_GETFD) != -1;
            close(1);
            errno = EDOM;
            CQMConsoleAPI::Log(L"text\n");
            CQMTimer().TraceLapsedTime(true, false, L"text");
            return isDone && errno == EDOM && fcntl(0, F_GETFD) + fcntl(1, F_GETFD) + fcntl(2, F_GETFD) == -3;
        });
        EXPECT_EQ(status, 0) << "call " << &call - calls;
    }
    EXPECT_EQ(Read(m_file), m_new);
}

}  // namespace
