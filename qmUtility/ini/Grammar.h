// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The grammar of INI files, read here and nowhere else, in two layers: `ScanLines` classifies the lines of a
/// text, `Scan` makes records of them.

#include "qmUtility/ini/INIParser.h"

#include <stdexcept>
#include <string_view>
#include <utility>

namespace ini {

template <class Char>
using RecordView = INIParser::BasicRecordView<Char>;

/// @return the text without white space at both ends. Of all characters only these four count as white space.
template <class Char>
std::basic_string_view<Char> Trimmed(std::basic_string_view<Char> text)
{
    const auto isBlank = [](Char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
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
void ScanLines(std::basic_string_view<Char> whole, Visitor&& visit)
{
    using View = std::basic_string_view<Char>;
    const auto between = [](const Char* begin, const Char* end) {
        return View(begin, static_cast<std::size_t>(end - begin));
    };
    const Char* const textEnd = whole.data() + whole.size();
    Finder<Char> newline(whole, '\n');
    Finder<Char> bracket(whole, '[');
    Finder<Char> equals(whole, '=');

    const Char* end = nullptr;
    for (const Char* begin = whole.data(); (end = newline.From(begin)) != textEnd; begin = end + 1) {
        const View raw = between(begin, end + 1);
        const View text = Trimmed(raw);
        // The line is put together at the end: filled in step by step, it would be in memory and not in
        // registers.
        if (text.empty()) {
            visit(Line<Char>{LineKind::Blank, raw, text, Char(' '), {}, {}, {}, false});
            continue;
        }
        const bool isHeader = bracket.From(begin) < end; // a "[" anywhere, even in the value of a key
        bool hasKey = equals.From(begin) < end;
        const bool isCommented = IsCommentCharacter(text.front());
        View rest = isCommented ? Trimmed(text.substr(1)) : text;
        LineKind kind = hasKey ? LineKind::Key : isCommented ? LineKind::Comment : LineKind::Other;
        View section;
        if (isHeader) {
            rest.remove_prefix(1); // any character; in a well-formed header, the "["
            const std::size_t close = rest.find(']');
            kind = close != View::npos ? LineKind::Header : LineKind::MalformedHeader;
            rest = section = rest.substr(0, close);
            hasKey = equals.From(rest.data()) < rest.data() + rest.size();
        }
        const Char* const split = hasKey ? equals.From(rest.data()) : nullptr;
        visit(Line<Char>{kind, raw, text, isCommented ? text.front() : Char(' '), section,
                         hasKey ? between(rest.data(), split) : View(),
                         hasKey ? between(split + 1, rest.data() + rest.size()) : View(), hasKey});
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
        if (line.Kind == LineKind::Blank)
            return; // comments stay pending
        if (line.Kind == LineKind::Comment) {
            const Char* const begin = comments.empty() ? line.Text.data() : comments.data();
            comments = {begin, static_cast<std::size_t>(line.Raw.data() + line.Raw.size() - begin)};
            return;
        }
        if (line.Kind == LineKind::MalformedHeader)
            throw std::out_of_range("invalid string position");
        if (line.Kind == LineKind::Other && !comments.empty())
            return; // else it makes a record, empty in all its fields
        if (line.Kind == LineKind::Header) {
            section = line.Section;
            if (line.HasKey)
                comments = {}; // the comments above a header with "=" in its name are lost
        }
        visit(RecordView<Char>{std::exchange(comments, {}), line.Commented,
                               line.Kind == LineKind::Other ? View() : section, line.Key, line.Value});
    });
}

/// Calls `visit` with each line, trimmed, of a range of comment lines that `Scan` has found. The range may
/// also hold blank lines and lines that made no record; they are skipped.
template <class Char, class Visitor>
void EachComment(std::basic_string_view<Char> range, Visitor visit)
{
    for (std::size_t end = 0; (end = range.find('\n')) != range.npos; range.remove_prefix(end + 1)) {
        const auto line = Trimmed(range.substr(0, end));
        if (!line.empty() && IsCommentCharacter(line.front()))
            visit(line);
    }
}

} // namespace ini
