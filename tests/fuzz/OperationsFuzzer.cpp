/// @file
/// Random Operations on a file or on a document, each compared with the model's: its result, and what the file or the
/// document then holds.

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

/// A file, or a document that was loaded from it, and what the model knows of it.
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

    /// Compares what the library says that it did, and did, with what is expected of it.
    void Edited(bool result, bool isExpected)
    {
        Require(result == isExpected, "the result of the edit");
        if (isExpected && IsOfFile)
            Text = model::Save(Records);
        Compare();
    }
    void Compare() const
    {
        Require(File.Read() == Text, "the text of the file");
        Require(IsOfFile || Document.Content() == model::Content(Records), "the content of the document");
    }

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
    bool IsOfFile = true; ///< whether Operations are those of `INIParser`, which read and write the file
    INIDocument Document;
};

/// An operation of `INIParser` or of the document, on the arguments without the path.
#define CALL(Operation, ...)                                                                                 \
    (s.IsOfFile ? INIParser::Operation(__VA_ARGS__, s.Path) : s.Document.Operation(__VA_ARGS__))

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
    Require(model::operator==(CALL(GetRecord, key, section), Only(s.Records, at)), "GetRecord");
    Require(CALL(GetValue, key, section) == (at == s.Records.end() ? "" : at->Value), "GetValue");
    Require(CALL(RecordExists, key, section) == (at != s.Records.end()), "RecordExists");
    Require(CALL(SectionExists, section) == (model::Find(s.Records, section) != s.Records.end()),
            "SectionExists");

    model::Records<char> keys;
    std::vector<std::string> names;
    for (const auto& record : s.Records)
        if (record.Key.empty())
            names.push_back(record.Section);
        else if (record.Section == section)
            keys.push_back(record);
    Require(model::operator==(CALL(GetSection, section), keys), "GetSection");
    Require((s.IsOfFile ? INIParser::GetSectionNames(s.Path) : s.Document.GetSectionNames()) == names,
            "GetSectionNames");
    Require((s.IsOfFile ? INIParser::Content(s.Path) : s.Document.Content()) == model::Content(s.Records),
            "Content");
}

using Operation = std::function<void(Session&)>;

const Operation Operations[] = {
    CheckLookups,
    [](Session& s) {
        const auto key = s.Key(), value = s.Data.ConsumeRandomLengthString(16), section = s.Section();
        model::SetValue(s.Records, key, value, section);
        s.Edited(CALL(SetValue, key, value, section), true);
    },
    [](Session& s) {
        if (!s.IsOfFile)
            return;
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
        s.Edited(CALL(AddSection, section), true);
    },
    [](Session& s) {
        const auto key = s.Key(), section = s.Section();
        const auto at = model::Find(s.Records, key, section);
        const bool isFound = at != s.Records.end();
        if (isFound)
            s.Records.erase(at);
        s.Edited(CALL(DeleteRecord, key, section), isFound);
    },
    [](Session& s) {
        const auto section = s.Section();
        while (model::Find(s.Records, section) != s.Records.end())
            s.Records.erase(model::Find(s.Records, section));
        s.Edited(CALL(DeleteSection, section), true);
    },
    [](Session& s) {
        const auto section = s.Section(), name = s.Section();
        s.Every(section, [&](auto& record) { record.Section = name; });
        s.Edited(CALL(RenameSection, section, name), true);
    },
    [](Session& s) {
        const auto key = s.Key(), section = s.Section();
        const auto mark = s.Data.PickValueInArray({INIParser::Hash, INIParser::Semicolon});
        const bool isFound =
            s.First(key, section, [&](auto& record) { record.Commented = static_cast<char>(mark); });
        s.Edited(CALL(CommentRecord, mark, key, section), isFound);
    },
    [](Session& s) {
        const auto section = s.Section();
        const char mark = s.Data.ConsumeBool() ? '#' : s.Data.ConsumeIntegral<char>();
        s.Every(section, [&](auto& record) { record.Commented = mark; });
        s.Edited(CALL(CommentSection, mark, section), true);
    },
    [](Session& s) {
        const auto key = s.Key(), section = s.Section();
        const bool isFound = s.First(key, section, [](auto& record) { record.Commented = ' '; });
        s.Edited(CALL(UnCommentRecord, key, section), isFound);
    },
    [](Session& s) {
        const auto section = s.Section();
        s.Every(section, [](auto& record) { record.Commented = ' '; });
        s.Edited(CALL(UnCommentSection, section), true);
    },
    [](Session& s) {
        const bool isSection = s.Data.ConsumeBool();
        const auto key = isSection ? "" : s.Key(), section = s.Section();
        const auto comments = s.Data.ConsumeRandomLengthString(16);
        const bool isFound = s.First(key, section, [&](auto& record) {
            record.Comments = comments.size() >= 2 ? comments + "\n" : comments;
        });
        s.Edited(isSection ? CALL(SetSectionComments, comments, section)
                           : CALL(SetRecordComments, comments, key, section),
                 isFound);
    },
    [](Session& s) {
        const bool descending = s.Data.ConsumeBool();
        const auto sorted = model::Sorted(s.Records, descending);
        const bool isSorted = !sorted.empty();
        if (isSorted)
            s.Records = sorted;
        s.Edited(s.IsOfFile ? INIParser::Sort(s.Path, descending) : s.Document.Sort(descending), isSorted);
    },
    [](Session& s) {
        s.Records.clear();
        s.Document = INIDocument();
        s.Edited(!s.IsOfFile || INIParser::Create(s.Path), true);
    },
};

template <class Call>
void RequireThrow(Call call)
{
    try {
        call();
    } catch (const std::out_of_range&) {
        return;
    }
    Require(false, "a malformed header throws");
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
    session.IsOfFile = data.ConsumeBool();
    try {
        session.Records = model::Load(session.Text);
        Require(session.Document.Load(session.Path), "the document is loaded");
        for (int i = 0; i != steps; ++i) {
            data.PickValueInArray(Operations)(session);
            if (session.IsOfFile)
                session.Records = model::Load(session.Text);
        }
        if (!session.IsOfFile) {
            Require(session.Document.Save(session.Path), "the document is saved");
            session.Text = model::Save(session.Records);
        }
    } catch (const std::out_of_range&) {
        RequireThrow([&] { session.Document.Load(session.Path); });
        RequireThrow([&] { return INIParser::GetValue("", "", session.Path); });
        RequireThrow([&] { return INIParser::SetValue(L"k", L"v", L"S", session.WidePath()); });
        RequireThrow([&] { return INIParser::Sort(session.Path, false); });
    }
    session.Compare();
    return 0;
}
