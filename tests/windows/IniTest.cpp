#include "qmUtility/ini/INIParser.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class WindowsIni : public TemporaryFolder
{
protected:
    const std::string m_file = Path("test.ini");
    const std::wstring m_wideFile = std::filesystem::path(m_file).wstring();

    void WriteBytes(const std::string& bytes) const { std::ofstream(m_file, std::ios::binary) << bytes; }
    std::string ReadBytes() const
    {
        std::ifstream file(m_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(WindowsIni, LinesEndInCrLfOnDiskAndLoadBackTheSame)
{
    WriteBytes("; a\n\r\n[S]\nk=1\r\n#[T]\r\nl=2\n");
    const std::string content = INIParser::Content(m_file);
    EXPECT_EQ(content, "; a\n[S]\nk=1\n#[T]\nl=2\n");
    EXPECT_TRUE(INIParser::SetValue("k", "1", "S", m_file));
    EXPECT_EQ(ReadBytes(), "; a\r\n [S]\r\n k=1\r\n#[T]\r\n l=2\r\n");
    EXPECT_EQ(INIParser::Content(m_file), content);

    EXPECT_TRUE(INIParser::SetRecordComments("; b\n; c", "k", "S", m_file));
    EXPECT_EQ(ReadBytes(), "; a\r\n [S]\r\n; b\r\n; c\r\n k=1\r\n#[T]\r\n l=2\r\n");

    EXPECT_TRUE(INIParser::SetValue(L"k", L"\u00E4", L"S", m_wideFile));
    EXPECT_EQ(ReadBytes(), "; a\r\n[S]\r\n; b\r\n; c\r\nk=\xE4\r\n\r\n#[T]\r\nl=2\r\n");
    EXPECT_EQ(INIParser::Content(m_file), "; a\n[S]\n; b\n; c\nk=\xE4\n#[T]\nl=2\n");
}

TEST_F(WindowsIni, ACtrlZDoesNotEndAFile)
{
    WriteBytes("[S]\nk=\x1A!\n\x1Al=2\n");
    EXPECT_EQ(INIParser::GetValue("\x1Al", "S", m_file), "2");
    EXPECT_TRUE(INIParser::SetValue("k", "1", "S", m_file));
    EXPECT_TRUE(INIParser::SetValue(L"k", L"2\x1A", L"S", m_wideFile));
    EXPECT_EQ(ReadBytes(), "[S]\r\nk=2\x1A\r\n\x1Al=2\r\n");
}

} // namespace
