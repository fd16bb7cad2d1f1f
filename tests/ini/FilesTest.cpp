// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"
#include "tests/ini/Records.h"
#include "tests/support/TemporaryFolder.h"

#if !defined(_WIN32)
#include <unistd.h>
#endif

#include <codecvt>
#include <locale>
#include <system_error>
#include <thread>

namespace {

using namespace std::string_literals;

class Files : public TemporaryFolder {
protected:
    ~Files() override { std::locale::global(std::locale::classic()); }

    std::error_code m_error = std::make_error_code(std::errc::io_error);
};

TEST_F(Files, PathsThatNameNoFileAreUnreadable) {
    const std::string withNul = Write("[S]\nk=1\n") + "\0.ini"s;
    EXPECT_FALSE(INIParser::Create(withNul));
    for (const std::string& path : {withNul, Path("missing.ini"), Path("")}) {
        const std::wstring wide(path.begin(), path.end());
        EXPECT_EQ(INIParser::Content(path), "");
        EXPECT_TRUE(INIParser::RecordExists("k", "S", path));
        EXPECT_TRUE(INIParser::SectionExists(L"S", wide));
        EXPECT_FALSE(INIParser::SetValue("k", "1", "S", path));
        EXPECT_FALSE(INIParser::SetValue(L"k", L"1", L"S", wide));
    }
    EXPECT_FALSE(std::filesystem::exists(Path("missing.ini")));  // nor created
    EXPECT_EQ(Read(m_path), "[S]\nk=1\n");

    INIDocument document;
    EXPECT_FALSE(document.Load(Path(""), m_error));
    EXPECT_EQ(m_error, std::errc::is_a_directory);
    EXPECT_FALSE(document.Save(Path("no such folder/new.ini"), m_error));
    EXPECT_EQ(m_error, std::errc::no_such_file_or_directory);
}

TEST_F(Files, EveryByteSurvivesBothWidths) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        if (byte != '\n' && byte != '\r' && byte != '[' && byte != 0x1A)  // where a text file may end
            all += static_cast<char>(byte);
    while (all.size() < 5000)  // more than is converted in one go
        all += all;
    all += '.';  // no blank at the end
    Write("[S]\nk=" + all + "\nx=\n");
    EXPECT_EQ(INIParser::GetValue("k", "S", m_path), all);
    EXPECT_EQ(INIParser::GetValue(L"k", L"S", m_widePath), Widen(all));
    EXPECT_TRUE(INIParser::SetValue(L"x", Widen(all), L"S", m_widePath));
    EXPECT_EQ(Read(m_path), "[S]\nk=" + all + "\nx=" + all + "\n");
    EXPECT_TRUE(INIParser::SetValue("x", "", "S", m_path));
    EXPECT_EQ(Read(m_path), " [S]\n k=" + all + "\n x=\n");

    const std::string text = BOM ";\x1A\r\n\n" + all + "\r\n  more";
    INIDocument document(Parser);
    WINIDocument wide(Parser);
    EXPECT_TRUE(wide.Parse(Widen(text)) && wide.Save(m_widePath, m_error) && !m_error);
    m_error = std::make_error_code(std::errc::io_error);
    EXPECT_TRUE(document.Load(m_path, m_error) && !m_error && document.Save(Path("new.ini")));
    EXPECT_EQ(document.Text(), text);
    EXPECT_TRUE(wide.Load(Path("new.ini")));
    EXPECT_EQ(wide.Text(), Widen(text));
    EXPECT_TRUE(INIDocument().Save(m_path));
    EXPECT_EQ(Read(m_path), "");
}

/// UTF-8, for characters up to 0x7FF, that marks the end of each text.
struct MarkedUtf8 : std::codecvt_utf8_utf16<wchar_t, 0x7FF> {
    result do_unshift(std::mbstate_t& /*state*/, char* to, char* /*end*/, char*& next) const override {
        *to = '.';
        next = to + 1;
        return ok;
    }
};

