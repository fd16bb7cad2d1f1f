// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

#include <codecvt>
#include <locale>

namespace {

class Files : public TemporaryFolder
{
protected:
    ~Files() override { std::locale::global(std::locale::classic()); }

    /// Has the global locale convert by the facet.
    static void ConvertBy(auto* facet) { std::locale::global(std::locale(std::locale::classic(), facet)); }
};

TEST_F(Files, PathsThatNameNoFileAreUnreadable)
{
    const std::string withNul = Write("[S]\nk=1\n") + std::string("\0.ini", 5);
    EXPECT_FALSE(INIParser::Create(withNul));
    for (const std::string& path : {withNul, Path("missing.ini"), Path("")}) {
        const std::wstring wide(path.begin(), path.end());
        EXPECT_EQ(INIParser::Content(path), "");
        EXPECT_TRUE(INIParser::RecordExists("k", "S", path));
        EXPECT_TRUE(INIParser::SectionExists(L"S", wide));
        EXPECT_FALSE(INIParser::SetValue("k", "1", "S", path));
        EXPECT_FALSE(INIParser::SetValue(L"k", L"1", L"S", wide));
    }
    EXPECT_FALSE(std::filesystem::exists(Path("missing.ini"))); // nor created
    EXPECT_EQ(Read(Path("test.ini")), "[S]\nk=1\n");
}

TEST_F(Files, EveryByteSurvivesBothWidths)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        if (byte != '\n' && byte != '\r' && byte != '[' && byte != 0x1A) // where a text file may end
            all += static_cast<char>(byte);
    while (all.size() < 5000) // more than is converted in one go
        all += all;
    all += '.'; // no blank at the end
    const std::wstring wide = Widen(all);
    const std::string path = Write("[S]\nk=" + all + "\nx=\n");

    EXPECT_EQ(INIParser::GetValue("k", "S", path), all);
    EXPECT_EQ(INIParser::GetValue(L"k", L"S", WidePath("test.ini")), wide);
    EXPECT_TRUE(INIParser::SetValue(L"x", wide, L"S", WidePath("test.ini")));
    EXPECT_EQ(Read(path), "[S]\nk=" + all + "\nx=" + all + "\n");
    EXPECT_TRUE(INIParser::SetValue("x", "", "S", path));
    EXPECT_EQ(Read(path), " [S]\n k=" + all + "\n x=\n");
}

/// UTF-8, for characters up to 0x7FF, that marks the end of each text.
struct MarkedUtf8 : std::codecvt_utf8_utf16<wchar_t, 0x7FF>
{
    result do_unshift(std::mbstate_t& /*state*/, char* to, char* /*end*/, char*& next) const override
    {
        *to = '.';
        next = to + 1;
        return ok;
    }
};

TEST_F(Files, AGlobalLocaleConvertsTheWideForm)
{
    ConvertBy(new MarkedUtf8);
    const std::string path = Write("[S]\nk=\u00E4\nx=1\n");
    const std::wstring wide = WidePath("test.ini");

    EXPECT_EQ(INIParser::GetValue(L"k", L"S", wide), L"\u00E4");
    std::wstring value = L"\u20AC"; // which cannot be converted, as half a surrogate pair cannot
    std::string encoded = "?";
    for (int i = 0; i != 3000; ++i)
        value += L'\u00E4', encoded += "\u00E4";
    EXPECT_TRUE(INIParser::SetValue(L"k", value + L"\u20AC!" + wchar_t(0xD83D), L"S", wide));
    EXPECT_EQ(Read(path), "[S]\nk=" + encoded + "?!?\nx=1\n.");

    // A byte that cannot be decoded: the wide form does not read the file, and does not harm it.
    for (const char* const text : {"[S]\nk=\xFF\nx=1\n", "[S]\nx=1\n\xC3"}) {
        Write(text);
        EXPECT_EQ(INIParser::GetValue(L"x", L"S", wide), L"");
        EXPECT_TRUE(INIParser::RecordExists(L"none", L"S", wide));
        EXPECT_FALSE(INIParser::SetValue(L"x", L"2", L"S", wide));
        EXPECT_EQ(Read(path), text);
        EXPECT_EQ(INIParser::GetValue("x", "S", path), "1");
    }
}

