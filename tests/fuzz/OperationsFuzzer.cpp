// SPDX-License-Identifier: MIT
/// @file
/// Random edits by `INIParser`, or of documents, each beside the same edit of the model's records. The rest
/// of a document's text stays as it was.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"
#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <fstream>

namespace {

using model::IsActive;
using model::Record;
using model::Records;

const std::string Path = "/dev/shm/qmUtility-fuzz-" + std::to_string(getpid());
const std::wstring WidePath(Path.begin(), Path.end());

std::wstring Widen(const std::string& bytes) {
    std::wstring wide;
    for (const char c : bytes) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

/// @return how many elements both lists have, in the same order.
template <class List>
std::size_t CountCommon(const List& a, const List& b) {
    std::vector<std::size_t> counts(b.size() + 1);  // of those of `a` so far and each number of those of `b`
    for (const auto& element : a)
        for (std::size_t j = 0, diagonal = 0; j != b.size(); ++j) {
            const auto count = element == b[j] ? diagonal + 1 : std::max(counts[j], counts[j + 1]);
            diagonal = std::exchange(counts[j + 1], count);
        }
    return counts.back();
}

bool IsPlain(const std::string& text) {
    return !text.empty() &&
           text.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyz") == std::string::npos;
}

/// @return the records of a document of either width as narrow ones.
Records ListOf(const auto& document) {
    const auto narrow = [](const auto& text) { return std::string(text.begin(), text.end()); };
    Records list;
    for (const auto& record : document)
        list.push_back({{narrow(record.Comments()), static_cast<char>(record.Commented),
                         narrow(record.Section), narrow(record.Key), narrow(record.Value)}});
    return list;
}

/// Makes an edit of both documents, with arguments that `as` brings into their width.
#define EDIT_DOCUMENTS(Name, ...) \
    EditDocuments([&](auto& document, [[maybe_unused]] auto as) { return document.Name(__VA_ARGS__); })
/// Makes an edit of the session's subject.
#define EDIT(Name, ...) (IsFile ? INIParser::Name(__VA_ARGS__, as(Path)) : EDIT_DOCUMENTS(Name, __VA_ARGS__))

/// A text, the records that the model reads in it, and random operations.
struct Session {
    FuzzedDataProvider& Data;
    std::string Text;
    bool IsFile;  ///< which `INIParser` edits; else two documents are edited
    INISyntax Syntax;
    INIDocument Narrow{Syntax};
    WINIDocument Wide{Syntax};
    Records List = {};
    std::string Key = {};
    std::string Section = {};
    std::string Other = {};  ///< a value, a new name, or comments
    bool Flag = false;

    /// Chooses arguments: more often than not the names of a record.
    /// @return a number that stands for an operation.
    int Choose() {
        Record record;
        if (!List.empty()) record = List[Data.ConsumeIntegralInRange<std::size_t>(0, List.size() - 1)];
        const bool isOwn = Data.ConsumeBool();
        Key = isOwn || Data.ConsumeBool() ? record.Key : Data.ConsumeRandomLengthString(16);
        Section = isOwn || Data.ConsumeBool() ? record.Section : Data.ConsumeRandomLengthString(16);
        Other = Data.ConsumeRandomLengthString(16);
        Flag = Data.ConsumeBool();
        return Data.ConsumeIntegralInRange(0, 11);
    }

    void Load() {
        List = model::Load(Text, Syntax);
        if (IsFile) return CompareFile();
        INIDocument fresh(Syntax);
        Verify(ListOf(Narrow) == List, "the records");
        Verify(ListOf(Wide) == List, "the records of the wide document");
        Verify(fresh.Parse(Text) && ListOf(fresh) == List, "the records of a fresh document");
        Verify(Wide.Text() == Widen(Text), "the text of the wide document");
    }

    void CompareFile() const {
        std::ifstream file(Path, std::ios::binary);
        Verify(std::string(std::istreambuf_iterator<char>(file), {}) == Text, "the text of the file");
    }

    bool EditDocuments(auto edit) {
        const bool isMade = edit(Narrow, [](const std::string& text) { return text; });
        Verify(edit(Wide, Widen) == isMade, "the result of the wide edit");
        return isMade;
    }

    /// @return the first record of a key; in a document the first active one, or, for no key, the header
    Record* Find(Records& records, const std::string& key, const std::string& section) const {
        const auto at = std::ranges::find_if(records, [&](const Record& record) {
            return record.Section == section && (IsFile || IsActive(record)) &&
                   (!IsFile && key.empty() ? record.IsHeader : record.Key == key);
        });
        return at != records.end() ? &*at : nullptr;
    }

    void Look() {
        const Record* const expected = Find(List, Key, Section);
        const bool isFound = expected != nullptr;
        const std::string value = isFound ? expected->Value : "";
        if (!IsFile) {
            const auto record = Narrow.GetRecord(Key, Section);
            Verify(record.has_value() == isFound && (!isFound || *record == *expected), "GetRecord");
            Verify(Narrow.GetValue(Key, Section, Other) == (isFound ? value : Other), "GetValue");
            Verify(Narrow.RecordExists(Key, Section) == isFound, "RecordExists");
            Verify(!Key.empty() || Section.empty() || Narrow.SectionExists(Section) == isFound,
                   "SectionExists");
            return;
        }
        const auto record = INIParser::GetRecord(Key, Section, Path);
        Verify(record.size() == isFound && (!isFound || record[0] == *expected), "GetRecord");
        Verify(INIParser::GetValue(Key, Section, Path) == value, "GetValue");
        Verify(INIParser::GetValue(Widen(Key), Widen(Section), WidePath) == Widen(value), "wide GetValue");
        Verify(INIParser::RecordExists(Key, Section, Path) == isFound, "RecordExists");
        const bool exists = std::ranges::count(List, Section, &Record::Section) != 0;
        Verify(INIParser::SectionExists(Section, Path) == exists, "SectionExists");
        auto keys = List;
        std::erase_if(keys, [&](const auto& x) { return x.Key.empty() || x.Section != Section; });
        Verify(std::ranges::equal(INIParser::GetSection(Section, Path), keys), "GetSection");
        auto names = List;
        std::erase_if(names, [](const auto& x) { return !x.Key.empty(); });
        Verify(std::ranges::equal(INIParser::GetSectionNames(Path), names, {}, {}, &Record::Section),
               "GetSectionNames");
        Verify(INIParser::Content(Path) == model::Text(List, ""), "Content");
        Verify(INIParser::Create(Path), "Create");
        Text.clear();
        Load();
    }

    struct Outcome {
        bool IsMade;
        bool IsPossible;        ///< whether the model makes it, too
        std::size_t Lost = 1;   ///< how many lines of a document it may remove or alter
        std::size_t Added = 1;  ///< how many it may add or alter
    };
    static constexpr std::size_t Many = 1 << 30;

    /// @return whether a record is of the section; in a document also whether it is active, or is not.
    bool IsOwn(const Record& record, bool isActive) const {
        return record.Section == Section && (IsFile || (!record.IsNothing && IsActive(record) == isActive));
    }

    /// Changes the mark of each record of the section. @return how many there are
    std::size_t Mark(Records& records, bool isActive, char mark) const {
        std::size_t count = 0;
        for (Record& record : records)
            if (IsOwn(record, isActive)) {
                record.Commented = mark;
                ++count;
            }
        return count;
    }

    /// Makes an edit of the subject, and of records; to a document's records it adds none, and sorts none.
    Outcome Edit(int operation, Records& records) {
        const auto as = [](const std::string& text) { return text; };  // for `INIParser`
        Record* const found = Find(records, Key, Section);
        const bool isKey = found != nullptr && (IsFile || !Key.empty());
        const auto mark = Flag ? INICommentChar::Hash : INICommentChar::Semicolon;
        std::size_t count = 0;  // of lines that are altered
        bool isBelow = false;   // whether a record is below a header that is edited
        switch (operation) {
            case 1:
                if (found != nullptr)
                    found->Value = Other;
                else if (IsFile) {
                    if (std::ranges::count(records, Section, &Record::Section) == 0)
                        records.push_back({{{}, ' ', Section, {}, {}}});
                    records.insert(std::ranges::find(records, Section, &Record::Section) + 1,
                                   {{{}, ' ', Section, Key, Other}});
                }
                count = found != nullptr ? 1 : 0;
                return {EDIT(SetValue, as(Key), as(Other), as(Section)), IsFile || !Key.empty(), count,
                        3 - 2 * count};
            case 2: {
                const bool isNew = !Section.empty() && Find(records, {}, Section) == nullptr;
                if (IsFile) records.push_back({{{}, ' ', Section, {}, {}}});
                return {EDIT(AddSection, as(Section)), IsFile || isNew, 0, 2};
            }
            case 3:
                if (isKey) records.erase(records.begin() + (found - records.data()));
                return {EDIT(DeleteRecord, as(Key), as(Section)), isKey, Many, 0};
            case 4:
                count = std::erase_if(records, [&](const Record& record) {
                    const bool isOwn = IsOwn(record, true);
                    isBelow = !IsFile && (record.IsHeader ? isOwn : isBelow);
                    return isOwn || isBelow;
                });
                return {EDIT(DeleteSection, as(Section)), IsFile || count > 0, Many, 0};
            case 5: {
                const bool isNew = Find(records, {}, Other) == nullptr;
                for (Record& record : records) {
                    const bool isOwn = record.Section == Section;
                    if (record.IsHeader) count += (isBelow = isOwn && IsActive(record)) ? 1 : 0;
                    // A commented-out header parts an active key from its own in one syntax only.
                    const bool isInActive = Syntax == INISyntax::Common && IsActive(record);
                    if (isOwn && (IsFile || isBelow || isInActive)) record.Section = Other;
                }
                const bool isMade = EDIT(RenameSection, as(Section), as(Other));
                if (!IsFile && Syntax == INISyntax::Parser &&
                    model::Has(Section + Other, '='))  // the header is a key, too
                    records = model::Load(Narrow.Text(), Syntax);
                return {isMade, IsFile || (count > 0 && isNew), count, count};
            }
            case 6:
                if (isKey) found->Commented = static_cast<char>(mark);
                return {EDIT(CommentRecord, mark, as(Key), as(Section)), isKey};
            case 7: {
                const char any = Flag || !IsFile ? static_cast<char>(mark) : Data.ConsumeIntegral<char>();
                count = Mark(records, true, any);
                return {IsFile ? INIParser::CommentSection(any, Section, Path)
                               : EDIT_DOCUMENTS(CommentSection, mark, as(Section)),
                        IsFile || count > 0, count, count};
            }
            case 8: {
                const auto at = std::ranges::find_if(records, [&](const Record& record) {
                    return record.Key == Key &&
                           (IsFile ? record.Section == Section
                                   : !IsActive(record) && !Key.empty() && record.Active == Section);
                });
                if (at != records.end()) {
                    at->Commented = ' ';
                    at->Section = Section;
                    ++count;
                }
                return {EDIT(UnCommentRecord, as(Key), as(Section)), count > 0};
            }
            case 9:
                count = Mark(records, false, ' ');
                return {EDIT(UnCommentSection, as(Section)), IsFile || count > 0, count, count};
            case 10: {
                const bool isWhole = IsFile ? Other.size() < 2 : Other.empty() || Other.ends_with('\n');
                if (found != nullptr) {
                    count = found->Comments.size() + 1;
                    found->Comments = Other + (isWhole ? "" : "\n");
                }
                return {Key.empty() ? EDIT(SetSectionComments, as(Other), as(Section))
                                    : EDIT(SetRecordComments, as(Other), as(Key), as(Section)),
                        found != nullptr, count, Other.size() + 2};
            }
            default:
                if (!IsFile) return {EDIT_DOCUMENTS(Sort, Flag), true};
                const auto sorted = model::Sorted(records, Flag);
                records = sorted.empty() ? records : sorted;
                return {INIParser::Sort(Path, Flag), !sorted.empty()};
        }
    }

    /// @return the byte order mark, or nothing, and the lines, each with its newline; the last one gets that
    ///   of the first line of another text.
    std::vector<std::string> Split(const std::string& text, const std::string& other) const {
        const bool hasMark = Syntax == INISyntax::Common && text.starts_with(model::ByteOrderMark);
        const bool hasCr = other.substr(0, other.find('\n') + 1).ends_with("\r\n");
        std::vector<std::string> lines = {text.substr(0, hasMark ? 3 : 0)};
        std::istringstream stream(text.substr(lines[0].size()));
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line + (hasCr && stream.eof() ? "\r\n" : "\n"));
        return lines;
    }

    void Step() {
        const int operation = Choose();
        if (operation == 0) return Look();
        const auto text = Text;
        const Record* const found = Find(List, Key, Section);
        const std::string value = found != nullptr ? found->Value : "";
        const bool isPlain = IsPlain(Key) && IsPlain(Other) && (found ? !found->IsHeader : IsPlain(Section));
        auto expected = List;
        const auto [isMade, isPossible, lost, added] = Edit(operation, expected);
        if (IsFile) {
            Verify(isMade == isPossible, "the result of the edit");
            Text = isMade ? model::Text(expected, " ") : text;
            return Load();
        }
        Text = Narrow.Text();
        Load();
        Verify(isMade ? isPossible : Text == text, "the result of the edit");
        if (!isMade) {
            const bool mustBeMade = operation == 1 && Syntax == INISyntax::Parser && isPlain;
            return Verify(!mustBeMade, "plain names");
        }
        const auto before = Split(text, text);
        const auto after = Split(Text, text);
        if (operation == 11) {
            Verify(std::ranges::is_permutation(expected, List), "the sorted records");
            return Verify(std::ranges::is_permutation(before, after), "the sorted lines");
        }
        const auto common = CountCommon(before, after);
        Verify(common + lost >= before.size() && common + added >= after.size(), "other lines stay");
        Verify(before[0] == after[0], "the byte order mark stays");
        Verify(CountCommon(expected, List) == expected.size(), "the records of the edit");
        Verify(List.size() <= expected.size() + (lost == 0 ? 2 : 0), "the number of records");
        if (operation == 2) Verify(Narrow.SectionExists(Section), "the new section");
        if (operation != 1) return;
        Verify(Narrow.GetValue(Key, Section) == Other, "the new value");
        auto copy = Narrow;
        if (!Other.empty() && !value.empty())
            Verify(copy.SetValue(Key, value, Section) && copy.Text() == text, "the old value");
    }

    void Run(int steps) {
        // What was loaded is in memory of just its size: the address sanitizer detects a read past it.
        const bool isText = Syntax == INISyntax::Parser || Text.find('\0') == std::string::npos;
        Verify(IsFile || (Narrow.Load(Path) == isText && Wide.Load(Path) == isText), "the file is loaded");
        if (!isText) return;
        for (Load(); steps != 0; --steps) Step();
        Verify(IsFile || Narrow.Save(Path), "the document is saved");
        CompareFile();
    }
};

template <class Call>
void VerifyThrow(Call call) {
    try {
        call();
    } catch (const INIFormatError&) {
        return;
    }
    Verify(false, "a malformed header throws");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    // Choices are taken from the end of the bytes and texts from their front, up to a backslash before
    // another character, so a seed is a plain INI file, a "\\.", and some more.
    FuzzedDataProvider data(bytes, size);
    const auto steps = data.ConsumeIntegralInRange(1, 8);
    const auto kind = data.ConsumeIntegralInRange(0, 2);
    const auto syntax = kind == 1 ? INISyntax::Common : INISyntax::Parser;
    const auto text = data.ConsumeRandomLengthString(size);
    std::ofstream(Path, std::ios::binary) << text;
    INIDocument document(INISyntax::Parser);
    try {
        Session{data, text, kind == 0, syntax}.Run(steps);
    } catch (const std::out_of_range&) {  // by the model, or by the library
        VerifyThrow([&] { document.Load(Path); });
        VerifyThrow([&] { return INIParser::GetValue("", "", Path); });
        VerifyThrow([&] { return INIParser::SetValue(L"k", L"v", L"S", WidePath); });
        VerifyThrow([&] { return INIParser::Sort(Path, false); });
    }
    return 0;
}
