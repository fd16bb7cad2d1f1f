// SPDX-License-Identifier: MIT
#include "qmUtility/ini/DocumentLines.h"
#include "qmUtility/ini/INIDocument.h"

using ini::DocumentLine;
using ini::LineKind;
using ini::LineNumber;
using ini::View;

namespace {

template <class Char>
using Lines = ini::DocumentLines<Char>;

/// @return whether a line that takes the place of another is still that record.
template <class Char>
bool IsSame(const DocumentLine<Char>& a, const DocumentLine<Char>& b) {
    return a.Kind == b.Kind && a.HasKey == b.HasKey && a.Key == b.Key && a.Section == b.Section;
}

/// @return whether a line that is ignored continues the value of a key, active or not. Such a value cannot be
///   set, and its key cannot be commented out.
template <class Char>
bool HasIgnoredContinuation(const Lines<Char>& lines, LineNumber key) {
    const LineNumber end = lines.AfterContinuations(key);
    for (LineNumber line = lines.Next(key); line != end; line = lines.Next(line))
        if (lines[line].Kind == LineKind::Other) return true;
    return false;
}

/// @return the line with a part of its text replaced.
template <class Char>
std::optional<DocumentLine<Char>> Replaced(Lines<Char>& lines, LineNumber line, View<Char> part,
                                           View<Char> text) {
    const View<Char> raw = lines[line].Raw;
    return lines.Make({ini::Between(raw.data(), part.data()), text,
                       ini::Between(part.data() + part.size(), raw.data() + raw.size())});
}

/// @param commented the character that comments the line out, or a space to make it active
template <class Char>
std::optional<DocumentLine<Char>> Commented(Lines<Char>& lines, LineNumber line, Char commented) {
    const View<Char> indentation = lines[line].Indentation();
    View<Char> rest = lines[line].Raw.substr(indentation.size());
    if (commented == ' ') {
        rest.remove_prefix(1);
        while (ini::IsBlank(rest.front())) rest.remove_prefix(1);
        return lines.Make({indentation, rest});
    }
    return lines.Make({indentation, View<Char>(&commented, 1), rest});
}

/// Makes sure that lines can be added at the end.
template <class Char>
void EndLastLine(Lines<Char>& lines, typename Lines<Char>::Changes& changes) {
    const LineNumber last = lines.Last();
    if (last != 0 && !lines[last].Raw.ends_with('\n'))
        changes.push_back({last, true, lines.Make({lines[last].Raw, lines.Newline()})});
}

/// Adds the lines of a new section at the end.
/// @return whether its header would be read back as asked.
template <class Char>
bool AppendSection(Lines<Char>& lines, View<Char> section, typename Lines<Char>::Changes& changes) {
    constexpr Char open = '[';
    constexpr Char close = ']';
    EndLastLine(lines, changes);
    if (lines.Last() != 0 && lines[lines.Last()].Kind != LineKind::Blank)
        changes.push_back({0, false, lines.Make({lines.Newline()})});
    auto header = lines.Make({View<Char>(&open, 1), section, View<Char>(&close, 1), lines.Newline()});
    const bool isRead = header && header->IsActiveHeader() && !header->HasKey && header->Section == section;
    changes.push_back({0, false, std::move(header)});
    return isRead;
}

/// Where a new key goes, and how its line is laid out.
template <class Char>
struct Place {
    LineNumber Below = 0;  ///< the line that the new one is put in front of
    View<Char> Indentation = {};
    View<Char> Equals = {};  ///< the "=" with the blanks around it
};

/// Finds the place of a new key in a section that is there.
/// @param above the line that it goes below if it can
template <class Char>
Place<Char> PlaceBelow(const Lines<Char>& lines, LineNumber above, View<Char> section) {
    // The nearest key above, else the first one. Lines that continue a key do not count.
    const auto isModel = [&](LineNumber line) {
        return lines[line].IsActiveKey() && lines.SectionOf(line) == section && !lines[line].IsContinuation;
    };
    LineNumber model = 0;
    if (lines.FindLastKey(section) != 0) {
        for (model = above; model != 0 && !isModel(model);) model = lines.Previous(model);
        if (model == 0)
            for (model = lines.Next(above); model != 0 && !isModel(model);) model = lines.Next(model);
    }
    const DocumentLine<Char>& layout = lines[model != 0 ? model : above];
    Place<Char> place = {lines.Next(above), layout.Indentation()};
    if (layout.IsKey() && lines.IsCommon())  // else the blanks belong to the names
        place.Equals = ini::Between(layout.Key.data() + layout.Key.size(), layout.Value.data());
    while (lines[place.Below].IsContinuation || lines.Continues(place.Below, place.Indentation))
        place.Below = lines.Next(place.Below);
    return place;
}

bool IsValid(INICommentChar character) {
    return character == INICommentChar::Hash || character == INICommentChar::Semicolon;
}

/// Lines that move as one when they are sorted, as positions in the order of all lines.
template <class Char>
struct Piece {
    std::size_t Group;  ///< which it stays in
    View<Char> Name;
    std::size_t Begin;
    std::size_t End;
};

/// Sorts pieces, given in file order, by name inside their groups. What stands between them keeps its place.
template <class Char>
void SortPieces(std::vector<LineNumber>& order, const std::vector<Piece<Char>>& pieces, bool descending) {
    auto sorted = pieces;
    std::stable_sort(sorted.begin(), sorted.end(), [=](const Piece<Char>& a, const Piece<Char>& b) {
        return a.Group != b.Group ? a.Group < b.Group : descending ? b.Name < a.Name : a.Name < b.Name;
    });
    const std::vector<LineNumber> old = order;
    auto to = order.begin();
    std::size_t at = 0;
    for (std::size_t i = 0; i != pieces.size(); ++i) {
        to = std::copy(old.data() + at, old.data() + pieces[i].Begin, to);
        to = std::copy(old.data() + sorted[i].Begin, old.data() + sorted[i].End, to);
        at = pieces[i].End;
    }
}

}  // namespace

