// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The lines of a document: a linked list, what each line means where it stands, and an index of names.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/platform/File.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ini {

/// A line in its list. It stays the same while lines are inserted and erased around it; 0 is the end of the
/// list.
using LineNumber = std::uint32_t;

/// A line of a document. It is small because loading a large file is bound by the memory that it fills.
template <class Char>
class DocumentLine
{
public:
    using View = std::basic_string_view<Char>;

    DocumentLine() = default; ///< the end of a list
    explicit DocumentLine(const Line<Char>& line)
        : m_begin(line.Raw.data()), m_size(To32(line.Raw.size())),
          Commented(static_cast<char>(line.Commented)), Kind(line.Kind), HasKey(line.HasKey)
    {
        const View name = IsHeader() ? line.Section : line.Key;
        if (name.data() == nullptr)
            return;
        m_name = static_cast<std::uint32_t>(name.data() - m_begin);
        m_nameSize = static_cast<std::uint32_t>(name.size());
        if (line.Value.data() == nullptr)
            return;
        m_value = static_cast<std::uint32_t>(line.Value.data() - m_begin);
        m_valueSize = static_cast<std::uint32_t>(line.Value.size());
    }

    bool IsActive() const { return Commented == ' '; }
    bool IsHeader() const { return Kind == LineKind::Header; }
    bool IsActiveHeader() const { return IsHeader() && IsActive(); }
    bool IsKey() const { return Kind == LineKind::Key; }
    bool IsActiveKey() const { return IsKey() && IsActive(); }
    bool IsComment() const { return Kind == LineKind::Comment; }

    View Raw() const { return {m_begin, m_size}; } ///< the whole line with its newline
    View Text() const { return Trimmed(Raw()); }
    View Indentation() const { return Between(m_begin, Text().data()); }
    View Name() const { return {m_begin + m_name, m_nameSize}; } ///< of a section, in a header
    View Value() const { return {m_begin + m_value, m_valueSize}; }

    /// @return the key of a key line; also of a header with "=" in its name, whose first part it is.
    View Key() const
    {
        return !IsHeader() ? Name() : HasKey ? Name().substr(0, Name().size() - m_valueSize - 1) : View();
    }

    /// @return the header of the section that the record of this line has, 0 above the first header.
    LineNumber Header() const { return IsActive() ? NearestActive : Nearest; }

    /// @throws std::length_error
    static std::uint32_t To32(std::size_t size)
    {
        if (size > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("an INI file is too large");
        return static_cast<std::uint32_t>(size);
    }

private:
    const Char* m_begin = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_name = 0; ///< where it begins
    std::uint32_t m_nameSize = 0;
    std::uint32_t m_value = 0; ///< where it begins
    std::uint32_t m_valueSize = 0;

public:
    LineNumber Previous = 0;
    LineNumber Next = 0;
    LineNumber Nearest = 0;       ///< the nearest header above, active or not; of a header, itself
    LineNumber NearestActive = 0; ///< the header of the section that an active record has here
    char Commented = ' ';         ///< see `Line`
    LineKind Kind = LineKind::Blank;
    bool HasKey : 1 = false;         ///< see `Line`
    bool IsRecord : 1 = false;       ///< whether the line makes a record
    bool IsContinuation : 1 = false; ///< whether the line continues an active key above
};

/// A line that is not in a text that was loaded.
template <class Char>
struct NewLine : DocumentLine<Char>
{
    std::unique_ptr<Char[]> Own; ///< its text
};

/// The lines of a document, in a linked list.
///
/// Several threads may search a list that none changes: the index is made by the first search that needs it.
template <class Char>
class DocumentLines
{
public:
    using View = std::basic_string_view<Char>;
    using DocLine = DocumentLine<Char>;

    /// An edit at a line: it is erased, replaced, or gets a new line in front of it.
    struct Change
    {
        LineNumber At = 0;
        bool IsErased = false;                  ///< whether the line goes
        std::optional<NewLine<Char>> Made = {}; ///< the line that comes
    };
    using Changes = std::vector<Change>; ///< in the order of the lines

