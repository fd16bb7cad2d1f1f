// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"

#include "qmUtility/ini/ScanFile.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <tuple>
#include <unordered_set>
#include <utility>

using ini::IsRecord;
using ini::IsSection;

namespace {

/// A file that is rewritten. Nothing is allocated once it is open: running out of memory between the old
/// content and the new one would lose both. After a write that fails nothing more is written, so that what is
/// there has no gaps.
template <class Char>
class Output
{
public:
    Output(const std::basic_string<Char>& path, const std::locale& locale)
        : m_file(platform::SystemPath(path)), m_encoding(locale)
    {}

    bool IsOpen() const { return m_file.IsOpen(); }

    Output& operator<<(std::basic_string_view<Char> text)
    {
        for (std::size_t end = 0; (end = text.find(Char('\n'))) != text.npos; text.remove_prefix(end + 1)) {
            Append(text.substr(0, end));
            for (const Char c : platform::Newline)
                Append({&c, 1});
        }
        Append(text);
        return *this;
    }

    Output& operator<<(Char c) { return *this << std::basic_string_view<Char>(&c, 1); }

    void Flush() { m_file.Write({m_record.data(), std::exchange(m_end, m_record.data())}); }

    void Finish()
    {
        m_end = m_encoding.Finish(m_end, m_record.data() + m_record.size());
        Flush();
    }

private:
    void Append(std::basic_string_view<Char> text)
    {
        while (m_end = m_encoding.Encode(text, m_end, m_record.data() + m_record.size()), !text.empty())
            Flush();
    }

    std::array<char, 4096> m_record; ///< what is written next
    char* m_end = m_record.data();
    platform::File m_file;
    ini::Encoding<Char> m_encoding;
};

/// A text in memory that takes the place of an `Output`.
template <class Char>
struct TextOutput
{
    std::basic_string<Char> Text = {};

    template <class Piece>
    TextOutput& operator<<(Piece piece)
    {
        Text += piece;
        return *this;
    }
    void Flush() {}
};

/// The two widths of a saved file differ intentionally: the narrow form begins every active line with a space;
/// the wide one does not, and has an empty line between a section's comments and its header, for each section
/// but the first.
/// @param isSaved false for `Content`, which has neither.
template <class Char, class Target>
void WriteRecords(const std::vector<INIParser::BasicRecordView<Char>>& records, bool isSaved, Target& out)
{
    const bool isIndented = isSaved && std::is_same_v<Char, char>;
    const bool isSpaced = isSaved && !isIndented;
    bool isFirstSection = true;
    for (const auto& record : records) {
        const bool isSection = record.Key.empty();
        out << record.Comments;
        if (isSection && !std::exchange(isFirstSection, false) && isSpaced)
            out << Char('\n');
        if (isIndented || record.Commented != ' ')
            out << record.Commented;
        if (isSection)
            out << Char('[') << record.Section << Char(']');
        else
            out << record.Key << Char('=') << record.Value;
        out << Char('\n');
        out.Flush(); // for each record, so that what is written survives the host
    }
}

/// @return whether a range of comment lines is as `NormalizedComments` makes it.
template <class Char>
bool IsNormalized(std::basic_string_view<Char> comments)
{
    std::size_t size = 0;
    ini::EachComment(comments, [&](auto line) { size += line.size() + 1; });
    return size == comments.size();
}

template <class Char>
INIParser::BasicRecord<Char> Copy(const INIParser::BasicRecordView<Char>& record)
{
    using String = std::basic_string<Char>;
    return {String(record.Comments), record.Commented, String(record.Section), String(record.Key),
            String(record.Value)};
}

} // namespace

template <class Char>
BasicINIDocument<Char>::BasicINIDocument() = default;
template <class Char>
BasicINIDocument<Char>::BasicINIDocument(const BasicINIDocument&) = default;
template <class Char>
BasicINIDocument<Char>::BasicINIDocument(BasicINIDocument&&) noexcept = default;
template <class Char>
BasicINIDocument<Char>& BasicINIDocument<Char>::operator=(const BasicINIDocument& other)
{
    *this = BasicINIDocument(other); // all or nothing
    return *this;
}
template <class Char>
BasicINIDocument<Char>& BasicINIDocument<Char>::operator=(BasicINIDocument&&) noexcept = default;
template <class Char>
BasicINIDocument<Char>::~BasicINIDocument() = default;

