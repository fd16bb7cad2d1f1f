#pragma once

/// @file
/// The grammar of INI files, read here and nowhere else, in two layers: `ScanLines` classifies the lines of a
/// text, `Scan` makes records of them.

#include "qmUtility/ini/INIParser.h"

#include <stdexcept>
#include <string_view>

namespace ini {

template <class Char>
using RecordView = INIParser::BasicRecordView<Char>;

/// Removes white space from both ends. Of all characters only these four count as white space.
template <class Char>
void Trim(std::basic_string_view<Char>& text)
{
    const auto isBlank = [](Char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
}

template <class Char>
bool IsCommentCharacter(Char c)
{
    return c == '#' || c == ';';
}

enum class LineKind
{
    Blank,
    Comment,
    Header,
    MalformedHeader, ///< without a "]" after its first character
    Key,
    Other, ///< neither a comment nor a header nor a key
};

/// One line, as views into the text.
template <class Char>
struct Line
{
    using View = std::basic_string_view<Char>;

    LineKind Kind = LineKind::Blank;
    View Raw;             ///< the whole line with its newline
    View Text;            ///< the line trimmed
    Char Commented = ' '; ///< the character that comments out a header or key, else a space
    View Section;         ///< name in a header
    View Key;             ///< of a key line; also of a header with "=" in its name, whose first part this is
    View Value;           ///< of the same lines
    bool HasKey = false;  ///< whether `Key` and `Value` are set; either may be empty
};

/// Finds occurrences of one character in a text that is read from front to back. It searches each part of the
/// text once: a rare character is searched for across many lines at a time.
template <class Char>
class Finder
{
public:
    Finder(std::basic_string_view<Char> text, Char wanted)
        : m_end(text.data() + text.size()), m_wanted(wanted), m_found(Find(text.data()))
    {}

    /// @return the first occurrence at or after `from`, or the end of the text. `from` never decreases
    ///   between calls.
    const Char* From(const Char* from)
    {
        if (m_found < from)
            m_found = Find(from);
        return m_found;
    }

private:
    const Char* Find(const Char* from) const
    {
        const Char* const found =
            std::char_traits<Char>::find(from, static_cast<std::size_t>(m_end - from), m_wanted);
        return found != nullptr ? found : m_end;
    }

    const Char* m_end;
    Char m_wanted;
    const Char* m_found;
};

/// Calls `visit` with each `Line` of a text. Only lines that end in a newline count: what follows the last
/// newline is not read.
template <class Char, class Visitor>
void ScanLines(std::basic_string_view<Char> text, Visitor&& visit)
{
    using View = std::basic_string_view<Char>;
    const auto between = [](const Char* begin, const Char* end) {
        return View(begin, static_cast<std::size_t>(end - begin));
    };
    const Char* const textEnd = text.data() + text.size();
    Finder<Char> newline(text, '\n');
    Finder<Char> bracket(text, '[');
    Finder<Char> equals(text, '=');

    const Char* end = nullptr;
    for (const Char* begin = text.data(); (end = newline.From(begin)) != textEnd; begin = end + 1) {
        Line<Char> line;
        line.Raw = between(begin, end + 1);
        line.Text = line.Raw;
        Trim(line.Text);
        if (line.Text.empty()) {
            visit(line);
            continue;
        }
        View rest = line.Text;
        const bool isHeader = bracket.From(begin) < end; // a "[" anywhere, even in the value of a key
        line.HasKey = equals.From(begin) < end;
        if (IsCommentCharacter(rest.front())) {
            if (!isHeader && !line.HasKey) {
                line.Kind = LineKind::Comment;
                visit(line);
                continue;
            }
            line.Commented = rest.front();
            rest.remove_prefix(1);
            Trim(rest);
        }
        if (isHeader) {
            rest.remove_prefix(1); // any character; in a well-formed header, the "["
            const std::size_t close = rest.find(']');
            line.Kind = close != View::npos ? LineKind::Header : LineKind::MalformedHeader;
            rest = line.Section = rest.substr(0, close);
            line.HasKey = equals.From(rest.data()) < rest.data() + rest.size();
        } else
            line.Kind = line.HasKey ? LineKind::Key : LineKind::Other;
        if (line.HasKey) {
            const Char* const split = equals.From(rest.data());
            line.Key = between(rest.data(), split);
            line.Value = between(split + 1, rest.data() + rest.size());
        }
        visit(line);
    }
}

/// Calls `visit` with the `RecordView` of each record of a text. Its `Comments` is the range of the text that
/// holds the comment lines; see `NormalizedComments`.
/// @throws std::out_of_range for a malformed header
template <class Char, class Visitor>
void Scan(std::basic_string_view<Char> text, Visitor&& visit)
{
    using View = std::basic_string_view<Char>;
    View section;
    View comments; // from the first pending comment to the newline of the last
    ScanLines(text, [&](const Line<Char>& line) {
        RecordView<Char> record = {{}, line.Commented, {}, line.Key, line.Value};
        switch (line.Kind) {
        case LineKind::Blank:
            return; // comments stay pending
        case LineKind::Comment: {
            const Char* const begin = comments.empty() ? line.Text.data() : comments.data();
            comments = {begin, static_cast<std::size_t>(line.Raw.data() + line.Raw.size() - begin)};
            return;
        }
        case LineKind::MalformedHeader:
            throw std::out_of_range("invalid string position");
        case LineKind::Header:
            section = line.Section;
            if (line.HasKey)
                comments = {}; // the comments above a header with "=" in its name are lost
            break;
        case LineKind::Key:
            break;
        case LineKind::Other: // makes an empty record, but not below a comment
            if (comments.empty())
                visit(record);
            return;
        }
        record.Section = section;
        record.Comments = comments;
        comments = {};
        visit(record);
    });
}

/// Calls `visit` with each line, trimmed, of a range of comment lines that `Scan` has found. The range may
/// also hold blank lines and lines that made no record; they are skipped.
template <class Char, class Visitor>
void EachComment(std::basic_string_view<Char> range, Visitor visit)
{
    for (std::size_t end = 0; (end = range.find('\n')) != range.npos; range.remove_prefix(end + 1)) {
        auto line = range.substr(0, end);
        Trim(line);
        if (!line.empty() && IsCommentCharacter(line.front()))
            visit(line);
    }
}

} // namespace ini
