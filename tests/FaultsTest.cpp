// SPDX-License-Identifier: MIT
/// @file
/// Fault injection: every operation with each of its system calls and allocations failing.

#include "qmUtility/host/qmConsole.h"
#include "qmUtility/ini/INIDocument.h"
#include "tests/support/Capture.h"
#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <locale>
#include <new>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

/// The number of calls that still succeed; negative: all do.
int callsLeft = -1;
bool areAllToFail = false; ///< that one and every other call after it
std::string_view failed;   ///< the first call that failed
bool isReluctant = false;  ///< every other write is interrupted, the rest take one byte
int writes = 0;
int opens = 0;                          ///< of files for reading
long allocations = 0;                   ///< that are not released yet
constexpr std::string_view New = "new"; ///< the call that fails for lack of memory

bool Fails(std::string_view call, int error)
{
    if (callsLeft != 0) {
        callsLeft -= callsLeft > 0;
        return false;
    }
    if (!areAllToFail)
        callsLeft = -1;
    if (failed.empty())
        failed = call;
    errno = error;
    return true;
}

/// @return the system's function of this name.
template <class Function>
Function* Real(Function* /*ours*/, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Fails a call, or makes it of the real function.
template <class Result, class... Parameters>
Result Call(Result (*ours)(Parameters...), const char* name, std::type_identity_t<Result> failure, int error,
            std::type_identity_t<Parameters>... arguments)
{
    return Fails(name, error) ? failure : Real(ours, name)(arguments...);
}

} // namespace

// The library calls these in place of the system's.

extern "C" ssize_t read(int file, void* buffer, std::size_t size)
{
    return Call(&read, "read", -1, EIO, file, buffer, size);
}

extern "C" ssize_t write(int file, const void* buffer, std::size_t size)
{
    ++writes;
    if (isReluctant && writes % 2 != 0) {
        errno = EINTR;
        return -1;
    }
    return Call(&write, "write", -1, ENOSPC, file, buffer, isReluctant ? 1 : size);
}

extern "C" int openat(int folder, const char* path, int flags, ...)
{
    std::va_list mode;
    va_start(mode, flags);
    const mode_t created = (flags & O_CREAT) != 0 ? va_arg(mode, mode_t) : 0;
    va_end(mode);
    opens += (flags & O_ACCMODE) == O_RDONLY;
    return Fails("openat", EMFILE) ? -1 : Real(&openat, "openat")(folder, path, flags, created);
}

extern "C" int close(int file)
{
    const int result = Real(&close, "close")(file); // which closes it even if it fails
    return Fails("close", EIO) ? -1 : result;
}

void* operator new(std::size_t size)
{
    void* const memory = Fails(New, ENOMEM) ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    ++allocations;
    return memory;
}