template <class Char>
bool BasicINIDocument<Char>::Load(const String& path)
{
    std::error_code ignored;
    auto bytes = platform::File::Read(platform::SystemPath(path), ignored);
    if (!bytes)
        return false;

    BasicINIDocument loaded; // with the current global locale
    auto decoded = ini::Encoding<Char>(loaded.m_locale).Decode(std::move(*bytes));
    if (!decoded)
        return false;
    const View text = *decoded;
    loaded.m_text = std::move(decoded->Data);
    constexpr std::size_t bytesPerRecord = 32; // less than in most files, so that the list seldom grows
    loaded.m_records.reserve(text.size() / bytesPerRecord);
    ini::Scan(text, [&](RecordView record) {
        if (!IsNormalized(record.Comments))
            record.Comments = loaded.Keep(ini::NormalizedComments<Char>(record.Comments));
        loaded.m_records.push_back(record);
    });
    *this = std::move(loaded);
    return true;
}

template <class Char>
bool BasicINIDocument<Char>::Save(const String& path) const
{
    Output<Char> file(path, m_locale);
    if (!file.IsOpen())
        return false;
    WriteRecords(m_records, true, file);
    file.Finish();
    return true;
}

template <class Char>
std::basic_string<Char> BasicINIDocument<Char>::SavedText() const
{
    TextOutput<Char> text;
    WriteRecords(m_records, true, text);
    return std::move(text.Text);
}

template <class Char>
std::basic_string<Char> BasicINIDocument<Char>::Content() const
{
    TextOutput<Char> text;
    WriteRecords(m_records, false, text);
    return std::move(text.Text);
}

template <class Char>
bool BasicINIDocument<Char>::Sort(bool descending)
{
    using Pointers = std::vector<const RecordView*>; // moved faster than records
    const auto sortBy = [descending](Pointers& records, View RecordView::*field) {
        std::sort(records.begin(), records.end(), [=](const RecordView* a, const RecordView* b) {
            return descending ? b->*field < a->*field : a->*field < b->*field;
        });
    };
    struct Run // of keys of one section, contiguous in the file: there are fewer runs to sort than keys
    {
        View Section;
        const RecordView* Begin;
        const RecordView* End;
    };
    std::vector<Run> runs;
    Pointers headers;
    for (const RecordView& record : m_records)
        if (record.Key.empty())
            headers.push_back(&record);
        else if (!runs.empty() && runs.back().End == &record && runs.back().Section == record.Section)
            ++runs.back().End;
        else
            runs.push_back({record.Section, &record, &record + 1});
    if (headers.empty())
        return false;

    sortBy(headers, &RecordView::Section);
    std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) {
        return std::tie(a.Section, a.Begin) < std::tie(b.Section, b.Begin); // keys stay in file order
    });

    // Each header takes the keys of its name from the whole file. So keys are written once for each header of
    // their section: twice for a section with two, and not at all for a section with none.
    Records sorted;
    sorted.reserve(m_records.size());
    Pointers keys;
    const auto isBefore = [](const Run& run, View section) { return run.Section < section; };
    for (const RecordView* header : headers) {
        keys.clear();
        for (auto run = std::lower_bound(runs.begin(), runs.end(), header->Section, isBefore);
             run != runs.end() && run->Section == header->Section; ++run)
            for (const RecordView* key = run->Begin; key != run->End; ++key)
                keys.push_back(key);
        sortBy(keys, &RecordView::Key);
        sorted.push_back(*header);
        for (const RecordView* key : keys)
            sorted.push_back(*key);
    }
    m_records = std::move(sorted);
    return true;
}

template <class Char>
std::vector<INIParser::BasicRecord<Char>> BasicINIDocument<Char>::GetRecord(View key, View section) const
{
    const auto at = std::find_if(begin(), end(), IsRecord<Char>(key, section));
    if (at == end())
        return {};
    return {Copy(*at)};
}

template <class Char>
std::basic_string<Char> BasicINIDocument<Char>::GetValue(View key, View section) const
{
    const auto at = std::find_if(begin(), end(), IsRecord<Char>(key, section));
    return at != end() ? String(at->Value) : String();
}

template <class Char>
std::vector<INIParser::BasicRecord<Char>> BasicINIDocument<Char>::GetSection(View section) const
{
    std::vector<Record> keys;
    IsSection<Char> isSection(section);
    for (const RecordView& record : m_records)
        if (!record.Key.empty() && isSection(record))
            keys.push_back(Copy(record));
    return keys;
}

template <class Char>
std::vector<std::basic_string<Char>> BasicINIDocument<Char>::GetSectionNames() const
{
    std::vector<String> names;
    for (const RecordView& record : m_records)
        if (record.Key.empty())
            names.emplace_back(record.Section);
    return names;
}

template <class Char>
bool BasicINIDocument<Char>::RecordExists(View key, View section) const
{
    return std::any_of(begin(), end(), IsRecord<Char>(key, section));
}

template <class Char>
bool BasicINIDocument<Char>::SectionExists(View section) const
{
    return std::any_of(begin(), end(), IsSection<Char>(section));
}

