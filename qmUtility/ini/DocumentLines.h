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
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ini {

/// A line in its list. It stays the same while lines are inserted and erased around it; 0 is the end of the list.
using LineNumber = std::uint32_t;

/// A section name. Equal names have equal numbers; the empty name is 0.
using NameNumber = std::uint32_t;

/// The number of a name that no header has.
inline constexpr NameNumber NoName = std::numeric_limits<NameNumber>::max();

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

    /// @return the number of the section that the record of this line has.
    NameNumber Section() const { return IsActive() ? NearestActive : Nearest; }

private:
    /// @throws std::length_error
    static std::uint32_t To32(std::size_t size)
    {
        if (size > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("a line of an INI file is too long");
        return static_cast<std::uint32_t>(size);
    }

    const Char* m_begin = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_name = 0; ///< where it begins
    std::uint32_t m_nameSize = 0;
    std::uint32_t m_value = 0; ///< where it begins
    std::uint32_t m_valueSize = 0;

public:
    LineNumber Previous = 0;
    LineNumber Next = 0;
    NameNumber Nearest =
        0; ///< section of the nearest header above, active or commented out; of a header itself
    NameNumber NearestActive = 0; ///< section that an active record has here
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
            const auto number = static_cast<LineNumber>(m_lines.size());
            if (scanned.Kind == LineKind::MalformedHeader)
                throw INIFormatError(number);
            DocLine& line = m_lines.emplace_back(scanned);
            if (line.IsHeader())
                line.Nearest = Number(scanned.Section);
            line.Previous = number - 1;
            line.Next = number + 1;
            Place(line, scanned.Text, context);
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
        text += m_mark;
        for (LineNumber line = First(); line != 0; line = Next(line))
            text += m_lines[line].Raw();
        return text += m_rest;
    }

    const DocLine& operator[](LineNumber line) const { return m_lines[line]; }
    LineNumber First() const { return Next(0); }
    LineNumber Last() const { return Previous(0); }
    LineNumber Next(LineNumber line) const { return m_lines[line].Next; }
    LineNumber Previous(LineNumber line) const { return m_lines[line].Previous; }

    View NameOf(NameNumber number) const { return *m_names[number]; }
    NameNumber NumberOf(View name) const
    {
        const auto at = m_numbers.find(name);
        return at != m_numbers.end() ? at->second : NoName;
    }

    /// @return the first line of this key, or 0.
    /// @param section that the record has, or would have if it were active
    LineNumber FindKey(View key, NameNumber section, bool isActive) const
    {
        const auto isMatch = [&](const DocLine& line) {
            return line.NearestActive == section && line.IsActive() == isActive && line.Key() == key;
        };
        LineNumber line = 0;
        if (m_isSearched.load(std::memory_order_relaxed) || m_isSearched.exchange(true)) {
            Index& index = GetIndex();
            for (line = index.Chain(key, section); line != 0 && !isMatch(m_lines[line]);)
                line = index.Next[line];
        } else { // a single search takes less time than the index
            for (line = First(); line != 0 && !isMatch(m_lines[line]);)
                line = Next(line);
        }
        return line;
    }

    /// @return the first active header, or 0.
    LineNumber FindHeader(NameNumber section) const { return GetIndex().PlacesOf(section).Header; }
    /// @return whether there is an active key.
    bool HasKey(NameNumber section) const { return GetIndex().PlacesOf(section).LastKey != 0; }
    /// @return whether there is an active header, or a key above the first header.
    bool HasSection(NameNumber section) const
    {
        return FindHeader(section) != 0 || (section == 0 && HasKey(section));
    }
    /// @return the last active key, or 0. Not const: the index may have to be made anew.
    LineNumber FindLastKey(NameNumber section)
    {
        if (!GetIndex().IsLastKeyKnown)
            DropIndex();
        return GetIndex().PlacesOf(section).LastKey;
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

    /// @return a line of these pieces of text, to be part of a change; nothing when they do not make one line.
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
        for (Change& change : changes)
            if (change.Made && change.Made->IsHeader())
                change.Made->Nearest = Number(change.Made->Name());
        if (Index* const index = m_index) {
            index->Next.resize(size);
            index->Sections.resize(m_names.size());
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
        if (m_names.size() > 2 * m_lines.size())
            RenumberNames();
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
        NameNumber Nearest = 0;
        NameNumber NearestActive = 0;
        bool HasComments = false;    ///< since the last record
        std::size_t Owner = NoOwner; ///< indentation of the key that deeper lines continue
    };

    struct Index
    {
        struct Places
        {
            LineNumber Header = 0;
            LineNumber LastKey = 0;
        };

        Places PlacesOf(NameNumber section) const
        {
            return section < Sections.size() ? Sections[section] : Places();
        }

        /// @return the first line of a chain of keys with the same hash.
        LineNumber& Chain(View key, NameNumber section)
        {
            return First[(std::hash<View>()(key) + section * std::size_t{0x9E3779B1}) & (First.size() - 1)];
        }

        /// Adds a line, which is above all others of its name.
        void Add(LineNumber number, const DocLine& line)
        {
            Places& places = Sections[line.NearestActive];
            if (line.IsActiveHeader())
                places.Header = number;
            else if (line.IsActiveKey() && places.LastKey == 0)
                places.LastKey = number;
            if (line.Key().empty())
                return;
            Next[number] = std::exchange(Chain(line.Key(), line.NearestActive), number);
            ++Size;
        }

        std::vector<Places> Sections;  ///< by name number
        std::vector<LineNumber> First; ///< of each chain
        std::vector<LineNumber> Next;  ///< by line, in its chain
        std::size_t Size = 0;          ///< number of keys
        bool IsLastKeyKnown = true;    ///< else `LastKey` is some key of the section
    };

    struct Hash : std::hash<View>
    {
        using is_transparent = void;
    };

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

    /// @return the number of a name, new or not.
    NameNumber Number(View name)
    {
        auto at = m_numbers.find(name);
        if (at == m_numbers.end()) {
            m_names.reserve(std::bit_ceil(m_names.size() + 1)); // so that `push_back` cannot throw
            at = m_numbers.emplace(name, static_cast<NameNumber>(m_names.size())).first;
            m_names.push_back(&at->first);
        }
        return at->second;
    }

    /// Forgets the names of headers that are gone.
    void RenumberNames()
    try {
        DropIndex();
        DocumentLines names(m_syntax, platform::Buffer<Char>(0));
        for (LineNumber line = First(); line != 0; line = Next(line))
            if (m_lines[line].IsHeader())
                names.Number(m_lines[line].Name());
        for (LineNumber line = First(); line != 0; line = Next(line))
            if (m_lines[line].IsHeader())
                m_lines[line].Nearest = names.NumberOf(m_lines[line].Name());
        m_numbers.swap(names.m_numbers);
        m_names.swap(names.m_names);
        PlaceAll();
    } catch (const std::bad_alloc&) { // then they stay for the time being
    }

    // The three changes. The index goes, unless it is one that applications make many times: a new value, key,
    // section or comment.

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
        Place(line, line.Text(), context);

        Index* const index = m_index;
        if (index == nullptr || !line.IsRecord)
            return;
        LineNumber& lastKey = index->Sections[line.NearestActive].LastKey;
        if (line.IsKey() && lastKey != 0) {
            index->IsLastKeyKnown = index->IsLastKeyKnown && AfterContinuations(lastKey) == number;
            lastKey = 0;
        }
        index->Add(number, line);
        if (index->Size > index->First.size())
            DropIndex();
    }

    void Replace(LineNumber number, NewLine<Char> made)
    {
        DocLine& line = m_lines[number];
        if (line.IsHeader() || line.IsActive() != made.IsActive())
            DropIndex();
        made.Previous = line.Previous;
        made.Next = line.Next;
        made.Nearest = line.IsHeader() ? made.Nearest : line.Nearest;
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
    void Place(DocLine& line, View text, Context& context) const
    {
        if (line.IsHeader()) {
            context.Nearest = line.Nearest;
            if (line.IsActive() || !IsCommon())
                context.NearestActive = line.Nearest;
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
            Place(m_lines[line], m_lines[line].Text(), context);
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
        auto made = std::make_unique<Index>();
        made->Sections.resize(m_names.size());
        made->First.resize(std::bit_ceil(m_lines.size()));
        made->Next.resize(m_lines.size());
        for (LineNumber line = Last(); line != 0; line = Previous(line))
            made->Add(line, m_lines[line]);
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
    std::unordered_map<std::basic_string<Char>, NameNumber, Hash, std::equal_to<>> m_numbers{
        {std::basic_string<Char>(), 0}};
    std::vector<const std::basic_string<Char>*> m_names{&m_numbers.begin()->first}; ///< by number
    mutable std::atomic<Index*> m_index = nullptr;
    mutable std::atomic<bool> m_isSearched = false; ///< since the index was dropped
};

} // namespace ini