// Not inlined, or the compiler would take the memory for one of the original function.
[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    allocations -= memory != nullptr;
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

struct Operation
{
    const char* Name;
    /// @return how much was found, or whether all went well; the opposite when the file cannot be read or not
    ///   be opened for writing.
    std::function<std::size_t(const std::string& path)> Run;
};

// Edits differ only in what they do to the document; see `AnEditOfADocumentIsDoneOrNot`.
const std::vector<Operation> Operations = {
    {"GetValue", [](auto& p) { return INIParser::GetValue("l", "S", p).size(); }},
    {"wide GetValue", [](auto& p) { return INIParser::GetValue(L"l", L"S", Widen(p)).size(); }},
    {"GetSection", [](auto& p) { return INIParser::GetSection("S", p).size(); }},
    {"RecordExists", [](auto& p) { return INIParser::RecordExists("x", "S", p); }},
    {"wide SectionExists", [](auto& p) { return INIParser::SectionExists(L"x", Widen(p)); }},
    {"Content", [](auto& p) { return INIParser::Content(p).size(); }},
    {"Create", [](auto& p) { return INIParser::Create(p); }},
    {"Sort", [](auto& p) { return INIParser::Sort(p, true); }},
    {"SetValue", [](auto& p) { return INIParser::SetValue("k", "2", "S", p); }},
    {"wide SetValue", [](auto& p) { return INIParser::SetValue(L"k", L"2", L"S", Widen(p)); }},
};

constexpr std::size_t Threw = std::string::npos; ///< the result of an operation that ended with an exception

/// An operation's result, and what the file holds then.
using Outcome = std::pair<std::size_t, std::string>;

class Faults : public TemporaryFolder
{
protected:
    /// Calls a function.
    /// @param n the call of it that fails
    static std::size_t Try(int n, const std::function<std::size_t()>& function)
    {
        std::size_t result = Threw;
        callsLeft = n;
        try {
            result = function();
        } catch (const std::bad_alloc&) {
        }
        callsLeft = -1;
        return result;
    }

    /// Runs an operation on a file with the text.
    Outcome Run(const Operation& operation, int n = -1) const
    {
        Write(m_text);
        const std::size_t result = Try(n, [&] { return operation.Run(m_path); });
        return {result, Read(m_path)};
    }

    /// Fails an operation's n-th call, for every n until it makes no more.
    void FailEach(const Operation& operation) const
    {
        const auto [good, edited] = Run(operation);
        for (int n = 0;; ++n) {
            failed = {};
            const auto [result, after] = Run(operation, n);
            if (failed.empty())
                return;
            const bool isWrite = failed.starts_with("write");
            bool isAsDocumented = false;
            if (result == Threw)
                isAsDocumented = after == m_text && (failed == New || areAllToFail);
            else if (result == std::size_t{!good})
                isAsDocumented = after == m_text && !isWrite;
            else if (isWrite) // is not noticed, and what has been written stays
                isAsDocumented = result == good && edited.starts_with(after);
            else
                isAsDocumented = result == good && after == edited && failed != New;
            EXPECT_TRUE(isAsDocumented) << operation.Name << ", call " << n << " (" << failed << ") gave "
                                        << result << " and a file of " << after.size() << " bytes";
        }
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
    const auto countDescriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto descriptors = countDescriptors();
    const std::tuple<bool, const char*, std::size_t> rounds[] = {
        {true, "C", 10},
        {false, "C.UTF-8", 10},
        {false, "C", 110'000}, // takes several reads, and writes past the buffer
    };
    for (const auto& [all, locale, length] : rounds) {
        const std::locale before = std::locale::global(std::locale(locale));
        areAllToFail = all;
        m_text = TextWith(length);
        for (const Operation& operation : Operations)
            FailEach(operation);
        std::locale::global(before);
    }
    EXPECT_EQ(countDescriptors(), descriptors) << "a descriptor was left open";
}

TEST_F(Faults, EachOperationReadsItsFileOnce)
{
    for (const Operation& operation : Operations) {
        opens = 0;
        Run(operation);
        EXPECT_EQ(opens, operation.Name != std::string("Create")) << operation.Name;
    }
}

TEST_F(Faults, AnEditOfADocumentIsDoneOrNot)
{
    const std::function<bool(INIDocument&)> edits[] = {
        [](auto& d) { return d.Load("/dev/null"); },
        [](auto& d) { return d.SetValue("k", "a value that needs memory", "S"); },
        [](auto& d) { return d.SetValue("x", "a value that needs memory", "X"); },
        [](auto& d) { return d.AddSection("a name that needs memory"); },
        [](auto& d) { return d.RenameSection("S", "a name that needs memory"); },
        [](auto& d) { return d.SetRecordComments("; comments that need memory", "k", "S"); },
        [](auto& d) { return d.Sort(true); },
        [](auto& d) { return d = INIDocument(d), true; },
    };
    INIDocument original;
    ASSERT_TRUE(original.Load(Write(m_text)));
    for (int i = 0; i != 16; ++i) // the next edit looks for unused texts
        original.SetValue("k", std::to_string(i), "S");
    for (const auto& edit : edits) {
        INIDocument edited = original;
        EXPECT_TRUE(edit(edited));
        std::size_t result = Threw;
        for (int n = 0; result != 1; ++n) {
            INIDocument document = original;
            result = Try(n, [&] { return edit(document); });
            EXPECT_EQ(document.Content(), (result == 1 ? edited : original).Content())
                << "edit " << &edit - edits << ", call " << n;
        }
    }
}

TEST_F(Faults, ADocumentReleasesTheTextsThatEditsReplace)
{
    INIDocument document;
    const long before = allocations;
    for (int i = 0; i != 10'000; ++i)
        document.SetValue("k", std::to_string(i), "S");
    EXPECT_LT(allocations - before, 1000);
}

TEST_F(Faults, EachRecordIsFlushed)
{
    Write("; c\n[S]\na=1\n\nb=2\n");
    writes = 0;
    EXPECT_TRUE(INIParser::SetValue("a", "2", "S", m_path));
    EXPECT_EQ(std::exchange(writes, 0), 3);
    EXPECT_TRUE(INIParser::SetValue(L"a", L"3", L"T", Widen(m_path)));
    EXPECT_EQ(writes, 5);
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
    close(STDOUT_FILENO);
    CQMConsoleAPI::Log(L"text\n");
    EXPECT_EQ(errno, EDOM);
    dup2(output, STDOUT_FILENO);
    close(output);
}

} // namespace