template <class Char>
bool BasicINIDocument<Char>::SetValue(String key, String value, String section)
{
    DropUnusedTexts();
    const auto ofSection = std::find_if(m_records.begin(), m_records.end(), IsSection<Char>(section));
    if (ofSection == m_records.end()) {
        const RecordView header = {{}, Char(' '), Keep(std::move(section)), {}, {}};
        RecordView record = header;
        record.Key = Keep(std::move(key));
        record.Value = Keep(std::move(value));
        m_records.insert(m_records.end(), {header, record});
        return true;
    }
    const auto at = std::find_if(ofSection, m_records.end(), IsRecord<Char>(key, section));
    if (at != m_records.end())
        at->Value = Keep(std::move(value));
    else // the first key of its section, not the last
        m_records.insert(ofSection + 1,
                         {{}, Char(' '), ofSection->Section, Keep(std::move(key)), Keep(std::move(value))});
    return true;
}

template <class Char>
bool BasicINIDocument<Char>::AddSection(String section)
{
    DropUnusedTexts();
    m_records.push_back({{}, Char(' '), Keep(std::move(section)), {}, {}});
    return true;
}

template <class Char>
bool BasicINIDocument<Char>::DeleteRecord(String key, String section)
{
    const auto at = std::find_if(m_records.begin(), m_records.end(), IsRecord<Char>(key, section));
    if (at == m_records.end())
        return false;
    m_records.erase(at);
    return true;
}

template <class Char>
bool BasicINIDocument<Char>::DeleteSection(String section)
{
    std::erase_if(m_records, IsSection<Char>(section));
    return true;
}

template <class Char>
bool BasicINIDocument<Char>::RenameSection(String oldName, String newName)
{
    DropUnusedTexts();
    return ChangeSection(oldName,
                         [name = Keep(std::move(newName))](RecordView& record) { record.Section = name; });
}

template <class Char>
bool BasicINIDocument<Char>::CommentRecord(INIParser::CommentChar character, String key, String section)
{
    return ChangeRecord(key, section,
                        [character](RecordView& record) { record.Commented = static_cast<Char>(character); });
}

template <class Char>
bool BasicINIDocument<Char>::CommentSection(Char character, String section)
{
    return ChangeSection(section, [character](RecordView& record) { record.Commented = character; });
}

template <class Char>
bool BasicINIDocument<Char>::UnCommentRecord(String key, String section)
{
    return ChangeRecord(key, section, [](RecordView& record) { record.Commented = Char(' '); });
}

template <class Char>
bool BasicINIDocument<Char>::UnCommentSection(String section)
{
    return ChangeSection(section, [](RecordView& record) { record.Commented = Char(' '); });
}

template <class Char>
bool BasicINIDocument<Char>::SetRecordComments(String comments, String key, String section)
{
    DropUnusedTexts();
    // The newline that is appended depends on the length of the text alone: a text that ends in one gets
    // another, and a text of a single character gets none.
    if (comments.size() >= 2)
        comments += Char('\n');
    return ChangeRecord(key, section,
                        [&](RecordView& record) { record.Comments = Keep(std::move(comments)); });
}

template <class Char>
bool BasicINIDocument<Char>::SetSectionComments(String comments, String section)
{
    return SetRecordComments(std::move(comments), {}, std::move(section)); // a header has an empty key
}

/// Changes the first record of a key and section.
template <class Char>
template <class Change>
bool BasicINIDocument<Char>::ChangeRecord(View key, View section, Change change)
{
    const auto at = std::find_if(m_records.begin(), m_records.end(), IsRecord<Char>(key, section));
    if (at == m_records.end())
        return false;
    change(*at);
    return true;
}

/// Changes every record of a section. Succeeds if there is none.
template <class Char>
template <class Change>
bool BasicINIDocument<Char>::ChangeSection(View section, Change change)
{
    IsSection<Char> isSection(section);
    for (RecordView& record : m_records)
        if (isSection(record))
            change(record);
    return true;
}

/// @return a view of a text that the document keeps from now on.
template <class Char>
std::basic_string_view<Char> BasicINIDocument<Char>::Keep(String text)
{
    return *m_kept.emplace_back(std::make_shared<const String>(std::move(text)));
}

/// Releases the texts that edits have replaced, once the number of kept texts has doubled since the last time.
template <class Char>
void BasicINIDocument<Char>::DropUnusedTexts()
{
    if (m_kept.size() < m_dropAt)
        return;
    std::unordered_set<const Char*> unused;
    for (const auto& text : m_kept)
        unused.insert(text->data());
    for (const RecordView& record : m_records)
        for (const View field : {record.Comments, record.Section, record.Key, record.Value})
            unused.erase(field.data());
    std::erase_if(m_kept, [&](const auto& text) { return unused.count(text->data()) != 0; });
    m_dropAt = 2 * m_kept.size() + FewTexts;
}

template class BasicINIDocument<char>;
template class BasicINIDocument<wchar_t>;
