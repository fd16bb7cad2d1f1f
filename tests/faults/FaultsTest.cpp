/// @file
/// Every operation with every call that it makes of the system failing, one after the other.

#include "filecheck/QMFileCheckAPI.h"
#include "host/qmConsole.h"
#include "ini/INIParser.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <locale>
#include <new>
#include <sstream>
#include <thread>

namespace {

/// How many more calls succeed before those begin that fail; none fails while negative.
int callsLeft = -1;
bool areAllToFail = false;    ///< that one and every other call after it
const char* failed = nullptr; ///< the first call that failed
std::function<void()> beforeRead = [] {};
bool isDiskFull = false;    ///< what is opened for writing is a full disk
bool isReluctant = false;   ///< every other write is interrupted, the rest take one byte
constexpr auto New = "new"; ///< the call that fails for lack of memory

bool Fails(const char* call, int error)
{
    if (callsLeft != 0) {
        callsLeft -= callsLeft > 0;
        return false;
    }
    if (!areAllToFail)
        callsLeft = -1;
    if (failed == nullptr)
        failed = call;
    errno = error;
    return true;
}

/// The function that is hidden by ours of this name.
template <class Function>
Function* Real(Function* /*ours*/, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The library, the standard library's streams included, calls these for the system's.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

extern "C" ssize_t read(int file, void* buffer, std::size_t size)
{
    beforeRead();
    return Fails("read", EIO) ? -1 : Real(&read, "read")(file, buffer, size);
}

extern "C" ssize_t write(int file, const void* buffer, std::size_t size)
{
    static bool isInterrupted = false;
    if (isReluctant && (isInterrupted = !isInterrupted)) {
        errno = EINTR;
        return -1;
    }
    return Fails("write", ENOSPC) ? -1 : Real(&write, "write")(file, buffer, isReluctant ? 1 : size);
}

extern "C" ssize_t writev(int file, const iovec* parts, int count)
{
    return Fails("write", ENOSPC) ? -1 : Real(&writev, "writev")(file, parts, count);
}

extern "C" off64_t lseek64(int file, off64_t offset, int from) noexcept
{
    return Fails("seek", ESPIPE) ? -1 : Real(&lseek64, "lseek64")(file, offset, from);
}

extern "C" std::FILE* fopen64(const char* path, const char* mode)
{
    if (isDiskFull && *mode == 'w')
        path = "/dev/full";
    return Fails("open", EMFILE) ? nullptr : Real(&fopen64, "fopen64")(path, mode);
}

extern "C" std::FILE* fdopen(int file, const char* mode) noexcept
{
    return Fails("open", ENOMEM) ? nullptr : Real(&fdopen, "fdopen")(file, mode);
}

extern "C" int fclose(std::FILE* file)
{
    const int result = Real(&fclose, "fclose")(file);
    return Fails("close", EIO) ? EOF : result;
}

extern "C" int open(const char* path, int flags, ...) // NOLINT(cert-dcl50-cpp): the system's declaration
{
    return Fails("open", EMFILE) ? -1 : static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, 0600));
}

extern "C" int fstat(int file, struct stat* status) noexcept
{
    return Fails("status", EIO) ? -1 : Real(&fstat, "fstat")(file, status);
}