TEST_F(Files, TheLocaleConvertsTheWideForm) {
    std::locale::global(std::locale(std::locale::classic(), new MarkedUtf8));
    Write("[S]\nk=\u00E4\nx=1\n");
    EXPECT_EQ(INIParser::GetValue(L"k", L"S", m_widePath), L"\u00E4");
    const std::wstring value(3000, L'\u00E4');
    std::string encoded;
    while (encoded.size() != 6000) encoded += "\u00E4";
    // The first character cannot be converted, nor can half a surrogate pair.
    EXPECT_TRUE(
        INIParser::SetValue(L"k", L"\u20AC" + value + L"\u20AC!" + wchar_t(0xD83D), L"S", m_widePath));
    EXPECT_EQ(Read(m_path), "[S]\nk=?" + encoded + "?!?\nx=1\n.");

    WINIDocument document;
    WINIDocument classic(Common, std::locale::classic());
    EXPECT_TRUE(document.Load(Write("k=\u00E4\n")) && classic.Load(m_path));
    EXPECT_EQ(document.GetValue(L"k", L""), L"\u00E4");
    EXPECT_EQ(classic.GetValue(L"k", L""), L"\u00C3\u00A4");
    EXPECT_TRUE(document.SetValue(L"k", value, L"") && document.Save(m_path));
    EXPECT_EQ(Read(m_path), "k=" + encoded + "\n.");
    for (WINIDocument* const refused : {&document, &classic}) {
        EXPECT_TRUE(refused->SetValue(L"k", L"\u20AC", L""));
        EXPECT_FALSE(refused->Save(m_path, m_error));
        EXPECT_EQ(m_error, std::errc::illegal_byte_sequence);
        EXPECT_FALSE(refused->Save(Path("new.ini")) || std::filesystem::exists(Path("new.ini")));
        EXPECT_EQ(Read(m_path), "k=" + encoded + "\n.");
    }
}

TEST_F(Files, BytesThatCannotBeDecodedAreNotReadAndNotHarmed) {
    const std::locale locales[] = {
        std::locale(std::locale::classic(), new std::codecvt_utf8<wchar_t>),
#if !defined(_WIN32)
        std::locale("C.UTF-8"),
#endif
    };
    for (const std::locale& locale : locales)
        for (const std::string& text :
             {"[S]\nx=1\nk=\xFF\n"s, "[S]\nx=1\n\xC3"s, "[S]\nx=1\nk=\xE2\x82\0\xAC\n"s}) {
            std::locale::global(locale);
            Write(text);
            EXPECT_EQ(INIParser::GetValue(L"x", L"S", m_widePath), L"");
            EXPECT_TRUE(INIParser::RecordExists(L"none", L"S", m_widePath));
            EXPECT_FALSE(INIParser::SetValue(L"x", L"2", L"S", m_widePath));
            EXPECT_EQ(INIParser::GetValue("x", "S", m_path), "1");
            WINIDocument document;
            EXPECT_TRUE(document.Parse(L"k=1"));
            EXPECT_FALSE(document.Load(m_path, m_error));
            EXPECT_EQ(m_error, std::errc::illegal_byte_sequence);
            EXPECT_EQ(document.Text(), L"k=1");
            EXPECT_EQ(Read(m_path), text);
        }
    Write("[S]\nk=\0\xE2\x82\xAC\n"s);
    EXPECT_EQ(INIParser::GetValue(L"k", L"S", m_widePath), L"\0\u20AC"s);
}

TEST_F(Files, WidePathsAreUnicodeWhateverTheLocale) {
    const std::wstring path = WidePath("") + L"Gr\u00F6\u00DFe \u20AC \U0001F600.ini";
    Write("[S]\nk=1\n");
    std::filesystem::rename(m_path,
                            Path("") / std::filesystem::u8path("Gr\u00F6\u00DFe \u20AC \U0001F600.ini"));
    EXPECT_TRUE(INIParser::SetValue(L"k", L"2", L"S", path));
    std::locale::global(std::locale(std::locale::classic(), new std::codecvt_utf16<wchar_t>));
    EXPECT_FALSE(INIParser::SectionExists(L"S", path));  // it opens, though not as UTF-16
}

#if !defined(_WIN32)

TEST_F(Files, WithoutASizeLoadWhole) {
    int pipes[2] = {};
    ASSERT_EQ(pipe(pipes), 0);
    const std::string text = "[S]\nl=" + std::string(300'000, 'v') + "\nk=1\n";
    std::thread writer([&] {
        EXPECT_EQ(write(pipes[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(pipes[1]);
    });
    EXPECT_EQ(INIParser::GetValue("k", "S", "/dev/fd/" + std::to_string(pipes[0])), "1");
    writer.join();
    close(pipes[0]);
    EXPECT_FALSE(INIParser::RecordExists("k", "S", "/proc/sys/kernel/ostype"));  // "Linux"
}

#endif

}  // namespace
