#pragma once

/// @file
/// The grammar of INI files. This is its only reader; whatever the library knows of a file came through
/// `Scan`.

#include <stdexcept>
#include <string>
#include <string_view>

namespace ini {

/// One record as it stands in the scanned text; its views are valid as long as that text is.
template <class Char>
struct RecordView
{
    using View = std::basic_string_view<Char>;

    View Comments; ///< the stretch of text with the comment lines above the record; see `EachComment`
    Char Commented;
    View Section;
    View Key;
    View Value;
};

/// Removes the blanks of the format from both ends. No other character counts as white space.
template <class Char>
void TrimString(std::basic_string_view<Char>& text)
{
    const auto blank = [](Char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
}

template <class Char>
bool StartsComment(std::basic_string_view<Char> line)
{
    return line.front() == '#' || line.front() == ';';
}

/// Finds one character again and again in a text that is walked front to back, and looks at each stretch of
/// the text once: a character that is rare is searched for across many lines in one go.
template <class Char>
class Finder
{
public:
    Finder(std::basic_string_view<Char> text, Char wanted)
        : m_end(text.data() + text.size()), m_wanted(wanted), m_found(Find(text.data()))
    {}

    /// @return the first place at or after `from` where the character stands, or the end of the text. `from`
    ///   never goes back between calls.
    const Char* From(const Char* from)
    {
        if (m_found < from)
            m_found = Find(from);
        return m_found;
    }

private:
    const Char* Find(const Char* from) const
    {
        const Char* found =
            std::char_traits<Char>::find(from, static_cast<std::size_t>(m_end - from), m_wanted);
        return found != nullptr ? found : m_end;
    }

    const Char* m_end;
    Char m_wanted;
    const Char* m_found;
};

/// Reads a text from its first line to its last and calls `listener` with the `RecordView` of each record.
/// Only lines that end in a line feed count: what stands after the last one is not read.
/// @throws std::out_of_range for a header line without a "]" after its first character
template <class Char, class Listener>
void Scan(std::basic_string_view<Char> text, Listener&& listener)
{
    using View = std::basic_string_view<Char>;
    const auto between = [](const Char* begin, const Char* end) {
        return View(begin, static_cast<std::size_t>(end - begin));
    };
    const Char* const textEnd = text.data() + text.size();
    Finder<Char> lineEnd(text, '\n');
    Finder<Char> bracket(text, '[');
    Finder<Char> equals(text, '=');
    View section;
    View comments; // from the first pending comment line to the end of the last; empty when none is pending

    const Char* end = nullptr;
    for (const Char* begin = text.data(); (end = lineEnd.From(begin)) != textEnd; begin = end + 1) {
        View line = between(begin, end);
        TrimString(line);
        if (line.empty())
            continue; // and comments stay pending

        const bool isHeader = bracket.From(begin) < end; // a "[" anywhere, even in the value of a key
        const bool hasEquals = equals.From(begin) < end;
        RecordView<Char> record = {{}, ' ', {}, {}, {}};
        if (StartsComment(line)) {
            if (!isHeader && !hasEquals) {
                comments = between(comments.empty() ? line.data() : comments.data(), end + 1);
                continue;
            }
            record.Commented = line.front();
            line.remove_prefix(1);
            TrimString(line);
        }

        View keyLine = line;
        bool isKey = hasEquals;
        if (isHeader) {
            line.remove_prefix(1); // whatever stands there; in a well-formed header, the "["
            const std::size_t close = line.find(']');
            if (close == View::npos)
                throw std::out_of_range("invalid string position");
            section = line.substr(0, close);
            record.Section = section;
            record.Comments = comments;
            comments = {};
            keyLine = section;
            isKey = equals.From(section.data()) < section.data() + section.size();
        }
        if (isKey) { // also a header whose name holds a "=": its comments are lost
            const Char* const split = equals.From(keyLine.data());
            record.Section = section;
            record.Key = between(keyLine.data(), split);
            record.Value = between(split + 1, keyLine.data() + keyLine.size());
            record.Comments = comments;
            comments = {};
        }
        if (comments.empty()) // a line that is neither makes an empty record, but not below a comment
            listener(record);
    }
}

/// Calls `take` with each comment line, trimmed, in the `Comments` of a `RecordView`. Such a stretch of text
/// may hold blank lines and lines that made no record as well.
template <class Char, class Take>
void EachComment(std::basic_string_view<Char> stretch, Take take)
{
    for (std::size_t end = 0; (end = stretch.find('\n')) != stretch.npos; stretch.remove_prefix(end + 1)) {
        auto line = stretch.substr(0, end);
        TrimString(line);
        if (!line.empty() && StartsComment(line))
            take(line);
    }
}

} // namespace ini
