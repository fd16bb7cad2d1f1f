// SPDX-License-Identifier: MIT
/// @file
/// Random operations of `INIParser`, each compared with the model's, and random edits of documents: their
/// records are those that the model reads in their text, and the rest of the text stays as it was.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"
#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

const std::string Path = "/dev/shm/qmUtility-fuzz-" + std::to_string(getpid());
const std::wstring WidePath(Path.begin(), Path.end());

std::wstring Widen(const std::string& bytes)
{
    std::wstring wide;
    for (const char c : bytes)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

/// A text, the records that the model reads in it, and random arguments.
struct Session
{
    FuzzedDataProvider& Data;
    std::string Text;
    model::Records Records = {};
    std::string Key = {};
    std::string Section = {};
    std::string Other = {}; ///< a value, a new name, or comments
    bool Flag = false;

    /// Chooses arguments: more often than not the names of a record.
    /// @return a number that stands for an operation.
    int Choose()
    {
        model::Record record;
        if (!Records.empty())
            record = Records[Data.ConsumeIntegralInRange<std::size_t>(0, Records.size() - 1)];
        const bool isOwn = Data.ConsumeBool();
        Key = isOwn || Data.ConsumeBool() ? record.Key : Data.ConsumeRandomLengthString(16);
        Section = isOwn || Data.ConsumeBool() ? record.Section : Data.ConsumeRandomLengthString(16);
        Other = Data.ConsumeRandomLengthString(16);
        Flag = Data.ConsumeBool();
        return Data.ConsumeIntegralInRange(0, 11);
    }

    INICommentChar Mark() const { return Flag ? INICommentChar::Hash : INICommentChar::Semicolon; }

    void CompareFile() const
    {
        std::ifstream file(Path, std::ios::binary);
        Require(std::string(std::istreambuf_iterator<char>(file), {}) == Text, "the text of the file");
    }
};

struct ParserSession : Session
{
    /// Compares what the library says that it did, and did, with what is expected of it.
    void Edited(bool result, bool isExpected)
    {
        Require(result == isExpected, "the result of the edit");
        if (isExpected)
            Text = model::Save(Records);
        CompareFile();
        Records = model::Load(Text);
    }

    void Look()
    {
        const auto at = model::Find(Records, Key, Section);
        const bool isFound = at != Records.end();
        const std::string value = isFound ? at->Value : "";
        const auto record = INIParser::GetRecord(Key, Section, Path);
        Require(record.size() == isFound && (!isFound || record[0] == *at), "GetRecord");
        Require(INIParser::GetValue(Key, Section, Path) == value, "GetValue");
        Require(INIParser::GetValue(Widen(Key), Widen(Section), WidePath) == Widen(value), "wide GetValue");
        Require(INIParser::RecordExists(Key, Section, Path) == isFound, "RecordExists");
        Require(INIParser::SectionExists(Section, Path) == (model::Find(Records, Section) != Records.end()),
                "SectionExists");
        auto keys = Records;
        std::erase_if(keys, [&](const auto& x) { return x.Key.empty() || x.Section != Section; });
        Require(std::ranges::equal(INIParser::GetSection(Section, Path), keys), "GetSection");
        auto headers = Records;
        std::erase_if(headers, [](const auto& x) { return !x.Key.empty(); });
        Require(
            std::ranges::equal(INIParser::GetSectionNames(Path), headers, {}, {}, &model::Record::Section),
            "GetSectionNames");
        Require(INIParser::Content(Path) == model::Content(Records), "Content");
        Edited(INIParser::Create(Path), (Records.clear(), true));
    }

    void Step()
    {
        const int choice = Choose();
        const char mark = Flag ? '#' : Data.ConsumeIntegral<char>();
        const auto at = model::Find(Records, Key, Section);
        const bool isFound = at != Records.end();
        const auto everyRecord = [&](auto change) {
            for (auto& record : Records)
                if (record.Section == Section)
                    change(record);
        };
        switch (choice) {
        case 0:
            return Look();
        case 1:
            model::SetValue(Records, Key, Other, Section);
            return Edited(INIParser::SetValue(Key, Other, Section, Path), true);
        case 2:
            Records.push_back({{{}, ' ', Section, {}, {}}});
            return Edited(INIParser::AddSection(Section, Path), true);
        case 3:
            if (isFound)
                Records.erase(at);
            return Edited(INIParser::DeleteRecord(Key, Section, Path), isFound);
        case 4:
            std::erase_if(Records, [&](const auto& record) { return record.Section == Section; });
            return Edited(INIParser::DeleteSection(Section, Path), true);
        case 5:
            everyRecord([&](auto& record) { record.Section = Other; });
            return Edited(INIParser::RenameSection(Section, Other, Path), true);
        case 6:
            if (isFound)
                at->Commented = static_cast<char>(Mark());
            return Edited(INIParser::CommentRecord(Mark(), Key, Section, Path), isFound);
        case 7:
            everyRecord([&](auto& record) { record.Commented = mark; });
            return Edited(INIParser::CommentSection(mark, Section, Path), true);
        case 8:
            if (isFound)
                at->Commented = ' ';
            return Edited(INIParser::UnCommentRecord(Key, Section, Path), isFound);
        case 9:
            everyRecord([](auto& record) { record.Commented = ' '; });
            return Edited(INIParser::UnCommentSection(Section, Path), true);
        case 10:
            if (isFound)
                at->Comments = Other.size() >= 2 ? Other + "\n" : Other;
            return Edited(Key.empty() ? INIParser::SetSectionComments(Other, Section, Path)
                                      : INIParser::SetRecordComments(Other, Key, Section, Path),
                          isFound);
        default:
            const auto sorted = model::Sorted(Records, Flag);
            if (!sorted.empty())
                Records = sorted;
            return Edited(INIParser::Sort(Path, Flag), !sorted.empty());
        }
    }
};

/// @return how many elements both lists have, in the same order.
template <class List>
std::size_t CountCommon(const List& a, const List& b)
{
    std::vector<std::size_t> counts(b.size() + 1); // of those of `a` so far and each number of those of `b`
    for (const auto& element : a)
        for (std::size_t j = 0, diagonal = 0; j != b.size(); ++j) {
            const auto count = element == b[j] ? diagonal + 1 : std::max(counts[j], counts[j + 1]);
            diagonal = std::exchange(counts[j + 1], count);
        }
    return counts.back();
}

bool IsPlain(const std::string& text)
{
    return !text.empty() &&
           text.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

/// @return the records of a document of either width as narrow ones.
model::Records List(const auto& document)
{
    const auto narrow = [](const auto& text) { return std::string(text.begin(), text.end()); };
    model::Records list;
    for (const auto& record : document)
        list.push_back({{narrow(record.Comments()), static_cast<char>(record.Commented),
                         narrow(record.Section), narrow(record.Key), narrow(record.Value)}});
    return list;
}

/// Makes an edit of both documents, whose arguments `as` brings into their width.
#define EDIT(Operation, ...)                                                                                 \
    Edit([&](auto& document, [[maybe_unused]] auto as) { return document.Operation(__VA_ARGS__); })

/// A narrow and a wide document of the same text.
struct DocumentSession : Session
{
    INISyntax Syntax;
    INIDocument Narrow{Syntax};
    WINIDocument Wide{Syntax};

    bool IsParser() const { return Syntax == INISyntax::Parser; }

    bool HasMark(const std::string& text) const
    {
        return !IsParser() && text.starts_with(model::ByteOrderMark);
    }

    /// Compares the records with those of the model and of a fresh document.
    void Compare()
    {
        Text = Narrow.Text();
        Records = IsParser() ? model::Load(Text) : model::LoadCommon(Text);
        INIDocument fresh(Syntax);
        Require(List(Narrow) == Records, "the records");
        Require(List(Wide) == Records, "the records of the wide document");
        Require(fresh.Parse(Text) && List(fresh) == Records, "the records of a fresh document");
    }

    bool Edit(auto edit)
    {
        const bool isMade = edit(Narrow, [](const std::string& text) { return text; });
        Require(edit(Wide, Widen) == isMade, "the result of the wide edit");
        Require(isMade || Narrow.Text() == Text, "an edit that is not made changes nothing");
        Compare();
        Require(Wide.Text() == Widen(Text), "the text of the wide document");
        return isMade;
    }

    /// @return the lines behind a byte order mark, each with its newline; the last one gets that of the first
    ///   line of another text.
    std::vector<std::string> Split(const std::string& text, const std::string& other) const
    {
        const bool hasCr = other.substr(0, other.find('\n') + 1).ends_with("\r\n");
        std::vector<std::string> lines;
        std::istringstream stream(text.substr(HasMark(text) ? 3 : 0));
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line + (hasCr && stream.eof() ? "\r\n" : "\n"));
        return lines;
    }

    struct Outcome
    {
        bool IsMade;
        bool IsPossible;       ///< whether there is something to edit
        bool IsDone;           ///< whether it was edited as asked
        std::size_t Lost = 1;  ///< how many records, and lines, it may remove or alter
        std::size_t Added = 1; ///< how many it may add or alter
    };

    Outcome Call(int operation)
    {
        // What a lookup finds, and the active records, and those that are commented out, of the section.
        const auto isFound = [this](const auto& x) {
            return x.Commented == ' ' && x.Section == Section && (Key.empty() ? x.IsHeader : x.Key == Key);
        };
        const auto isOn = [this](const auto& x) { return x.Section == Section && x.Commented == ' '; };
        const auto isOff = [this](const auto& x) { return x.Section == Section && x.Commented != ' '; };
        const auto isOther = [this](const auto& x) { return x.Section != Section && !x.Section.empty(); };
        const auto count = [this](auto is) {
            return static_cast<std::size_t>(std::ranges::count_if(Records, is));
        };
        const auto found = count(isFound);
        const auto on = count(isOn);
        const auto off = count(isOff);
        const auto others = count(isOther);
        const auto first = found ? *std::ranges::find_if(Records, isFound) : model::Record();
        const bool isKey = found > 0 && !Key.empty();
        const bool exists = Narrow.SectionExists(Section);
        const bool otherExists = Narrow.SectionExists(Other);
        const auto text = Text;
        switch (operation) {
        case 0: {
            const auto record = Narrow.GetRecord(Key, Section);
            Require(record ? found && *record == first : !found, "GetRecord");
            Require(Narrow.GetValue(Key, Section, Other) == (found ? first.Value : Other), "GetValue");
            Require(Narrow.RecordExists(Key, Section) == (found > 0), "RecordExists");
            Require(!Key.empty() || Section.empty() || exists == (found > 0), "SectionExists");
            return {};
        }
        case 1: {
            const bool isMade = EDIT(SetValue, as(Key), as(Other), as(Section));
            if (isMade && !Other.empty() && !first.Value.empty()) {
                auto copy = Narrow;
                Require(copy.SetValue(Key, first.Value, Section) && copy.Text() == text, "the old value");
            }
            const bool isPlain =
                IsPlain(Key) && IsPlain(Other) && (found ? !first.IsHeader : IsPlain(Section));
            Require(isMade || !IsParser() || !isPlain, "plain names");
            const bool isDone = Narrow.GetValue(Key, Section) == Other;
            return {isMade, !Key.empty(), isDone, found ? 1U : 0U, found ? 1U : 3U};
        }
        case 2:
            return {EDIT(AddSection, as(Section)), !Section.empty() && !exists, Narrow.SectionExists(Section),
                    0, 2};
        case 3:
            return {EDIT(DeleteRecord, as(Key), as(Section)), isKey, count(isFound) + 1 == found, text.size(),
                    0};
        case 4:
            return {EDIT(DeleteSection, as(Section)), on > 0,
                    Section.empty() || (count(isOn) == 0 && count(isOther) == others), text.size(), 0};
        case 5:
            return {EDIT(RenameSection, as(Section), as(Other)), on > 0 && !otherExists,
                    (Section.empty() || !Narrow.SectionExists(Section)) && Narrow.SectionExists(Other),
                    on + off, on + off};
        case 6:
            return {EDIT(CommentRecord, Mark(), as(Key), as(Section)), isKey,
                    count(isFound) + 1 == found && count(isOff) == off + 1};
        case 7:
            return {EDIT(CommentSection, Mark(), as(Section)), on > 0, Section.empty() || count(isOn) == 0,
                    on, on};
        case 8:
            return {EDIT(UnCommentRecord, as(Key), as(Section)), !Key.empty(), count(isFound) == found + 1};
        case 9:
            return {EDIT(UnCommentSection, as(Section)), off > 0, count(isOff) == 0, off, off};
        case 10: {
            const bool isMade = Key.empty() ? EDIT(SetSectionComments, as(Other), as(Section))
                                            : EDIT(SetRecordComments, as(Other), as(Key), as(Section));
            const auto comments = Other + (Other.empty() || Other.ends_with('\n') ? "" : "\n");
            return {isMade, found > 0, isMade && Narrow.GetRecord(Key, Section)->Comments == comments,
                    first.Comments.size() + 1, comments.size() + 1};
        }
        default:
            const auto records = Records;
            const bool isMade = EDIT(Sort, Flag);
            return {isMade, true,
                    std::ranges::is_permutation(records, Records) &&
                        std::ranges::is_permutation(Split(text, text), Split(Text, text)),
                    text.size(), text.size()};
        }
    }

    void Step()
    {
        const auto records = Records;
        const auto text = Text;
        const auto outcome = Call(Choose());
        Require(!outcome.IsMade || (outcome.IsPossible && outcome.IsDone), "the result of the edit");
        const auto stay = [&](const auto& before, const auto& after) {
            const auto common = CountCommon(before, after);
            return common + outcome.Lost >= before.size() && common + outcome.Added >= after.size();
        };
        Require(stay(records, Records), "other records stay");
        Require(stay(Split(text, text), Split(Text, text)) && HasMark(Text) == HasMark(text),
                "other lines stay");
    }
};

void Fuzz(ParserSession session, int steps)
{
    session.Records = model::Load(session.Text);
    for (int i = 0; i != steps; ++i)
        session.Step();
}

void Fuzz(DocumentSession session, int steps)
{
    // What was loaded is in memory of just its size: the address sanitizer detects a read past it.
    const bool isText = session.IsParser() || session.Text.find('\0') == std::string::npos;
    Require(session.Narrow.Load(Path) == isText && session.Wide.Load(Path) == isText, "the file is loaded");
    if (!isText)
        return;
    session.Compare();
    for (int i = 0; i != steps; ++i)
        session.Step();
    Require(session.Narrow.Save(Path), "the document is saved");
    session.CompareFile();
}

template <class Call>
void RequireThrow(Call call)
{
    try {
        call();
    } catch (const INIFormatError&) {
        return;
    }
    Require(false, "a malformed header throws");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    // Choices are taken from the end of the bytes and texts from their front, up to a backslash before
    // another character, so a seed is a plain INI file, a "\\.", and some more.
    FuzzedDataProvider data(bytes, size);
    const auto steps = data.ConsumeIntegralInRange(1, 8);
    const auto kind = data.ConsumeIntegralInRange(0, 2);
    const auto text = data.ConsumeRandomLengthString(size);
    std::ofstream(Path, std::ios::binary) << text;
    INIDocument document(INISyntax::Parser);
    try {
        if (kind == 0)
            Fuzz(ParserSession{{data, text}}, steps);
        else
            Fuzz(DocumentSession{{data, text}, kind == 1 ? INISyntax::Common : INISyntax::Parser}, steps);
    } catch (const std::out_of_range&) { // by the model, or by the library
        RequireThrow([&] { document.Load(Path); });
        RequireThrow([&] { return INIParser::GetValue("", "", Path); });
        RequireThrow([&] { return INIParser::SetValue(L"k", L"v", L"S", WidePath); });
        RequireThrow([&] { return INIParser::Sort(Path, false); });
    }
    return 0;
}
