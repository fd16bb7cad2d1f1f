// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The grammar of the lines of INI files, read here and nowhere else.

#include "qmUtility/ini/INIRecord.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ini {

template <class Char>
using View = std::basic_string_view<Char>;

/// @return whether the character is white space, which is space, tab, LF and CR only.
template <class Char>
constexpr bool IsBlank(Char c) {
    return c <= ' ' && (c == ' ' || c == '\t' || c == '\n' || c == '\r');
}

/// @return the text without white space at its start.
template <class Char>
constexpr View<Char> TrimmedFront(View<Char> text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    return text;
}

/// @return the text without white space at its end.
template <class Char>
constexpr View<Char> TrimmedBack(View<Char> text) {
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// @return the text without white space at both ends.
template <class Char>
constexpr View<Char> Trimmed(View<Char> text) {
    return TrimmedFront(TrimmedBack(text));
}

template <class Char>
bool IsCommentCharacter(Char c) {
    return c == '#' || c == ';';
}

enum class LineKind : std::uint8_t {
    Blank,
    Comment,
    Header,
    MalformedHeader,  ///< without a "]" after its first character
    Key,
    Other,  ///< neither a comment nor a header nor a key
};

/// One line, as views into the text.
template <class Char>
struct Line {
    LineKind Kind = LineKind::Blank;
    bool HasKey = false;      ///< whether `Key` and `Value` of a header are set; either may be empty
    Char Commented = ' ';     ///< the character that comments out a header or key, else a space
    View<Char> Raw;           ///< the whole line with its newline
    View<Char> Section = {};  ///< name in a header
    View<Char> Key = {};  ///< of a key line; also of a header with "=" in its name, whose first part this is
    View<Char> Value = {};  ///< of the same lines

    bool IsActive() const { return Commented == ' '; }
    bool IsHeader() const { return Kind == LineKind::Header; }
    bool IsKey() const { return Kind == LineKind::Key; }
    bool IsComment() const { return Kind == LineKind::Comment; }
    bool IsActiveHeader() const { return IsHeader() && IsActive(); }
    bool IsActiveKey() const { return IsKey() && IsActive(); }
    View<Char> Text() const { return Trimmed(Raw); }
    /// @return the blanks in front of a line that is not blank.
    View<Char> Indentation() const { return Raw.substr(0, Raw.size() - TrimmedFront(Raw).size()); }
};

/// Finds occurrences of one character in a text that is read from front to back. It searches each part of the
/// text once: a rare character is searched for across many lines at a time.
template <class Char>
class Finder {
public:
    Finder(View<Char> text, Char wanted)
        : m_end(text.data() + text.size()), m_wanted(wanted), m_found(Find(text.data())) {}

    /// @return the first occurrence at or after `from`, which never decreases, or the end of the text.
    [[gnu::always_inline]] const Char* From(const Char* from) {
        if (m_found < from) m_found = Find(from);
        return m_found;
    }

private:
    const Char* Find(const Char* from) const {
        const Char* const found =
            std::char_traits<Char>::find(from, static_cast<std::size_t>(m_end - from), m_wanted);
        return found != nullptr ? found : m_end;
    }

    const Char* m_end;
    Char m_wanted;
    const Char* m_found;
};

/// @return the characters from one place to another in the same text.
template <class Char>
View<Char> Between(const Char* begin, const Char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// Reads one line in the syntax `Common`.
/// @param end of the line, where its newline is
template <class Char>
[[gnu::always_inline]] inline Line<Char> ReadCommon(View<Char> raw, const Char* end, Finder<Char>& equals) {
    const View<Char> text = Trimmed(raw);
    if (text.empty()) return {.Raw = raw};
    const bool isCommented = IsCommentCharacter(text.front());
    const View<Char> rest = isCommented ? TrimmedFront(text.substr(1)) : text;
    // A comment character and blanks: prose, unless what follows is all a header, or has a key of one word.
    const bool isStrict = isCommented && rest.data() != text.data() + 1;
    const Line<Char> none = {.Kind = isCommented ? LineKind::Comment : LineKind::Other, .Raw = raw};
    const Char commented = isCommented ? text.front() : Char(' ');

    if (!rest.empty() && rest.front() == '[') {
        const std::size_t close = rest.find(']');
        const View<Char> name = close != rest.npos ? Trimmed(rest.substr(1, close - 1)) : View<Char>();
        if (!name.empty()) {
            if (isCommented && (IsCommentCharacter(name.front()) || (isStrict && close != rest.size() - 1)))
                return none;
            return {.Kind = LineKind::Header, .Commented = commented, .Raw = raw, .Section = name};
        }
    }
    const Char* const split = equals.From(rest.data());
    if (split >= rest.data() + rest.size()) return none;
    const View<Char> key = TrimmedBack(Between(rest.data(), split));
    if (key.empty() || (isCommented && (IsCommentCharacter(key.front()) ||
                                        (isStrict && std::any_of(key.begin(), key.end(), IsBlank<Char>)))))
        return none;
    View<Char> value = TrimmedFront(Between(split + 1, rest.data() + rest.size()));
    if (value.empty()) {  // it stands behind the blanks, before the carriage returns that end the line
        while (end[-1] == '\r') --end;
        value = Between(end, end);
    }
    return {.Kind = LineKind::Key, .Commented = commented, .Raw = raw, .Key = key, .Value = value};
}

/// Reads one line in the syntax `Parser`.
/// @param end of the line, where its newline is
template <class Char>
[[gnu::always_inline]] inline Line<Char> ReadParser(View<Char> raw, const Char* end, Finder<Char>& bracket,
                                                    Finder<Char>& equals) {
    const View<Char> text = Trimmed(raw);
    if (text.empty()) return {.Raw = raw};
    const bool isHeader = bracket.From(raw.data()) < end;  // a "[" anywhere, even in the value of a key
    bool hasKey = equals.From(raw.data()) < end;
    const bool isCommented = IsCommentCharacter(text.front());
    View<Char> rest = isCommented ? TrimmedFront(text.substr(1)) : text;
    LineKind kind = hasKey ? LineKind::Key : isCommented ? LineKind::Comment : LineKind::Other;
    View<Char> section;
    if (isHeader) {
        rest.remove_prefix(1);  // any character; in a well-formed header, the "["
        const std::size_t close = rest.find(']');
        kind = close != View<Char>::npos ? LineKind::Header : LineKind::MalformedHeader;
        rest = section = rest.substr(0, close);
        hasKey = equals.From(rest.data()) < rest.data() + rest.size();
    }
    Line<Char> line = {.Kind = kind, .HasKey = hasKey, .Raw = raw, .Section = section};
    if (isCommented && kind != LineKind::Comment) line.Commented = text.front();
    if (hasKey) {
        const Char* const split = equals.From(rest.data());
        line.Key = Between(rest.data(), split);
        line.Value = Between(split + 1, rest.data() + rest.size());
    }
    return line;
}

/// Calls `visit` with each `Line` of a text. A last line without a newline counts in `Common` only.
template <INISyntax Syntax, class Char, class Visitor>
void ScanLines(View<Char> whole, Visitor&& visit) {
    constexpr bool isCommon = Syntax == INISyntax::Common;
    const Char* const textEnd = whole.data() + whole.size();
    Finder<Char> newline(whole, '\n');
    Finder<Char> bracket(isCommon ? whole.substr(0, 0) : whole, '[');
    Finder<Char> equals(whole, '=');

    for (const Char* begin = whole.data(); begin != textEnd;) {
        const Char* const end = newline.From(begin);
        if (!isCommon && end == textEnd) return;
        const auto raw = Between(begin, end == textEnd ? end : end + 1);
        begin += raw.size();
        if constexpr (isCommon)
            visit(ReadCommon(raw, end, equals));
        else
            visit(ReadParser(raw, end, bracket, equals));
    }
}

/// Calls `visit` with each `Line` of a text in a syntax.
template <class Char, class Visitor>
void ScanLines(INISyntax syntax, View<Char> text, Visitor&& visit) {
    if (syntax == INISyntax::Common)
        ScanLines<INISyntax::Common>(text, visit);
    else
        ScanLines<INISyntax::Parser>(text, visit);
}

/// @return how many characters at the start of a text are a byte order mark: U+FEFF or its encoding.
template <class Char>
std::size_t ByteOrderMarkSize(View<Char> text) {
    constexpr Char bytes[] = {Char(0xEF), Char(0xBB), Char(0xBF)};
    if (text.substr(0, 3) == View<Char>(bytes, 3)) return 3;
    return sizeof(Char) > 1 && !text.empty() && text.front() == Char(0xFEFF) ? 1 : 0;
}

}  // namespace ini