TEST_F(Files, WidePathsAreUnicodeWhateverTheLocale)
{
    const auto utf8 = std::filesystem::u8path("Gr\u00F6\u00DFe \u20AC \U0001F600.ini");
    std::filesystem::rename(Write("[S]\nk=1\n"), Path("") / utf8);
    const std::wstring path = WidePath("") + L"Gr\u00F6\u00DFe \u20AC \U0001F600.ini";
    EXPECT_TRUE(INIParser::SetValue(L"k", L"2", L"S", path));
    ConvertBy(new std::codecvt_utf16<wchar_t>);
    EXPECT_FALSE(INIParser::SectionExists(L"S", path)); // it opens, though not as UTF-16
}

#if !defined(_WIN32)

TEST_F(Files, ARewriteKeepsTheFileAndItsLinks)
{
    const std::string path = Write("[S]\nk=1\n");
    std::filesystem::permissions(path, std::filesystem::perms(0642));
    std::filesystem::create_symlink("test.ini", Path("link.ini"));
    std::filesystem::create_hard_link(path, Path("same.ini"));
    EXPECT_TRUE(INIParser::SetValue("k", "2", "S", Path("link.ini")));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0642));
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link.ini")));
    EXPECT_EQ(Read(path) + Read(Path("same.ini")), " [S]\n k=2\n [S]\n k=2\n");
    EXPECT_TRUE(INIParser::Create(path) && std::filesystem::is_empty(path));
}

TEST_F(Files, ACharacterThatANulOrTheEndCutsShortIsUndecodable)
{
    using namespace std::string_literals;
    std::locale::global(std::locale("C.UTF-8"));
    const std::wstring wide = WidePath("test.ini");
    for (const std::string& text : {"[S]\nx=1\nk=\xE2\x82\0\xAC\n"s, "[S]\nx=1\n\xE2\x82"s}) {
        const std::string path = Write(text);
        EXPECT_EQ(INIParser::GetValue(L"x", L"S", wide), L"");
        EXPECT_FALSE(INIParser::SetValue(L"x", L"2", L"S", wide));
        EXPECT_EQ(Read(path), text);
    }
    Write("[S]\nk=\0\xE2\x82\xAC\n"s);
    EXPECT_EQ(INIParser::GetValue(L"k", L"S", wide), L"\0\u20AC"s);
}

TEST_F(Files, FilesWithoutASizeLoadWhole)
{
    int pipes[2] = {};
    ASSERT_EQ(pipe(pipes), 0);
    ASSERT_GE(fcntl(pipes[1], F_SETPIPE_SZ, 1 << 20), 1 << 20);
    const std::string text = "[S]\nl=" + std::string(300'000, 'v') + "\nk=1\n";
    ASSERT_EQ(write(pipes[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(pipes[1]);
    EXPECT_EQ(INIParser::GetValue("k", "S", "/dev/fd/" + std::to_string(pipes[0])), "1");
    close(pipes[0]);
    EXPECT_FALSE(INIParser::RecordExists("k", "S", "/proc/self/environ")); // readable, and not a line in it
}

TEST_F(Files, WidePathsThatAreNotUnicodeOpenNothing)
{
    for (const char* const name : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80"})
        Write("[S]\n", name);
    for (const wchar_t c : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(0x110000), wchar_t(-1)}) {
        EXPECT_TRUE(INIParser::RecordExists(L"k", L"S", WidePath("") + c));
        EXPECT_FALSE(INIParser::SetValue(L"k", L"1", L"S", WidePath("") + c));
    }
}

#endif

} // namespace