    /// Reads a text.
    /// @throws INIFormatError for a malformed header
    DocumentLines(INISyntax syntax, platform::Buffer<Char> text) : m_syntax(syntax), m_text(std::move(text))
    {
        View whole = m_text;
        if (IsCommon())
            m_mark = whole.substr(0, ByteOrderMarkSize(whole));
        whole.remove_prefix(m_mark.size());
        constexpr std::size_t usualLine = 24; // less than in most files, so that the list seldom grows
        m_lines.reserve(whole.size() / usualLine + 2);
        platform::ExpectUse(m_lines.data(), m_lines.capacity() * sizeof(DocLine));
        Context context;
        Scan(whole, [&](const Line<Char>& scanned) {
            const LineNumber number = DocLine::To32(m_lines.size());
            if (scanned.Kind == LineKind::MalformedHeader)
                throw INIFormatError(number);
            DocLine& line = m_lines.emplace_back(scanned);
            line.Previous = number - 1;
            line.Next = number + 1;
            Place(number, scanned.Text, context);
        });
        m_lines.front().Previous = static_cast<LineNumber>(m_lines.size() - 1);
        m_lines.front().Next = m_lines.size() > 1 ? 1 : 0;
        m_lines.back().Next = 0;
        const View last = m_lines.back().Raw();
        m_rest = last.empty() ? whole : Between(last.data() + last.size(), whole.data() + whole.size());
    }

    DocumentLines(const DocumentLines&) = delete;
    DocumentLines& operator=(const DocumentLines&) = delete;
    ~DocumentLines() { DropIndex(); }

    INISyntax Syntax() const { return m_syntax; }
    bool IsCommon() const { return m_syntax == INISyntax::Common; }

    std::basic_string<Char> Text() const
    {
        std::size_t size = m_mark.size() + m_rest.size();
        for (LineNumber line = First(); line != 0; line = Next(line))
            size += m_lines[line].Raw().size();
        std::basic_string<Char> text;
        text.reserve(size);
        platform::ExpectUse(text.data(), size * sizeof(Char));
        text += m_mark;
        for (LineNumber line = First(); line != 0; line = Next(line))
            text += m_lines[line].Raw();
        text += m_rest;
        return text;
    }

    const DocLine& operator[](LineNumber line) const { return m_lines[line]; }
    LineNumber First() const { return Next(0); }
    LineNumber Last() const { return Previous(0); }
    LineNumber Next(LineNumber line) const { return m_lines[line].Next; }
    LineNumber Previous(LineNumber line) const { return m_lines[line].Previous; }

    /// @return the name of the section that the record of this line has.
    View SectionOf(LineNumber line) const { return m_lines[m_lines[line].Header()].Name(); }
    /// @return the name of the section that an active record would have here.
    View ActiveSectionOf(LineNumber line) const { return m_lines[m_lines[line].NearestActive].Name(); }

    /// @return the first line of this key, or 0.
    /// @param section that the record has, or would have if it were active
    LineNumber FindKey(View key, View section, bool isActive) const
    {
        const auto isMatch = [&](LineNumber line) {
            return m_lines[line].IsActive() == isActive && m_lines[line].Key() == key &&
                   ActiveSectionOf(line) == section;
        };
        LineNumber line = 0;
        if (m_isSearched.load(std::memory_order_relaxed) || m_isSearched.exchange(true)) {
            Index& index = GetIndex();
            for (line = index.Chain(key, section); line != 0 && !isMatch(line);)
                line = index.Next[line];
        } else { // a single search takes less time than the index
            for (line = First(); line != 0 && !isMatch(line);)
                line = Next(line);
        }
        return line;
    }

    /// @return the first active header, or 0.
    LineNumber FindHeader(View section) const
    {
        LineNumber first = 0;
        VisitHeaders(section, [&](LineNumber header) {
            first = m_lines[header].IsActive() ? header : 0;
            return first == 0;
        });
        return first;
    }
    /// @return whether there is an active header, or a key above the first header.
    bool HasSection(View section) const
    {
        return FindHeader(section) != 0 || (section.empty() && GetIndex().LastKey[0] != 0);
    }
    /// @return the last active key, or 0.
    LineNumber FindLastKey(View section) const
    {
        const std::vector<LineNumber>& lastKeys = GetIndex().LastKey;
        LineNumber last = section.empty() ? lastKeys[0] : 0;
        VisitHeaders(section, [&](LineNumber header) {
            last = lastKeys[header] != 0 ? lastKeys[header] : last;
            return true;
        });
        return last;
    }

    /// @return the first of the comment lines of a record, or its own line.
    LineNumber FirstComment(LineNumber record) const
    {
        LineNumber first = record;
        for (LineNumber line = Previous(record); line != 0; line = Previous(line))
            if (m_lines[line].IsComment())
                first = line;
            else if (IsCommon() || m_lines[line].IsRecord)
                break;
        return first;
    }

