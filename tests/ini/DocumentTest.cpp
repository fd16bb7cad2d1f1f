// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"
#include "tests/support/TemporaryFolder.h"

#include <codecvt>
#include <locale>
#include <stdexcept>

namespace {

class Document : public TemporaryFolder
{
protected:
    INIDocument Load(const std::string& text) const
    {
        INIDocument document;
        EXPECT_TRUE(document.Load(Write(text)));
        return document;
    }
};

TEST_F(Document, IsAnEmptyFileAtFirst)
{
    INIDocument document;
    EXPECT_TRUE(document.Save(Path("new.ini")));
    EXPECT_EQ(Read(Path("new.ini")), "");
    EXPECT_TRUE(document.SetValue("k", "1", "S"));
    EXPECT_FALSE(document.Save(Path("no such folder/new.ini")));
    EXPECT_EQ(document.Content(), "[S]\nk=1\n");
}

TEST_F(Document, StaysAsItWasWhenLoadingFails)
{
    INIDocument document = Load("[S]\nk=1\n");
    EXPECT_FALSE(document.Load(Path("missing.ini")));
    EXPECT_FALSE(document.Load(Path(".")));
    EXPECT_THROW(document.Load(Write("[T]\nl=1\n[Broken\n")), std::out_of_range);
    EXPECT_EQ(document.Content(), "[S]\nk=1\n");
    EXPECT_TRUE(document.Load(Write("[T]\n")));
    EXPECT_EQ(document.Content(), "[T]\n");
}

TEST_F(Document, EditsAreNotParsed)
{
    INIDocument document = Load("[S]\n");
    EXPECT_TRUE(document.SetValue("k", "a[0]", "S"));
    EXPECT_TRUE(document.SetRecordComments("no comment", "k", "S"));
    EXPECT_EQ(document.GetValue("k", "S"), "a[0]");
    EXPECT_EQ(document.GetRecord("k", "S").at(0).Comments, "no comment\n");
    EXPECT_TRUE(document.Save(Path("test.ini")));
    EXPECT_EQ(Read(Path("test.ini")), " [S]\nno comment\n k=a[0]\n");
    EXPECT_EQ(document.SavedText(), Read(Path("test.ini")));
    EXPECT_TRUE(document.Load(Path("test.ini")));
    EXPECT_FALSE(document.RecordExists("k", "S"));
    EXPECT_TRUE(document.SectionExists("=a[0"));
}

// The texts that edits replace are released after some edits; those in use are kept, in a copy or a moved document.
TEST_F(Document, ManyEditsKeepWhatIsInUse)
{
    INIDocument document = Load("; c\n[S]\n;d\n\nk=1\n");
    document.SetValue("another name that is long enough not to be stored inside of a string object", "1",
                      "S");
    INIDocument copy = document;
    for (int i = 0; i != 1000; ++i) {
        document.SetValue("k", "a long value, of which there are many: " + std::to_string(i), "S");
        document.SetRecordComments("; one of many long comments: " + std::to_string(i), "k", "S");
        document.RenameSection("S", "T");
        document.RenameSection("T", "S");
    }
    copy.RenameSection("S", "T");
    INIDocument moved = std::move(document);
    document = INIDocument(); // releases what only the first one had
    const std::string start =
        "]\nanother name that is long enough not to be stored inside of a string object=1\n";
    EXPECT_EQ(moved.Content(), "; c\n[S" + start +
                                   "; one of many long comments: 999\n"
                                   "k=a long value, of which there are many: 999\n");
    moved = copy;
    copy = INIDocument();
    EXPECT_EQ(moved.Content(), "; c\n[T" + start + ";d\nk=1\n");
}

TEST_F(Document, SavesByTheLocaleThatWasGlobalWhenItWasLoaded)
{
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new std::codecvt_utf8<wchar_t>));
    WINIDocument document;
    EXPECT_TRUE(document.Load((Write("[S]\nk=\u00E4\n"), WidePath("test.ini"))));
    std::locale::global(before);
    EXPECT_EQ(document.GetValue(L"k", L"S"), L"\u00E4");
    EXPECT_TRUE(document.SetValue(L"k", L"\u20AC", L"S"));
    EXPECT_TRUE(document.Save(WidePath("test.ini")));
    EXPECT_EQ(Read(Path("test.ini")), "[S]\nk=\u20AC\n");
}

} // namespace