extern "C" int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status) noexcept
{
    return Fails("status", EIO) ? -1 : Real(&statx, "statx")(folder, path, flags, mask, status);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

void* operator new(std::size_t size)
{
    void* const memory = Fails(New, ENOMEM) ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* operator new[](std::size_t size) { return operator new(size); }
// Not inlined, or the compiler would take the memory for one of the original function.
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

std::string Text(bool result) { return result ? "true" : "false"; }

template <class Char>
std::string Text(const std::vector<INIParser::BasicRecord<Char>>& records)
{
    std::string text;
    for (const auto& record : records)
        text += std::string(record.Key.begin(), record.Key.end()) + '\n';
    return text;
}

struct Operation
{
    const char* Name;
    std::function<std::string(const std::string& path)> Run;
    std::string Failed; ///< the result when the file cannot be read, or not be opened for writing
    bool Edits;
};

const Operation operations[] = {
    {"GetValue", [](auto& p) { return INIParser::GetValue("k", "S", p); }, "", false},
    {"wide GetValue",
     [](auto& p) {
         const auto value = INIParser::GetValue(L"k", L"S", {p.begin(), p.end()});
         return std::string(value.begin(), value.end());
     },
     "", false},
    {"GetRecord", [](auto& p) { return Text(INIParser::GetRecord("k", "S", p)); }, "", false},
    {"wide GetRecord",
     [](auto& p) {
         return Text(INIParser::GetRecord(L"k", L"S", {p.begin(), p.end()}));
     },
     "", false},
    {"GetSection", [](auto& p) { return Text(INIParser::GetSection("S", p)); }, "", false},
    {"GetSectionNames", [](auto& p) { return std::string(INIParser::GetSectionNames(p).empty() ? "" : "S"); },
     "", false},
    {"RecordExists", [](auto& p) { return Text(INIParser::RecordExists("x", "S", p)); }, "true", false},
    {"wide RecordExists",
     [](auto& p) {
         return Text(INIParser::RecordExists(L"x", L"S", {p.begin(), p.end()}));
     },
     "true", false},
    {"SectionExists", [](auto& p) { return Text(INIParser::SectionExists("x", p)); }, "true", false},
    {"wide SectionExists",
     [](auto& p) {
         return Text(INIParser::SectionExists(L"x", {p.begin(), p.end()}));
     },
     "true", false},
    {"Content", [](auto& p) { return INIParser::Content(p); }, "", false},
    {"Create", [](auto& p) { return Text(INIParser::Create(p)); }, "false", true},
    {"Sort", [](auto& p) { return Text(INIParser::Sort(p, true)); }, "false", true},
    {"SetValue", [](auto& p) { return Text(INIParser::SetValue("k", "2", "S", p)); }, "false", true},
    {"SetValue, new key", [](auto& p) { return Text(INIParser::SetValue("x", "2", "S", p)); }, "false", true},
    {"SetValue, new section", [](auto& p) { return Text(INIParser::SetValue("x", "2", "X", p)); }, "false",
     true},
    {"wide SetValue",
     [](auto& p) {
         return Text(INIParser::SetValue(L"k", L"2", L"S", {p.begin(), p.end()}));
     },
     "false", true},
    {"wide SetValue, new section",
     [](auto& p) {
         return Text(INIParser::SetValue(L"x", L"2", L"X", {p.begin(), p.end()}));
     },
     "false", true},
    {"AddSection", [](auto& p) { return Text(INIParser::AddSection("X", p)); }, "false", true},
    {"DeleteRecord", [](auto& p) { return Text(INIParser::DeleteRecord("k", "S", p)); }, "false", true},
    {"DeleteSection", [](auto& p) { return Text(INIParser::DeleteSection("S", p)); }, "false", true},
    {"RenameSection", [](auto& p) { return Text(INIParser::RenameSection("S", "X", p)); }, "false", true},
    {"CommentRecord", [](auto& p) { return Text(INIParser::CommentRecord(INIParser::Hash, "k", "S", p)); },
     "false", true},
    {"CommentSection", [](auto& p) { return Text(INIParser::CommentSection(';', "S", p)); }, "false", true},
    {"UnCommentRecord", [](auto& p) { return Text(INIParser::UnCommentRecord("k", "S", p)); }, "false", true},
    {"UnCommentSection", [](auto& p) { return Text(INIParser::UnCommentSection("S", p)); }, "false", true},
    {"SetRecordComments", [](auto& p) { return Text(INIParser::SetRecordComments("; x", "k", "S", p)); },
     "false", true},
    {"SetSectionComments", [](auto& p) { return Text(INIParser::SetSectionComments("; x", "S", p)); },
     "false", true},
    {"CheckDeleted",
     [](auto& p) { return Text(CQMFileCheck(std::wstring(p.begin(), p.end()).c_str()).CheckDeleted()); },
     "true", false},
};

/// What can be asked of a watched file even when it may not be opened.
const Operation statusOperations[] = {
    {"CheckModified",
     [](auto& p) { return Text(CQMFileCheck(std::wstring(p.begin(), p.end()).c_str()).CheckModified()); },
     "true", false},
    {"ApplyChanges",
     [](auto& p) { return Text(CQMFileCheck(std::wstring(p.begin(), p.end()).c_str()).ApplyChanges()); },
     "false", false},
    {"watch list",
     [](auto& p) {
         CQMFileCheckAPI::Initialize();
         CQMFileCheckAPI::AddWatchDog(std::wstring(p.begin(), p.end()).c_str());
         CQMFileCheckAPI::Enable(true);
         return Text(CQMFileCheckAPI::Check());
     },
     "true", false},
};

class Faults : public TemporaryFolder
{
protected:
    Faults() { Reset(); }
    ~Faults() override { CQMFileCheckAPI::Initialize(); }

    void Reset() const { Write(m_text); }

    /// Runs an operation on a file with the text, and tells its result and what the file then holds.
    std::pair<std::string, std::string> Run(const Operation& operation) const
    {
        Reset();
        std::string result = operation.Run(m_path);
        return {result, Read(m_path)};
    }

    /// Fails an operation's n-th call, for every n until it makes no more.
    /// @return how many calls it makes.
    int FailEach(const Operation& operation) const
    {
        const auto [good, edited] = Run(operation);
        for (int n = 0;; ++n) {
            Reset();
            failed = nullptr;
            callsLeft = n;
            std::string result;
            try {
                result = operation.Run(m_path);
            } catch (const std::bad_alloc&) {
                result = New;
            }
            callsLeft = -1;
            if (failed == nullptr)
                return n;
            const std::string call = failed;
            const std::string after = Read(m_path);

            bool isAsDocumented = false;
            if (result == New)
                isAsDocumented = after == m_text && (call == New || areAllToFail);
            else if (result == operation.Failed)
                isAsDocumented = after == m_text && call != "write";
            else if (call == "write") // is not noticed, and what has been written stays
                isAsDocumented = result == good && edited.compare(0, after.size(), after) == 0;
            else if (operation.Name == std::string("Sort") && call != "close")
                isAsDocumented = result == good && LacksKeysOnly(after, edited);
            else
                isAsDocumented = result == good && after == edited && call != New;
            EXPECT_TRUE(isAsDocumented)
                << operation.Name << ", call " << n << " (" << call << ") gave " << result.substr(0, 40)
                << " and a file of " << after.size() << " bytes";
        }
    }

    /// @return whether lines of keys are all that is missing in a text. Sorting reads the keys section by section,
    ///   and a section whose keys could not be read then has none.
    static bool LacksKeysOnly(const std::string& text, const std::string& whole)
    {
        std::istringstream lines(text);
        std::size_t at = 0;
        for (std::string line; std::getline(lines, line) && at != std::string::npos;)
            at = whole.find(line + '\n', at);
        return at != std::string::npos &&
               std::count(text.begin(), text.end(), '[') == std::count(whole.begin(), whole.end(), '[');
    }

    /// Runs something without the privileges of the superuser.
    static void Unprivileged(const std::function<void()>& run)
    {
        std::thread([&] {
            // The bare call, unlike the C library's, leaves the other threads their privileges.
            ASSERT_TRUE(getuid() != 0 || syscall(SYS_setresuid, 65534, 65534, 65534) == 0);
            run();
        }).join();
    }

    /// Runs something with a resource limited.
    static void Limited(__rlimit_resource resource, rlim_t limit, const std::function<void()>& run)
    {
        rlimit before{};
        getrlimit(resource, &before);
        const rlimit low = {limit, before.rlim_max};
        setrlimit(resource, &low);
        run();
        setrlimit(resource, &before);
    }

    static int NextDescriptor()
    {
        const int next = dup(STDIN_FILENO);
        close(next);
        return next;
    }

    /// @return a text with a value of this length.
    static std::string TextWith(std::size_t length)
    {
        return "above=1\n; note\n[S]\nk=1\n#l=" + std::string(length, 'v') + "\n[T]\nm=1\n[S]\nk=3\n";
    }

    std::string m_text = TextWith(10);
    const std::string m_path = Path("test.ini");
};

TEST_F(Faults, EachCallOfEachOperationFails)
{
    const int nextDescriptor = NextDescriptor();
    int points = 0;
    struct
    {
        bool All;
        const char* Locale;
        std::size_t Length; ///< the last of them takes several reads, and writes past the buffer
    } const rounds[] = {{false, "C", 10}, {true, "C", 10}, {false, "C.UTF-8", 10}, {false, "C", 110'000}};
    for (const auto& [all, locale, length] : rounds) {
        const std::locale before = std::locale::global(std::locale(locale));
        areAllToFail = all;
        m_text = TextWith(length);
        for (const Operation& operation : operations)
            points += FailEach(operation);
        for (const Operation& operation : statusOperations)
            points += FailEach(operation);
        std::locale::global(before);
    }
    EXPECT_EQ(NextDescriptor(), nextDescriptor) << "a descriptor was left open";
    std::printf("%d calls failed\n", points);
}

TEST_F(Faults, TheSystemRefuses)
{
    using Outcome = std::pair<std::string, std::string>;
    const auto refused = [this](const Operation& operation, const Outcome&) {
        return Outcome{operation.Failed, m_text};
    };
    struct
    {
        const char* Name;
        std::function<void(const std::function<void()>& run)> Under;
        std::function<Outcome(const Operation& operation, const Outcome& good)> Expected;
    } const conditions[] = {
        {"may not be read",
         [this](const auto& run) {
             chmod(m_path.c_str(), 0);
             Unprivileged(run);
         },
         refused},
        {"may not be written",
         [this](const auto& run) {
             chmod(m_path.c_str(), 0444);
             Unprivileged(run);
         },
         [&](const Operation& operation, const Outcome& good) {
             return operation.Edits ? refused(operation, good) : good;
         }},
        {"too many open files",
         [](const auto& run) { Limited(RLIMIT_NOFILE, static_cast<rlim_t>(NextDescriptor()), run); },
         refused},
        {"too large a file", [](const auto& run) { Limited(RLIMIT_FSIZE, 50, run); },
         [](const Operation& operation, const Outcome& good) {
             return Outcome{good.first, operation.Edits ? good.second.substr(0, 50) : good.second};
         }},
        {"full disk",
         [](const auto& run) {
             isDiskFull = true;
             run();
             isDiskFull = false;
         },
         [this](const Operation&, const Outcome& good) {
             return Outcome{good.first, m_text}; // since it was not this file that was opened
         }},
    };
    ASSERT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
    for (const auto& [name, under, expected] : conditions)
        for (const Operation& operation : operations) {
            SCOPED_TRACE(name);
            const auto good = Run(operation);
            Reset();
            std::string result;
            under([&, &path = m_path] { result = operation.Run(path); });
            chmod(m_path.c_str(), 0644);
            EXPECT_TRUE(std::pair(result, Read(m_path)) == expected(operation, good)) << operation.Name;
        }
}

TEST_F(Faults, AFileIsReplacedWhileItIsRead)
{
    // What differs in the first is changed back before it is compared.
    std::string similar = m_text;
    similar.replace(similar.find("k=1"), 3, "k=7");
    for (const Operation& operation : operations)
        for (const std::string& replacement : {similar, std::string("[U]\nu=1\n"), std::string()})
            for (const bool inPlace : {false, true}) {
                const auto good = Run(operation);
                bool isReplaced = true;
                for (int n = 0; isReplaced; ++n) {
                    Reset();
                    isReplaced = false;
                    beforeRead = [&, left = n]() mutable {
                        if (left-- != 0)
                            return;
                        isReplaced = true;
                        Write(replacement, inPlace ? "test.ini" : "new.ini");
                        if (!inPlace)
                            std::filesystem::rename(Path("new.ini"), m_path);
                    };
                    std::string result = operation.Failed;
                    try {
                        result = operation.Run(m_path);
                    } catch (const std::out_of_range&) { // torn lines
                    }
                    beforeRead = [] {};
                    std::string after = Read(m_path);
                    if (isReplaced && operation.Edits && result == operation.Failed) {
                        EXPECT_EQ(after, replacement) << operation.Name;
                    }
                    if (replacement == similar) {
                        std::replace(result.begin(), result.end(), '7', '1');
                        std::replace(after.begin(), after.end(), '7', '1');
                        EXPECT_EQ(result, good.first) << operation.Name;
                        EXPECT_EQ(after, good.second) << operation.Name;
                    }
                }
            }
}

TEST(Console, WritesAreInterruptedPartialOrFail)
{
    Capture console(STDOUT_FILENO);
    errno = EDOM;
    isReluctant = true;
    CQMConsoleAPI::Log(L"text\n");
    isReluctant = false;
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(console.Writes(), (std::vector<std::string>{"t", "e", "x", "t", "\n"}));

    const int output = dup(STDOUT_FILENO);
    const int full = open("/dev/full", O_WRONLY);
    dup2(full, STDOUT_FILENO);
    CQMConsoleAPI::Log(L"text\n");
    EXPECT_EQ(errno, EDOM);
    dup2(output, STDOUT_FILENO);
    close(output);
    close(full);
}

} // namespace