    /// @return whether a line would continue an active key with this indentation directly above it.
    bool Continues(LineNumber line, View indentation) const
    {
        return IsRun(m_lines[line]) && m_lines[line].Indentation().size() > indentation.size();
    }

    /// @return the line below those that continue a line, or would if it were active.
    LineNumber AfterContinuations(LineNumber line) const
    {
        LineNumber after = Next(line);
        while (Continues(after, m_lines[line].Indentation()))
            after = Next(after);
        return after;
    }

    /// @return the newline that new lines get.
    View Newline() const
    {
        static constexpr Char crLf[] = {'\r', '\n'};
        const View first = m_lines[First()].Raw();
        const bool isCrLf =
            first.ends_with('\n') ? first.ends_with(View(crLf, 2)) : platform::Newline.size() == 2;
        return View(crLf, 2).substr(isCrLf ? 0 : 1);
    }

    /// @return a line of these pieces of text, to be part of a change; nothing when they do not make one
    ///   line.
    std::optional<NewLine<Char>> Make(std::initializer_list<View> pieces)
    {
        std::size_t size = 0;
        for (const View piece : pieces)
            size += piece.size();
        auto own = std::make_unique_for_overwrite<Char[]>(size);
        Char* end = own.get();
        for (const View piece : pieces)
            end = std::copy(piece.begin(), piece.end(), end);

        std::optional<NewLine<Char>> line;
        const View text(own.get(), size);
        if (IsCommon() && text.find(Char()) != text.npos)
            return line;
        Scan(text, [&](const Line<Char>& scanned) {
            if (scanned.Raw.size() == size && scanned.Kind != LineKind::MalformedHeader)
                line = {DocLine(scanned), std::move(own)};
        });
        return line;
    }

    /// Makes all changes, at least one, or none when it throws.
    /// @return false, with nothing changed, when the text would then begin with a byte order mark.
    bool Commit(Changes changes)
    {
        auto atFirst = changes.begin();
        LineNumber first = First();
        for (; atFirst != changes.end() && atFirst->At == first && !atFirst->Made; ++atFirst)
            first = Next(first);
        const bool isMade = atFirst != changes.end() && atFirst->At == first;
        if (IsMark(isMade ? atFirst->Made->Raw() : m_lines[first].Raw()))
            return false;

        const std::size_t size = m_lines.size() + changes.size();
        if (size > m_lines.capacity())
            m_lines.reserve(2 * size);
        m_own.resize(size);
        if (Index* const index = m_index) {
            index->Next.resize(size);
            index->LastKey.resize(size);
        }
        // From here on nothing throws.
        const LineNumber above = Previous(changes.front().At);
        LineNumber below = 0;
        bool areSectionsMoved = false;
        bool areContinuationsMoved = false;
        for (Change& change : changes) {
            const DocLine& old = m_lines[change.At];
            const bool isHeader = change.Made ? change.Made->IsHeader() : old.IsHeader();
            areSectionsMoved = areSectionsMoved || (isHeader && change.At != 0); // not by one at the end
            areContinuationsMoved = areContinuationsMoved || !change.IsErased || !change.Made ||
                                    IsRun(*change.Made) != IsRun(old) ||
                                    change.Made->Indentation().size() != old.Indentation().size();
            below = change.IsErased ? Next(change.At) : change.At;
            if (!change.IsErased)
                Insert(change.At, std::move(*change.Made));
            else if (change.Made)
                Replace(change.At, std::move(*change.Made));
            else
                Erase(change.At);
        }
        if (areSectionsMoved)
            PlaceAll();
        else if (areContinuationsMoved)
            PlaceContinuations(Next(above), below);
        return true;
    }

    /// Makes one change.
    bool Commit(LineNumber at, bool isErased, std::optional<NewLine<Char>> made)
    {
        Changes changes;
        changes.push_back({at, isErased, std::move(made)});
        return Commit(std::move(changes));
    }

