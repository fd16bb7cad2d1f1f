#include "ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

#include <codecvt>
#include <locale>

namespace {

class Files : public TemporaryFolder
{
protected:
    /// Checks every operation on a file that cannot be read.
    static void CheckUnreadable(const std::string& path)
    {
        const std::wstring wide(path.begin(), path.end());
        EXPECT_EQ(INIParser::GetValue("k", "S", path), "");
        EXPECT_EQ(INIParser::GetValue(L"k", L"S", wide), L"");
        EXPECT_TRUE(INIParser::GetSection("S", path).empty());
        EXPECT_TRUE(INIParser::GetSectionNames(path).empty());
        EXPECT_EQ(INIParser::Content(path), "");
        EXPECT_TRUE(INIParser::RecordExists("k", "S", path));
        EXPECT_TRUE(INIParser::RecordExists(L"k", L"S", wide));
        EXPECT_TRUE(INIParser::SectionExists("S", path));
        EXPECT_TRUE(INIParser::SectionExists(L"S", wide));
        EXPECT_FALSE(INIParser::SetValue("k", "1", "S", path));
        EXPECT_FALSE(INIParser::SetValue(L"k", L"1", L"S", wide));
        EXPECT_FALSE(INIParser::AddSection("S", path));
        EXPECT_FALSE(INIParser::Sort(path, false));
    }
};

/// Sets the global locale for one test.
class GlobalLocale
{
public:
    explicit GlobalLocale(std::locale locale) : m_before(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(m_before); }

private:
    std::locale m_before;
};

TEST_F(Files, MissingFilesAndFoldersAreUnreadable)
{
    CheckUnreadable(Path("missing.ini"));
    EXPECT_FALSE(std::filesystem::exists(Path("missing.ini"))); // nor created
    CheckUnreadable(Path(""));
}

TEST_F(Files, EveryByteSurvivesBothWidths)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        if (byte != '\n' && byte != '\r' && byte != '[' && byte != 0x1A) // where a text file may end
            all += static_cast<char>(byte);
    all += all + all + '.'; // longer than what is converted in one go, and no blank at the end
    const std::string path = Write("[S]\nk=" + all + "\nx=\n");

    EXPECT_EQ(INIParser::GetValue("k", "S", path), all);
    std::wstring wide;
    for (const char c : all)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    EXPECT_EQ(INIParser::GetValue(L"k", L"S", {path.begin(), path.end()}), wide);
    EXPECT_TRUE(INIParser::SetValue(L"x", wide, L"S", {path.begin(), path.end()}));
    EXPECT_EQ(Read(path), "[S]\nk=" + all + "\nx=" + all + "\n");
    EXPECT_TRUE(INIParser::SetValue("x", "", "S", path));
    EXPECT_EQ(Read(path), " [S]\n k=" + all + "\n x=\n");
}

TEST_F(Files, AGlobalLocaleConvertsTheWideForm)
{
    // UTF-8, for characters up to 0x7FF.
    const GlobalLocale global(
        std::locale(std::locale::classic(), new std::codecvt_utf8_utf16<wchar_t, 0x7FF>));
    const std::string path = Write("[S]\nk=\xC3\xA4\nx=1\n"); // "ä"
    const std::wstring wide(path.begin(), path.end());

    EXPECT_EQ(INIParser::GetValue(L"k", L"S", wide), L"\u00E4");
    const std::wstring many(1000, L'\u00E4');
    // Neither the euro nor half a surrogate pair can be converted.
    const std::wstring value = L"\u20AC" + many + L"\u20AC!" + wchar_t(0xD83D);
    EXPECT_TRUE(INIParser::SetValue(L"k", value, L"S", wide));
    std::string encoded;
    for (std::size_t i = 0; i < many.size(); ++i)
        encoded += "\xC3\xA4";
    EXPECT_EQ(Read(path), "[S]\nk=?" + encoded + "?!?\nx=1\n");

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

#if !defined(_WIN32) // where a file written as text is no UTF-16: each line feed gets a byte 0x0D in front
TEST_F(Files, ALocaleMayConvertTheFormatsOwnCharactersToo)
{
    const GlobalLocale global(std::locale(std::locale::classic(), new std::codecvt_utf16<wchar_t, 0xFF>));
    const auto utf16 = [](const std::string& text) {
        std::string bytes;
        for (const char c : text)
            (bytes += '\0') += c;
        return bytes;
    };
    const std::string path = Path("test.ini");
    std::ofstream(path, std::ios::binary) << utf16("[S]\nk=1\n;c\n#[T]\nx=1\n");
    EXPECT_TRUE(INIParser::SetValue(L"k", L"\u20AC", L"S", {path.begin(), path.end()}));
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), utf16("[S]\nk=?\n;c\n\n#[T]\nx=1\n"));
}
#endif

TEST_F(Files, ALocaleThatKeepsTheClassicConversionKeepsBytes)
{
    const GlobalLocale global(std::locale(std::locale::classic(), new std::numpunct<char>));
    const std::string path = Write("[\xDF]\n\xFC=\xE4\n");
    EXPECT_EQ(INIParser::GetValue(L"\u00FC", L"\u00DF", {path.begin(), path.end()}), L"\u00E4");
}

TEST_F(Files, WidePathsAreUnicodeWhateverTheLocale)
{
    const std::wstring name = L"Gr\u00F6\u00DFe \u20AC \U0001F600.ini";
    Write("[S]\nk=1\n");
    const auto utf8 = std::filesystem::u8path("Gr\xC3\xB6\xC3\x9F\x65 \xE2\x82\xAC \xF0\x9F\x98\x80.ini");
    std::filesystem::rename(Path("test.ini"), Path("") / utf8);
    const std::string folder = Path("");
    const std::wstring path = std::wstring(folder.begin(), folder.end()) + name;
    EXPECT_TRUE(INIParser::SetValue(L"k", L"2", L"S", path));
    const GlobalLocale global(std::locale(std::locale::classic(), new std::codecvt_utf16<wchar_t>));
    EXPECT_FALSE(INIParser::SectionExists(L"S", path)); // it opens, though not as UTF-16
}

TEST_F(Files, APathWithANulNamesNoFile)
{
    const std::string path = Write("[S]\nk=1\n") + std::string("\0.ini", 5);
    EXPECT_FALSE(INIParser::Create(path));
    CheckUnreadable(path);
    EXPECT_EQ(Read(Path("test.ini")), "[S]\nk=1\n");
}

} // namespace
