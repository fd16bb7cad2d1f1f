// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIDocument.h"

#include "qmUtility/ini/DocumentLines.h"
#include "qmUtility/ini/TextFile.h"

#include <charconv>
#include <set>
#include <sstream>

using ini::LineKind;
using ini::LineNumber;

template <class Char>
BasicINIDocument<Char>::BasicINIDocument(INISyntax syntax, const std::locale& locale)
    : m_lines(std::make_unique<Lines>(syntax, ini::Encoding<Char>(locale), platform::Buffer<Char>(0))) {}

template <class Char>
BasicINIDocument<Char>::BasicINIDocument(const BasicINIDocument& other)
    : m_lines(other.m_lines ? other.m_lines->Read(platform::Buffer<Char>(0)) : nullptr) {
    Parse(other.Text());
}

template <class Char>
BasicINIDocument<Char>::BasicINIDocument(BasicINIDocument&&) noexcept = default;
template <class Char>
BasicINIDocument<Char>& BasicINIDocument<Char>::operator=(const BasicINIDocument& other) {
    *this = BasicINIDocument(other);  // all or nothing
    return *this;
}
template <class Char>
BasicINIDocument<Char>& BasicINIDocument<Char>::operator=(BasicINIDocument&&) noexcept = default;
template <class Char>
BasicINIDocument<Char>::~BasicINIDocument() = default;

template <class Char>
auto BasicINIDocument<Char>::EditLines() -> Lines& {
    if (!m_lines) *this = BasicINIDocument();
    return *m_lines;
}

template <class Char>
auto BasicINIDocument<Char>::GetLines() const -> const Lines& {
    static const BasicINIDocument empty;
    return m_lines ? *m_lines : *empty.m_lines;
}

template <class Char>
bool BasicINIDocument<Char>::Load(const std::filesystem::path& path, std::error_code& error) {
    auto bytes = platform::File::Read(platform::SystemPath(path), error);
    if (!bytes) return false;
    const Lines& old = EditLines();
    auto text = old.GetEncoding().Decode(std::move(*bytes));
    auto lines = text ? old.Read(std::move(*text)) : nullptr;
    if (lines)
        m_lines = std::move(lines);
    else
        error = std::make_error_code(std::errc::illegal_byte_sequence);
    return !error;
}

template <class Char>
bool BasicINIDocument<Char>::Load(const std::filesystem::path& path) {
    std::error_code ignored;
    return Load(path, ignored);
}

template <class Char>
bool BasicINIDocument<Char>::Parse(View text) {
    platform::Buffer<Char> copy(text.size());
    copy.Size = text.copy(copy.Data.get(), text.size());
    auto lines = EditLines().Read(std::move(copy));
    if (!lines) return false;
    m_lines = std::move(lines);
    return true;
}

template <class Char>
auto BasicINIDocument<Char>::Text() const -> String {
    return GetLines().Text();
}

template <class Char>
bool BasicINIDocument<Char>::Save(const std::filesystem::path& path, std::error_code& error) const {
    std::string bytes;
    auto encoding = GetLines().GetEncoding();
    if (encoding.Append(bytes, Text(), ini::Unencodable::Fail)) {
        encoding.Finish(bytes);
        return platform::File::Replace(platform::SystemPath(path), bytes, error);
    }
    error = std::make_error_code(std::errc::illegal_byte_sequence);
    return false;
}

template <class Char>
bool BasicINIDocument<Char>::Save(const std::filesystem::path& path) const {
    std::error_code ignored;
    return Save(path, ignored);
}

// Lookups

namespace {

/// @return the line of the first active record, or 0.
template <class Char>
LineNumber Find(const ini::DocumentLines<Char>& lines, std::basic_string_view<Char> key,
                std::basic_string_view<Char> section) {
    return key.empty() ? lines.FindHeader(section) : lines.FindKey(key, section, true);
}

}  // namespace

template <class Char>
auto BasicINIDocument<Char>::ViewOf(const Lines& lines, std::uint32_t line) -> RecordView {
    RecordView view;
    view.m_lines = &lines;
    view.m_line = line;
    view.Commented = lines[line].Commented;
    view.Key = lines[line].Key;
    view.Value = lines[line].Value;
    if (lines[line].Kind != LineKind::Other)  // which makes an empty record
        view.Section = lines.SectionOf(line);
    return view;
}

template <class Char>
void BasicINIDocument<Char>::Advance(RecordView& record) {
    const Lines& lines = *record.m_lines;
    LineNumber line = lines.Next(record.m_line);
    while (line != 0 && !lines[line].IsRecord) line = lines.Next(line);
    record = ViewOf(lines, line);
}