    /// Puts the lines, all of them, in this order; fails as `Commit` does.
    bool Arrange(const std::vector<LineNumber>& order)
    {
        if (order.empty())
            return true;
        if (IsMark(m_lines[order.front()].Raw()))
            return false;
        const LineNumber last = Last();
        if (order.back() != last && !m_lines[last].Raw().ends_with('\n'))
            Commit(last, true, Make({m_lines[last].Raw(), Newline()}));
        LineNumber above = 0;
        for (const LineNumber line : order) {
            m_lines[above].Next = line;
            m_lines[line].Previous = above;
            above = line;
        }
        m_lines[above].Next = 0;
        m_lines[0].Previous = above;
        DropIndex();
        PlaceAll();
        return true;
    }

private:
    static constexpr std::size_t NoOwner = std::numeric_limits<std::size_t>::max();

    /// What the meaning of a line depends on besides its text.
    struct Context
    {
        LineNumber Nearest = 0;
        LineNumber NearestActive = 0;
        bool HasComments = false;    ///< since the last record
        std::size_t Owner = NoOwner; ///< indentation of the key that deeper lines continue
    };

    /// Chains of the headers and keys whose names have the same hash, in file order.
    struct Index
    {
        explicit Index(std::size_t lines) : First(std::bit_ceil(lines)), Next(lines), LastKey(lines) {}

        LineNumber& Chain(View key, View section)
        {
            const std::hash<View> hash;
            return First[(hash(key) + hash(section) * std::size_t{0x9E3779B1}) & (First.size() - 1)];
        }

        std::vector<LineNumber> First;   ///< of each chain
        std::vector<LineNumber> Next;    ///< by line, in its chain
        std::vector<LineNumber> LastKey; ///< by header: the last active key below it
        std::size_t Size = 0;            ///< number of lines
    };

    /// Adds a line to the index, at the start of its chain.
    void AddTo(Index& index, LineNumber number) const
    {
        const DocLine& line = m_lines[number];
        if (line.IsActiveKey() && index.LastKey[line.NearestActive] == 0)
            index.LastKey[line.NearestActive] = number;
        if (line.Key().empty() && !line.IsHeader())
            return;
        const View section = line.IsHeader() ? line.Name() : ActiveSectionOf(number);
        index.Next[number] = std::exchange(index.Chain(line.Key(), section), number);
        ++index.Size;
    }

    /// @return the chain that has the headers of a section.
    LineNumber& HeaderChain(Index& index, View section) const
    {
        const std::size_t equals = IsCommon() ? View::npos : section.find('=');
        return index.Chain(equals != View::npos ? section.substr(0, equals) : View(), section);
    }

    /// Calls `visit` with each header of a section, in file order, until it returns false.
    template <class Visitor>
    void VisitHeaders(View section, Visitor visit) const
    {
        Index& index = GetIndex();
        for (LineNumber line = HeaderChain(index, section); line != 0; line = index.Next[line])
            if (m_lines[line].IsHeader() && m_lines[line].Name() == section && !visit(line))
                return;
    }

    template <class Visitor>
    void Scan(View text, Visitor visit) const
    {
        if (IsCommon())
            ScanLines<INISyntax::Common>(text, visit);
        else
            ScanLines<INISyntax::Parser>(text, visit);
    }

    /// @return whether a line can be part of a run of a key and lines that continue it.
    bool IsRun(const DocLine& line) const
    {
        return IsCommon() && (line.IsActiveKey() || line.Kind == LineKind::Other);
    }

    /// @return whether a text at the start would be read as a byte order mark.
    bool IsMark(View text) const { return IsCommon() && m_mark.empty() && ByteOrderMarkSize(text) != 0; }

    // The three changes. The index goes, unless it is one that applications make many times: a new value,
    // key, section or comment.

    void Insert(LineNumber before, NewLine<Char> made)
    {
        const LineNumber number = m_free != 0 ? m_free : static_cast<LineNumber>(m_lines.size());
        if (m_free != 0)
            m_free = Next(m_free);
        else
            m_lines.emplace_back();
        DocLine& line = m_lines[number] = made;
        m_own[number] = std::move(made.Own);
        line.Next = before;
        line.Previous = Previous(before);
        m_lines[line.Previous].Next = m_lines[before].Previous = number;
        Context context = {m_lines[line.Previous].Nearest, m_lines[line.Previous].NearestActive};
        Place(number, line.Text(), context);

        Index* const index = m_index;
        if (index == nullptr || !line.IsRecord)
            return;
        bool isNew = true;
        if (line.IsHeader())
            VisitHeaders(line.Name(), [&](LineNumber) { return isNew = false; });
        if (line.IsActiveKey()) { // is it below the last key of its header?
            LineNumber above = line.Previous;
            while (above != line.NearestActive && !m_lines[above].IsActiveKey())
                above = Previous(above);
            LineNumber& lastKey = index->LastKey[line.NearestActive];
            lastKey = above == lastKey ? 0 : lastKey;
        }
        AddTo(*index, number);
        if (!isNew || index->Size > index->First.size())
            DropIndex();
    }