template <class Char>
bool BasicINIDocument<Char>::SetValue(View key, View value, View section) {
    Lines& lines = EditLines();
    if (key.empty()) return false;
    if (const LineNumber line = lines.FindKey(key, section, true); line != 0) {
        if (HasIgnoredContinuation(lines, line)) return false;
        auto made = Replaced(lines, line, lines[line].Value, value);
        return made && IsSame(*made, lines[line]) && made->IsActive() && made->Value == value &&
               lines.Commit(line, true, std::move(made));
    }

    typename Lines::Changes changes;
    Place<Char> place;
    bool isAtTop = false;
    LineNumber above = lines.FindKey(key, section, false);
    if (above == 0) above = lines.FindLastKey(section);
    if (above == 0) above = lines.FindHeader(section);
    if (above != 0)
        place = PlaceBelow(lines, above, section);
    else if (section.empty()) {
        LineNumber header = lines.First();
        while (header != 0 && !lines[header].IsHeader()) header = lines.Next(header);
        isAtTop = header != 0;
        place.Below = isAtTop ? lines.FirstComment(header) : 0;
        if (const LineNumber last = lines.Previous(place.Below); lines[last].Kind != LineKind::Blank)
            place.Indentation = lines[last].Indentation();
    } else if (!AppendSection(lines, section, changes))
        return false;

    if (place.Below == 0 && changes.empty()) EndLastLine(lines, changes);
    constexpr Char equals = '=';
    auto made = lines.Make({place.Indentation, key, place.Equals.empty() ? View(&equals, 1) : place.Equals,
                            value, lines.Newline()});
    if (!made || !made->IsActiveKey() || made->Key != key || made->Value != value) return false;
    changes.push_back({place.Below, false, std::move(made)});
    if (isAtTop) changes.push_back({place.Below, false, lines.Make({lines.Newline()})});
    return lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::AddSection(View section) {
    Lines& lines = EditLines();
    typename Lines::Changes changes;
    return !section.empty() && !SectionExists(section) && AppendSection(lines, section, changes) &&
           lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::DeleteRecord(View key, View section) {
    Lines& lines = EditLines();
    const LineNumber record = key.empty() ? 0 : lines.FindKey(key, section, true);
    if (record == 0 || lines[record].IsHeader())  // a header with a key begins the section of other records
        return false;
    const LineNumber end = lines.AfterContinuations(record);
    typename Lines::Changes changes;
    for (LineNumber line = lines.FirstComment(record); line != end; line = lines.Next(line)) {
        if (line != record && lines[line].IsKey()) return false;
        changes.push_back({line, true});
    }
    return lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::DeleteSection(View section) {
    Lines& lines = EditLines();
    if (!lines.HasSection(section)) return false;
    typename Lines::Changes changes;
    for (LineNumber line = lines.First(); line != 0;) {
        LineNumber end = lines.Next(line);
        const bool isHeader = lines[line].IsActiveHeader() && lines[line].Section == section;
        if (isHeader) {
            while (end != 0 && !lines[end].IsHeader()) end = lines.Next(end);
            end = end != 0 ? lines.FirstComment(end) : 0;
        } else if (lines[line].IsActiveKey() && lines.SectionOf(line) == section)
            end = lines.AfterContinuations(line);  // above the first header, or below a commented-out one
        else {
            line = end;
            continue;
        }
        for (line = lines.FirstComment(line); line != end; line = lines.Next(line))
            changes.push_back({line, true});
    }
    return lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::RenameSection(View from, View to) {
    Lines& lines = EditLines();
    if (lines.FindHeader(from) == 0 || to.empty() || SectionExists(to)) return false;
    typename Lines::Changes changes;
    for (LineNumber line = lines.First(); line != 0; line = lines.Next(line)) {
        if (!lines[line].IsActiveHeader() || lines[line].Section != from) continue;
        auto made = Replaced(lines, line, lines[line].Section, to);
        if (!made || !made->IsActiveHeader() || made->HasKey || made->Section != to) return false;
        changes.push_back({line, true, std::move(made)});
    }
    return lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::CommentRecord(INICommentChar character, View key, View section) {
    return IsValid(character) && !key.empty() && ChangeCommented(static_cast<Char>(character), key, section);
}

template <class Char>
bool BasicINIDocument<Char>::UnCommentRecord(View key, View section) {
    return !key.empty() && ChangeCommented(Char(' '), key, section);
}

template <class Char>
bool BasicINIDocument<Char>::CommentSection(INICommentChar character, View section) {
    return IsValid(character) && ChangeCommented(static_cast<Char>(character), {}, section);
}

template <class Char>
bool BasicINIDocument<Char>::UnCommentSection(View section) {
    return ChangeCommented(Char(' '), {}, section);
}

/// @param key of the record; empty for the whole section
template <class Char>
bool BasicINIDocument<Char>::ChangeCommented(Char commented, View key, View section) {
    Lines& lines = EditLines();
    const LineNumber record = key.empty() ? 0 : lines.FindKey(key, section, commented != ' ');
    typename Lines::Changes changes;
    View active;  // the section of active keys, afterwards
    for (LineNumber line = lines.First(); line != 0; line = lines.Next(line)) {
        const DocumentLine<Char>& old = lines[line];
        if (!old.IsHeader() && !old.IsKey()) continue;
        const bool isMeant = key.empty()
                                 ? old.IsActive() == (commented != ' ') && lines.SectionOf(line) == section
                                 : line == record;
        const bool isActive = isMeant ? commented == ' ' : old.IsActive();
        if (old.IsHeader() && (isActive || !lines.IsCommon())) active = old.Section;
        if ((isActive ? active : lines[old.Nearest].Section) != (isMeant ? section : lines.SectionOf(line)))
            return false;  // it would change its section
        if (!isMeant) continue;
        auto made = Commented(lines, line, commented);
        if (!made || !IsSame(*made, old) || made->Commented != commented ||
            (old.IsKey() && HasIgnoredContinuation(lines, line)))
            return false;
        changes.push_back({line, true, std::move(made)});
    }
    return !changes.empty() && lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::SetRecordComments(View comments, View key, View section) {
    const Lines& lines = EditLines();
    return !key.empty() && SetComments(lines.FindKey(key, section, true), comments);
}

template <class Char>
bool BasicINIDocument<Char>::SetSectionComments(View comments, View section) {
    const Lines& lines = EditLines();
    return SetComments(lines.FindHeader(section), comments);
}

template <class Char>
bool BasicINIDocument<Char>::SetComments(std::uint32_t record, View comments) {
    Lines& lines = EditLines();
    if (record == 0) return false;
    String text(comments);
    if (!text.empty() && text.back() != '\n') text += Char('\n');
    if (text == CommentsOf(lines, record)) return true;
    // Nothing comes between a key and its continuation; `Parser` loses the comments of a header with a key.
    if (!text.empty() && (lines[record].IsContinuation || (lines[record].IsHeader() && lines[record].HasKey)))
        return false;

    typename Lines::Changes changes;
    const LineNumber first = lines.FirstComment(record);
    const View indentation = lines[record].Indentation();
    for (View rest = text; !rest.empty();) {
        const View line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(line.size() + 1);
        auto made = lines.Make({indentation, line, lines.Newline()});
        if (!made || !made->IsComment() || made->Text() != line) return false;
        changes.push_back({first, false, std::move(made)});
    }
    for (LineNumber line = first; line != record; line = lines.Next(line)) {
        if (lines[line].IsComment())
            changes.push_back({line, true});
        else if (text.empty() && lines[line].Kind == LineKind::Other)
            return false;  // without a comment above, it is a record
    }
    return lines.Commit(std::move(changes));
}

template <class Char>
bool BasicINIDocument<Char>::Sort(bool descending) {
    const Lines& lines = EditLines();
    std::vector<LineNumber> order;
    std::size_t end = 0;  // of the last record: what is below stays
    for (LineNumber line = lines.First(); line != 0; line = lines.Next(line)) {
        order.push_back(line);
        if (lines[line].IsRecord || lines[line].IsContinuation) end = order.size();
    }
    const auto firstComment = [&](std::size_t at) {
        for (const LineNumber first = lines.FirstComment(order[at]); order[at] != first;) --at;
        return at;
    };
    // In `Common`, a commented-out key that a comment line follows is taken for a line of the comment.
    const auto isInComment = [&](std::size_t at) {
        return lines.IsCommon() && lines[order[at]].IsKey() && !lines[order[at]].IsActive() &&
               at + 1 != order.size() && lines[order[at + 1]].IsComment();
    };

    std::vector<Piece<Char>> keys;
    std::vector<Piece<Char>> sections;
    std::size_t headers = 0;
    for (std::size_t i = 0; i != end; ++i) {
        const DocumentLine<Char>& line = lines[order[i]];
        if (line.IsHeader()) {
            ++headers;
            if (!line.IsActive() && lines.IsCommon()) continue;
            const std::size_t begin = firstComment(i);
            if (!sections.empty()) sections.back().End = begin;
            sections.push_back({0, line.Section, begin, end});
        } else if (line.IsKey() && !line.Key.empty() && !line.IsContinuation && !isInComment(i)) {
            std::size_t begin = firstComment(i);
            while (begin != 0 && isInComment(begin - 1)) begin = firstComment(begin - 1);
            keys.push_back({headers, line.Key, begin, i + 1});
        } else if (line.IsContinuation)
            keys.back().End = i + 1;
    }
    SortPieces(order, keys, descending);
    for (Piece<Char>& section : sections) {
        const std::size_t next = section.End;
        while (lines[order[section.End - 1]].Kind == LineKind::Blank) --section.End;
        if (lines[order[section.End - 1]].IsComment() && section.End != next)
            ++section.End;  // keeps the comment apart from the header that comes next
    }
    SortPieces(order, sections, descending);
    return EditLines().Arrange(order);
}

template class BasicINIDocument<char>;
template class BasicINIDocument<wchar_t>;
