/// @file
/// Random operations on a file, each compared with the model's: what it answers and what the file then holds.

#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>
#include <unistd.h>

#include <functional>
#include <iterator>

namespace {

/// A file in memory that has a path.
class MemoryFile
{
public:
    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

    void Write(const std::string& text) const
    {
        Require(ftruncate(m_descriptor, 0) == 0 &&
                    pwrite(m_descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                "the file is written");
    }

    std::string Read() const
    {
        std::string text(static_cast<std::size_t>(lseek(m_descriptor, 0, SEEK_END)), '\0');
        Require(pread(m_descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()),
                "the file is read");
        return text;
    }

private:
    int m_descriptor = memfd_create("fuzz", 0);
};

/// The file and what the model knows of it: its text, and the list of the records of that text.
struct Session
{
    Session(FuzzedDataProvider& data, const MemoryFile& file) : Data(data), File(file), Path(file.Path()) {}

    std::wstring WidePath() const { return model::Widen<wchar_t>(Path); }

    /// @return a name of the file's own, more often than not, or any bytes.
    std::string Name(std::string INIParser::Record::*field)
    {
        if (Records.empty() || Data.ConsumeIntegralInRange(0, 3) == 0)
            return Data.ConsumeRandomLengthString(16);
        return Records[Data.ConsumeIntegralInRange<std::size_t>(0, Records.size() - 1)].*field;
    }
    std::string Section() { return Name(&INIParser::Record::Section); }
    std::string Key() { return Name(&INIParser::Record::Key); }

    /// Compares what the library says that it did to the file, and did, with what is expected of it.
    void Edited(bool result, bool isExpected)
    {
        Require(result == isExpected, "the result of the edit");
        if (isExpected)
            Text = model::Save(Records);
        Compare();
    }
    void Compare() const { Require(File.Read() == Text, "the text of the file"); }

    template <class Change>
    bool First(const std::string& key, const std::string& section, Change change)
    {
        const auto at = model::Find(Records, key, section);
        if (at == Records.end())
            return false;
        change(*at);
        return true;
    }
    template <class Change>
    void Every(const std::string& section, Change change)
    {
        for (auto& record : Records)
            if (record.Section == section)
                change(record);
    }