template <class Char>
auto BasicINIDocument<Char>::CommentsOf(const Lines& lines, std::uint32_t line) -> String {
    String comments;
    if (lines[line].IsHeader() && lines[line].HasKey) return comments;  // which `Parser` loses
    for (LineNumber above = lines.FirstComment(line); above != line; above = lines.Next(above))
        if (lines[above].IsComment()) (comments += lines[above].Text()) += Char('\n');
    return comments;
}

template <class Char>
auto BasicINIDocument<Char>::Copy(const RecordView& record) -> Record {
    return {record.Comments(), record.Commented, String(record.Section), String(record.Key),
            String(record.Value)};
}

template <class Char>
auto BasicINIDocument<Char>::begin() const -> Iterator {
    Iterator first;
    first.m_record.m_lines = &GetLines();
    return ++first;
}

template <class Char>
auto BasicINIDocument<Char>::FindValue(View key, View section) const -> std::optional<View> {
    const LineNumber line = Find(GetLines(), key, section);
    return line != 0 ? std::optional(GetLines()[line].Value) : std::nullopt;
}

template <class Char>
auto BasicINIDocument<Char>::GetValue(View key, View section, View fallback) const -> String {
    return String(FindValue(key, section).value_or(fallback));
}

template <class Char>
auto BasicINIDocument<Char>::GetRecord(View key, View section) const -> std::optional<Record> {
    const LineNumber line = Find(GetLines(), key, section);
    return line != 0 ? std::optional(Copy(ViewOf(GetLines(), line))) : std::nullopt;
}

template <class Char>
auto BasicINIDocument<Char>::GetSection(View section) const -> std::vector<Record> {
    std::vector<Record> keys;
    for (const RecordView& record : *this)
        if (record.Commented == ' ' && !record.Key.empty() && record.Section == section)
            keys.push_back(Copy(record));
    return keys;
}

template <class Char>
auto BasicINIDocument<Char>::GetSectionNames() const -> std::vector<String> {
    const Lines& lines = GetLines();
    std::set<View> seen;  // whose time does not depend on the names
    std::vector<String> names;
    for (LineNumber line = lines.First(); line != 0; line = lines.Next(line))
        if (lines[line].IsActiveHeader() && seen.insert(lines[line].Section).second)
            names.emplace_back(lines[line].Section);
    return names;
}

template <class Char>
bool BasicINIDocument<Char>::RecordExists(View key, View section) const {
    return Find(GetLines(), key, section) != 0;
}

template <class Char>
bool BasicINIDocument<Char>::SectionExists(View section) const {
    return GetLines().HasSection(section);
}

// Values

namespace {

/// @return the text when it consists of these characters only, else nothing.
template <class Char>
std::string Ascii(std::basic_string_view<Char> text, std::string_view characters) {
    std::string ascii;
    for (const Char c : text) {
        if (c <= 0 || c > 0x7F || characters.find(static_cast<char>(c)) == std::string_view::npos) return {};
        ascii += static_cast<char>(c);
    }
    return ascii;
}

template <class Number>
bool ReadInteger(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty();
}

/// The stream's conversion takes decimal and scientific notation, whatever the C library's locale.
template <class Number>
bool ReadFloating(const std::string& text, Number& number) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    if (text.empty() || text.front() == '+' || !(stream >> number) || !stream.eof()) return false;
    const std::size_t digits = text.find_first_of("123456789");
    return number != 0 || digits == std::string::npos ||
           digits > text.find_first_of("Ee");  // else it is too small
}

}  // namespace

template <class Char>
bool BasicINIDocument<Char>::Read(View text, bool& value) {
    std::string word = Ascii(text, "01EFLNORSTUAYefalnorstuy");
    for (char& c : word)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    value = word == "true" || word == "yes" || word == "on" || word == "1";
    return value || word == "false" || word == "no" || word == "off" || word == "0";
}

template <class Char>
bool BasicINIDocument<Char>::Read(View text, long long& value) {
    return ReadInteger(Ascii(text, "-0123456789"), value);
}

template <class Char>
bool BasicINIDocument<Char>::Read(View text, unsigned long long& value) {
    return ReadInteger(Ascii(text, "0123456789"), value);
}

template <class Char>
bool BasicINIDocument<Char>::Read(View text, float& value) {
    return ReadFloating(Ascii(text, "+-.0123456789Ee"), value);
}

template <class Char>
bool BasicINIDocument<Char>::Read(View text, double& value) {
    return ReadFloating(Ascii(text, "+-.0123456789Ee"), value);
}

template <class Char>
bool BasicINIDocument<Char>::Read(View text, String& value) {
    value = text;
    return true;
}

template class BasicINIDocument<char>;
template class BasicINIDocument<wchar_t>;
