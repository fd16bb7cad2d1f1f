// SPDX-License-Identifier: MIT
// Random edits by `INIParser`, or of a document, each beside the same edit of the model's records. The rest
// of a document's text stays as it was.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"
#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <cassert>
#include <fstream>

namespace {

using model::Record;
using model::Records;

const std::string Path = "/dev/shm/qmUtility-fuzz-" + std::to_string(getpid());

std::string ReadFile() {
    std::ifstream file(Path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// @return how many elements both lists have, in the same order.
std::size_t CountCommon(const auto& a, const auto& b) {
    std::vector<std::size_t> counts(b.size() + 1);  // of those of `a` so far and each number of those of `b`
    for (const auto& element : a)
        for (std::size_t j = 0, diagonal = 0; j != b.size(); ++j) {
            const auto count = element == b[j] ? diagonal + 1 : std::max(counts[j], counts[j + 1]);
            diagonal = std::exchange(counts[j + 1], count);
        }
    return counts.back();
}

/// @return the `wchar_t` of each byte.
std::wstring Widen(const std::string& bytes) {
    std::wstring text;
    for (const char c : bytes) text += static_cast<unsigned char>(c);
    return text;
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

/// Makes an edit of the session's subject.
#define EDIT(Name, ...) (IsFile ? INIParser::Name(__VA_ARGS__, Path) : Document.Name(__VA_ARGS__))

/// A text, the records that the model reads in it, and random operations.
struct Session {
    FuzzedDataProvider& Data;
    std::string Text;
    bool IsFile;  ///< which `INIParser` edits; else a document is edited
    INISyntax Syntax;
    INIDocument Document{Syntax};
    Records List = {};
    std::string Key = {}, Section = {};
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
        if (IsFile) return assert(ReadFile() == Text);
        const INIDocument copy = Document;  // which reads the text
        WINIDocument wide(Syntax);
        const bool isParsed = wide.Parse(Widen(Text));
        assert(isParsed && ListOf(Document) == List && ListOf(copy) == List && ListOf(wide) == List);
    }

    /// @return the first record of a key; in a document the first active one, or, for no key, the header
    Record* Find(Records& records, const std::string& key, const std::string& section) const {
        const auto at = std::ranges::find_if(records, [&](const Record& record) {
            return record.Section == section && (IsFile || record.IsActive()) &&
                   (!IsFile && key.empty() ? record.IsHeader : record.Key == key);
        });
        return at != records.end() ? &*at : nullptr;
    }

    void Look() {
        const Record* const expected = Find(List, Key, Section);
        const bool isFound = expected != nullptr;
        if (!IsFile) {
            const auto record = Document.GetRecord(Key, Section);
            assert(record.has_value() == isFound && (!isFound || *record == *expected));
            assert(Document.GetValue(Key, Section, Other) == (isFound ? expected->Value : Other));
            assert(Document.RecordExists(Key, Section) == isFound);
            return assert(!Key.empty() || Section.empty() || Document.SectionExists(Section) == isFound);
        }
        const auto record = INIParser::GetRecord(Key, Section, Path);
        assert(record.size() == isFound && (!isFound || record[0] == *expected));
        assert(INIParser::GetValue(Key, Section, Path) == (isFound ? expected->Value : ""));
        assert(INIParser::RecordExists(Key, Section, Path) == isFound);
        const std::wstring wide = INIParser::GetValue(Widen(Key), Widen(Section), Widen(Path));
        assert(wide == Widen(isFound ? expected->Value : ""));
        const bool exists = std::ranges::count(List, Section, &Record::Section) != 0;
        assert(INIParser::SectionExists(Section, Path) == exists);
        auto keys = List;
        std::erase_if(keys, [&](const auto& x) { return x.Key.empty() || x.Section != Section; });
        assert(std::ranges::equal(INIParser::GetSection(Section, Path), keys));
        auto names = List;
        std::erase_if(names, [](const auto& x) { return !x.Key.empty(); });
        assert(std::ranges::equal(INIParser::GetSectionNames(Path), names, {}, {}, &Record::Section));
        assert(INIParser::Content(Path) == model::Text(List, ""));
        const bool isCreated = INIParser::Create(Path);
        assert(isCreated);
        Text.clear();
        Load();
    }

    struct Outcome {
        bool IsMade;
        bool IsPossible;        ///< whether the model makes it, too
        std::size_t Lost = 1;   ///< how many lines of a document it may remove or alter
        std::size_t Added = 1;  ///< how many it may add or alter
    };

    /// @return whether a record is of the section; in a document also whether it is active, or is not.
    bool IsOwn(const Record& record, bool isActive) const {
        return record.Section == Section && (IsFile || (!record.IsNothing && record.IsActive() == isActive));
    }

    /// Makes an edit of the subject, and of records; to a document's records it adds none, and sorts none.
    Outcome Edit(int operation, Records& records) {
        Record* const found = Find(records, Key, Section);
        const bool isKey = found != nullptr && (IsFile || !Key.empty());
        const auto mark = Flag ? INICommentChar::Hash : INICommentChar::Semicolon;
        std::size_t count = 0;  // of lines that are altered
        bool isBelow = false;   // whether a record is below a header that is edited
        switch (operation) {
            case 1:
                if (found != nullptr)
                    found->Value = Other, count = 1;
                else if (IsFile) {
                    auto at = std::ranges::find(records, Section, &Record::Section);
                    if (at == records.end()) at = records.insert(at, {{{}, ' ', Section, {}, {}}});
                    records.insert(at + 1, {{{}, ' ', Section, Key, Other}});
                }
                return {EDIT(SetValue, Key, Other, Section), IsFile || !Key.empty(), count, 3 - 2 * count};
            case 2:
                if (IsFile) records.push_back({{{}, ' ', Section, {}, {}}});
                return {EDIT(AddSection, Section),
                        IsFile || (!Section.empty() && Find(List, {}, Section) == nullptr), 0, 2};
            case 3:
                if (isKey) records.erase(records.begin() + (found - records.data()));
                return {EDIT(DeleteRecord, Key, Section), isKey, Text.size(), 0};
            case 4:
                count = std::erase_if(records, [&](const Record& record) {
                    const bool isOwn = IsOwn(record, true);
                    isBelow = !IsFile && (record.IsHeader ? isOwn : isBelow);
                    return isOwn || isBelow;
                });
                return {EDIT(DeleteSection, Section), IsFile || count > 0, Text.size(), 0};
            case 5: {
                const bool isNew = Find(records, {}, Other) == nullptr;
                for (Record& record : records) {
                    const bool isOwn = record.Section == Section && (IsFile || !record.IsNothing);
                    if (record.IsHeader) count += (isBelow = isOwn && record.IsActive()) ? 1 : 0;
                    // A commented-out header parts an active key from its own in one syntax only.
                    const bool isInActive = Syntax == INISyntax::Common && record.IsActive();
                    if (isOwn && (IsFile || isBelow || isInActive)) record.Section = Other;
                }
                const bool isMade = EDIT(RenameSection, Section, Other);
                if (!IsFile && Syntax == INISyntax::Parser && model::Has(Section + Other, '='))
                    records = model::Load(Document.Text(), Syntax);  // the header is a key, too
                return {isMade, IsFile || (count > 0 && isNew), count, count};
            }
            case 6:
                if (isKey) found->Commented = static_cast<char>(mark);
                return {EDIT(CommentRecord, mark, Key, Section), isKey};
            case 7: {
                const char any = Flag || !IsFile ? static_cast<char>(mark) : Data.ConsumeIntegral<char>();
                for (Record& record : records)
                    if (IsOwn(record, true)) record.Commented = any, ++count;
                return {IsFile ? INIParser::CommentSection(any, Section, Path)
                               : Document.CommentSection(mark, Section),
                        IsFile || count > 0, count, count};
            }
            case 8: {
                const auto at = std::ranges::find_if(records, [&](const Record& record) {
                    const bool isOwn = !record.IsActive() && !Key.empty() && record.Active == Section;
                    return record.Key == Key && (IsFile ? record.Section == Section : isOwn);
                });
                const bool isPossible = at != records.end();
                if (isPossible) at->Commented = ' ', at->Section = Section;
                return {EDIT(UnCommentRecord, Key, Section), isPossible};
            }
            case 9:
                for (Record& record : records)
                    if (IsOwn(record, false)) record.Commented = ' ', ++count;
                return {EDIT(UnCommentSection, Section), IsFile || count > 0, count, count};
            case 10: {
                const bool isWhole = IsFile ? Other.size() < 2 : Other.empty() || Other.ends_with('\n');
                if (found != nullptr) {
                    count = found->Comments.size() + 1;
                    found->Comments = Other + (isWhole ? "" : "\n");
                }
                return {Key.empty() ? EDIT(SetSectionComments, Other, Section)
                                    : EDIT(SetRecordComments, Other, Key, Section),
                        found != nullptr, count, Other.size() + 2};
            }
            default:
                if (!IsFile) return {Document.Sort(Flag), true};
                const auto sorted = model::Sorted(records, Flag);
                if (!sorted.empty()) records = sorted;
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
        const Record* const found = Find(List, Key, Section);
        const std::string value = found != nullptr ? found->Value : "";
        const std::string names = Key + Other + (found != nullptr ? "" : Section);
        const bool isPlain =
            !Key.empty() && (found == nullptr || !found->IsHeader) &&
            names.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyz") == std::string::npos;
        auto expected = List;
        const auto [isMade, isPossible, lost, added] = Edit(operation, expected);
        if (IsFile) {
            assert(isMade == isPossible);
            if (isMade) Text = model::Text(expected, " ");
            return Load();
        }
        const auto text = std::exchange(Text, Document.Text());
        Load();
        assert(isMade ? isPossible : Text == text);
        if (!isMade) return assert(operation != 1 || Syntax != INISyntax::Parser || !isPlain);
        const auto before = Split(text, text);
        const auto after = Split(Text, text);
        if (operation == 11)
            return assert(std::ranges::is_permutation(expected, List) &&
                          std::ranges::is_permutation(before, after));
        const auto common = CountCommon(before, after);
        assert(common + lost >= before.size() && common + added >= after.size());
        assert(before[0] == after[0]);
        assert(CountCommon(expected, List) == expected.size());
        assert(List.size() <= expected.size() + (lost == 0 ? 2 : 0));
        if (operation == 2) assert(Document.SectionExists(Section));
        if (operation != 1) return;
        assert(Document.GetValue(Key, Section) == Other);
        if (Other.empty() || value.empty()) return;  // where the value begins differs
        INIDocument copy = Document;
        const bool isUndone = copy.SetValue(Key, value, Section);
        assert(isUndone && copy.Text() == text);
    }

    void Run(int steps) {
        // What was loaded is in memory of just its size: the address sanitizer detects a read past it.
        const bool isText = Syntax == INISyntax::Parser || !model::Has(Text, '\0');
        const bool isLoaded = IsFile || Document.Load(Path);
        assert(isLoaded == isText);
        if (!isText) return;
        for (Load(); steps != 0; --steps) Step();
        const bool isSaved = IsFile || Document.Save(Path);
        assert(isSaved);
        assert(ReadFile() == Text);
    }
};

/// Makes a call that has to report a malformed header.
void ReadMalformed(const auto& read) {
    try {
        read();
        assert(false);
    } catch (const INIFormatError&) {
    }
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
    try {
        Session{data, text, kind == 0, syntax}.Run(steps);
    } catch (const INIFormatError&) {  // by the model or the library: the others throw, too
        ReadMalformed([=] { model::Load(ReadFile(), syntax); });
        ReadMalformed([=] { INIDocument(syntax).Load(Path); });
        ReadMalformed([] { INIParser::GetValue("k", "S", Path); });
        ReadMalformed([] { INIParser::Sort(Path, false); });
    }
    return 0;
}