    FuzzedDataProvider& Data;
    const MemoryFile& File;
    std::string Path;
    std::string Text;
    model::Records<char> Records;
};

template <class Char>
model::Records<Char> Only(model::Records<Char>& records, typename model::Records<Char>::iterator at)
{
    return at == records.end() ? model::Records<Char>() : model::Records<Char>{*at};
}

void CheckLookups(Session& s)
{
    const std::string key = s.Key();
    const std::string section = s.Section();
    const auto at = model::Find(s.Records, key, section);
    Require(model::operator==(INIParser::GetRecord(key, section, s.Path), Only(s.Records, at)), "GetRecord");
    Require(INIParser::GetValue(key, section, s.Path) == (at == s.Records.end() ? "" : at->Value),
            "GetValue");
    Require(INIParser::RecordExists(key, section, s.Path) == (at != s.Records.end()), "RecordExists");
    Require(INIParser::SectionExists(section, s.Path) == (model::Find(s.Records, section) != s.Records.end()),
            "SectionExists");

    model::Records<char> keys;
    std::vector<std::string> names;
    for (const auto& record : s.Records)
        if (record.Key.empty())
            names.push_back(record.Section);
        else if (record.Section == section)
            keys.push_back(record);
    Require(model::operator==(INIParser::GetSection(section, s.Path), keys), "GetSection");
    Require(INIParser::GetSectionNames(s.Path) == names, "GetSectionNames");
    Require(INIParser::Content(s.Path) == model::Content(s.Records), "Content");

    auto wide = model::Load(model::Widen<wchar_t>(s.Text));
    const auto wideKey = model::Widen<wchar_t>(key);
    const auto wideSection = model::Widen<wchar_t>(section);
    const auto wideAt = model::Find(wide, wideKey, wideSection);
    Require(model::operator==(INIParser::GetRecord(wideKey, wideSection, s.WidePath()), Only(wide, wideAt)),
            "the wide GetRecord");
    Require(INIParser::GetValue(wideKey, wideSection, s.WidePath()) ==
                (wideAt == wide.end() ? L"" : wideAt->Value),
            "the wide GetValue");
    Require(INIParser::RecordExists(wideKey, wideSection, s.WidePath()) == (wideAt != wide.end()),
            "the wide RecordExists");
    Require(INIParser::SectionExists(wideSection, s.WidePath()) ==
                (model::Find(wide, wideSection) != wide.end()),
            "the wide SectionExists");
}

/// A rewrite that changes nothing keeps every record of a well-formed file, in either width.
void CheckRewrite(Session& s)
{
    const bool isWellFormed = model::IsWellFormed(s.Records);
    const std::string before = INIParser::Content(s.Path);
    std::string unused = "unused";
    while (model::Find(s.Records, unused) != s.Records.end())
        unused += '.';
    s.Edited(INIParser::DeleteSection(unused, s.Path), true);
    Require(!isWellFormed || INIParser::Content(s.Path) == before, "a narrow rewrite keeps the records");
    if (!isWellFormed || s.Records.empty())
        return;
    auto records = model::Load(model::Widen<wchar_t>(s.Text));
    const auto record = records.front();
    Require(INIParser::SetValue(record.Key, record.Value, record.Section, s.WidePath()), "a wide rewrite");
    s.Text = model::Save(records);
    s.Compare();
    Require(INIParser::Content(s.Path) == before, "a wide rewrite keeps the records");
}

using Operation = std::function<void(Session&)>;

const Operation operations[] = {
    CheckLookups,
    CheckRewrite,
    [](Session& s) {
        const auto key = s.Key(), value = s.Data.ConsumeRandomLengthString(16), section = s.Section();
        model::SetValue(s.Records, key, value, section);
        s.Edited(INIParser::SetValue(key, value, section, s.Path), true);
    },
    [](Session& s) {
        const auto key = model::Widen<wchar_t>(s.Key()), section = model::Widen<wchar_t>(s.Section());
        auto value = model::Widen<wchar_t>(s.Data.ConsumeRandomLengthString(16));
        if (s.Data.ConsumeBool())
            value += s.Data.ConsumeIntegral<wchar_t>();
        auto records = model::Load(model::Widen<wchar_t>(s.Text));
        model::SetValue(records, key, value, section);
        Require(INIParser::SetValue(key, value, section, s.WidePath()), "the wide SetValue");
        s.Text = model::Save(records);
        s.Compare();
    },
    [](Session& s) {
        const auto section = s.Section();
        s.Records.push_back({{}, ' ', section, {}, {}});
        s.Edited(INIParser::AddSection(section, s.Path), true);
    },
    [](Session& s) {
        const auto key = s.Key(), section = s.Section();
        const auto at = model::Find(s.Records, key, section);
        const bool isFound = at != s.Records.end();
        if (isFound)
            s.Records.erase(at);
        s.Edited(INIParser::DeleteRecord(key, section, s.Path), isFound);
    },
    [](Session& s) {
        const auto section = s.Section();
        while (model::Find(s.Records, section) != s.Records.end())
            s.Records.erase(model::Find(s.Records, section));
        s.Edited(INIParser::DeleteSection(section, s.Path), true);
    },
    [](Session& s) {
        const auto section = s.Section(), name = s.Section();
        s.Every(section, [&](auto& record) { record.Section = name; });
        s.Edited(INIParser::RenameSection(section, name, s.Path), true);
    },
    [](Session& s) {
        const auto key = s.Key(), section = s.Section();
        const auto mark = s.Data.PickValueInArray({INIParser::Hash, INIParser::Semicolon});
        const bool isFound =
            s.First(key, section, [&](auto& record) { record.Commented = static_cast<char>(mark); });
        s.Edited(INIParser::CommentRecord(mark, key, section, s.Path), isFound);
    },
    [](Session& s) {
        const auto section = s.Section();
        const char mark = s.Data.ConsumeBool() ? '#' : s.Data.ConsumeIntegral<char>();
        s.Every(section, [&](auto& record) { record.Commented = mark; });
        s.Edited(INIParser::CommentSection(mark, section, s.Path), true);
    },
    [](Session& s) {
        const auto key = s.Key(), section = s.Section();
        const bool isFound = s.First(key, section, [](auto& record) { record.Commented = ' '; });
        s.Edited(INIParser::UnCommentRecord(key, section, s.Path), isFound);
    },
    [](Session& s) {
        const auto section = s.Section();
        s.Every(section, [](auto& record) { record.Commented = ' '; });
        s.Edited(INIParser::UnCommentSection(section, s.Path), true);
    },
    [](Session& s) {
        const bool isSection = s.Data.ConsumeBool();
        const auto key = isSection ? "" : s.Key(), section = s.Section();
        const auto comments = s.Data.ConsumeRandomLengthString(16);
        const bool isFound = s.First(key, section, [&](auto& record) {
            record.Comments = comments.size() >= 2 ? comments + "\n" : comments;
        });
        s.Edited(isSection ? INIParser::SetSectionComments(comments, section, s.Path)
                           : INIParser::SetRecordComments(comments, key, section, s.Path),
                 isFound);
    },
    [](Session& s) {
        const bool descending = s.Data.ConsumeBool();
        const auto sorted = model::Sorted(s.Records, descending);
        const bool isSorted = !sorted.empty();
        if (isSorted)
            s.Records = sorted;
        s.Edited(INIParser::Sort(s.Path, descending), isSorted);
    },
    [](Session& s) {
        s.Records.clear();
        s.Edited(INIParser::Create(s.Path), true);
    },
};

template <class Call>
void RequireThrow(Call call)
{
    try {
        call();
        Require(false, "a malformed header throws");
    } catch (const std::out_of_range&) {
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const MemoryFile file;
    // Choices are taken from the end of the bytes and texts from their front, up to a backslash before
    // another character, so a seed is a plain INI file, a "\\.", and some more.
    FuzzedDataProvider data(bytes, size);
    Session session(data, file);
    const auto steps = data.ConsumeIntegralInRange(1, 8);
    session.Text = data.ConsumeRandomLengthString(size);
    file.Write(session.Text);
    for (int i = 0; i != steps; ++i) {
        try {
            session.Records = model::Load(session.Text);
        } catch (const std::out_of_range&) {
            RequireThrow([&] { return INIParser::GetValue("", "", session.Path); });
            RequireThrow([&] { return INIParser::SetValue(L"k", L"v", L"S", session.WidePath()); });
            RequireThrow([&] { return INIParser::Sort(session.Path, false); });
            session.Compare();
            break;
        }
        data.PickValueInArray(operations)(session);
    }
    return 0;
}