    void Replace(LineNumber number, NewLine<Char> made)
    {
        DocLine& line = m_lines[number];
        if (line.IsHeader() || line.IsActive() != made.IsActive())
            DropIndex();
        made.Previous = line.Previous;
        made.Next = line.Next;
        made.Nearest = line.Nearest;
        made.NearestActive = line.NearestActive;
        made.IsRecord = line.IsRecord;
        made.IsContinuation = line.IsContinuation;
        line = made;
        m_own[number] = std::move(made.Own);
    }

    void Erase(LineNumber number)
    {
        DocLine& line = m_lines[number];
        if (line.IsRecord)
            DropIndex();
        m_lines[line.Previous].Next = line.Next;
        m_lines[line.Next].Previous = line.Previous;
        line = {};
        line.Next = std::exchange(m_free, number);
        m_own[number] = nullptr;
    }

    /// Gives a line the meaning that it has in a context, and the context what the line changes in it.
    void Place(LineNumber number, View text, Context& context)
    {
        DocLine& line = m_lines[number];
        if (line.IsHeader()) {
            context.Nearest = number;
            if (line.IsActive() || !IsCommon())
                context.NearestActive = number;
        }
        line.Nearest = context.Nearest;
        line.NearestActive = context.NearestActive;
        line.IsRecord = line.IsHeader() || line.IsKey() ||
                        (line.Kind == LineKind::Other && !IsCommon() && !context.HasComments);
        context.HasComments = line.IsComment() || (context.HasComments && !line.IsRecord);
        PlaceContinuation(line, text, context);
    }

    void PlaceContinuation(DocLine& line, View text, Context& context) const
    {
        const auto indentation = static_cast<std::size_t>(text.data() - line.Raw().data());
        const bool isRun = IsRun(line);
        line.IsContinuation = isRun && indentation > context.Owner;
        if (!line.IsContinuation)
            context.Owner = isRun && line.IsKey() ? indentation : NoOwner;
    }

    void PlaceAll()
    {
        Context context;
        for (LineNumber line = First(); line != 0; line = Next(line))
            Place(line, m_lines[line].Text(), context);
    }

    /// Finds what continues a key among the lines from one to another, and below as far as it changes.
    void PlaceContinuations(LineNumber from, LineNumber to)
    {
        LineNumber above = Previous(from);
        while (m_lines[above].IsContinuation)
            above = Previous(above);
        Context context;
        PlaceContinuation(m_lines[above], m_lines[above].Text(), context);
        bool isBelow = false;
        for (LineNumber line = from; line != 0; line = Next(line)) {
            isBelow = isBelow || line == to;
            const bool was = m_lines[line].IsContinuation;
            PlaceContinuation(m_lines[line], m_lines[line].Text(), context);
            if (isBelow && !was && !m_lines[line].IsContinuation)
                return;
        }
    }

    Index& GetIndex() const
    {
        Index* index = m_index.load(std::memory_order_acquire);
        if (index != nullptr)
            return *index;
        auto made = std::make_unique<Index>(m_lines.size());
        for (LineNumber line = Last(); line != 0; line = Previous(line))
            AddTo(*made, line);
        if (m_index.compare_exchange_strong(index, made.get(), std::memory_order_acq_rel))
            index = made.release(); // no other thread was faster
        return *index;
    }

    void DropIndex()
    {
        delete m_index.exchange(nullptr);
        m_isSearched = false;
    }

    INISyntax m_syntax;
    platform::Buffer<Char> m_text; ///< as it was loaded
    View m_mark;                   ///< the byte order mark at its start
    View m_rest;                   ///< what follows its last newline and is not read
    std::vector<DocLine> m_lines{1};
    std::vector<std::unique_ptr<Char[]>> m_own; ///< texts of the lines that were changed
    LineNumber m_free = 0;                      ///< first of the erased lines, whose places are used again
    mutable std::atomic<Index*> m_index = nullptr;
    mutable std::atomic<bool> m_isSearched = false; ///< since the index was dropped
};

} // namespace ini
