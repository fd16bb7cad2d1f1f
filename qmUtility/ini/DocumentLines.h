// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The lines of a document: a linked list, what each line means where it stands, and an index of names.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/ini/TextFile.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ini {

/// A line in its list, the same while lines are inserted and erased around it; 0 is the end of the list.
using LineNumber = std::uint32_t;

/// What a line means where it stands. It follows from the line and the meaning of the line above.
struct Meaning {
    static constexpr std::uint32_t NoOwner = std::numeric_limits<std::uint32_t>::max();

    LineNumber Nearest = 0;         ///< the nearest header above, active or not; of a header, itself
    LineNumber NearestActive = 0;   ///< the header of the section that an active record has here
    std::uint32_t Owner = NoOwner;  ///< indentation of the key that deeper lines below continue
    bool IsRecord = false;          ///< whether the line makes a record
    bool HasComments = false;       ///< whether there are comments since the last record
    bool IsContinuation = false;    ///< whether the line continues an active key above

    bool operator==(const Meaning&) const = default;
};

/// A line of a document.
template <class Char>
struct DocumentLine : Line<Char>, Meaning {
    DocumentLine() = default;  ///< the end of a list
    explicit DocumentLine(const Line<Char>& line) : Line<Char>(line) {}

    LineNumber Previous = 0;
    LineNumber Next = 0;
    std::unique_ptr<Char[]> Own = {};  ///< the text of the line, unless it was loaded

    /// @return the header of the section that the record of this line has, 0 above the first header.
    LineNumber Header() const { return this->IsActive() ? NearestActive : Nearest; }
};

/// The lines of a document, in a linked list.
///
/// Several threads may search a list that none changes: the index is made by the first search that needs it.
template <class Char>
class DocumentLines {
public:
    using View = std::basic_string_view<Char>;
    using DocLine = DocumentLine<Char>;

    /// An edit at a line: it is erased, replaced, or gets a new line in front of it.
    struct Change {
        LineNumber At = 0;
        bool IsErased = false;             ///< whether the line goes
        std::optional<DocLine> Made = {};  ///< the line that comes
    };
    using Changes = std::vector<Change>;  ///< in the order of the lines

    /// Reads a text.
    /// @param encoding of its file
    /// @throws INIFormatError for a malformed header
    /// @throws std::length_error for 2^32 lines
    DocumentLines(INISyntax syntax, const Encoding<Char>& encoding, platform::Buffer<Char> text)
        : m_syntax(syntax), m_encoding(encoding), m_text(std::move(text)) {
        View whole = m_text;
        if (IsCommon()) m_mark = whole.substr(0, ByteOrderMarkSize(whole));
        whole.remove_prefix(m_mark.size());
        constexpr std::size_t usualLine = 24;  // less than in most files, so that the list seldom grows
        m_lines.reserve(whole.size() / usualLine + 2);
        platform::ExpectUse(m_lines.data(), m_lines.capacity() * sizeof(DocLine));
        m_lines.emplace_back();
        ScanLines(m_syntax, whole, [&](const Line<Char>& line) {
            if (line.Kind == LineKind::MalformedHeader) throw INIFormatError(m_lines.size());
            Place(Insert(0, line));
        });
        const View last = m_lines.back().Raw;
        m_rest = last.empty() ? whole : Between(last.data() + last.size(), whole.data() + whole.size());
    }

    DocumentLines(const DocumentLines&) = delete;
    DocumentLines& operator=(const DocumentLines&) = delete;
    ~DocumentLines() { DropIndex(); }

    /// Reads another text in the same syntax and encoding.
    /// @return null for a text with a NUL in the syntax `Common`.
    std::unique_ptr<DocumentLines> Read(platform::Buffer<Char> text) const {
        if (IsCommon() && View(text).find(Char()) != View::npos) return nullptr;
        return std::make_unique<DocumentLines>(m_syntax, m_encoding, std::move(text));
    }

    bool IsCommon() const { return m_syntax == INISyntax::Common; }
    const ini::Encoding<Char>& GetEncoding() const { return m_encoding; }

    std::basic_string<Char> Text() const {
        std::size_t size = m_mark.size() + m_rest.size();
        for (LineNumber line = First(); line != 0; line = Next(line)) size += m_lines[line].Raw.size();
        std::basic_string<Char> text;
        text.reserve(size);
        platform::ExpectUse(text.data(), size * sizeof(Char));
        text += m_mark;
        for (LineNumber line = First(); line != 0; line = Next(line)) text += m_lines[line].Raw;
        text += m_rest;
        return text;
    }

    const DocLine& operator[](LineNumber line) const { return m_lines[line]; }
    LineNumber First() const { return Next(0); }
    LineNumber Last() const { return Previous(0); }
    LineNumber Next(LineNumber line) const { return m_lines[line].Next; }
    LineNumber Previous(LineNumber line) const { return m_lines[line].Previous; }

    /// @return the name of the section that the record of this line has.
    View SectionOf(LineNumber line) const { return m_lines[m_lines[line].Header()].Section; }

    /// @return the first line of this key, or 0.
    /// @param section that the record has, or would have if it were active
    LineNumber FindKey(View key, View section, bool isActive) const {
        return Find(key, section, [&](LineNumber line) {
            return m_lines[line].IsActive() == isActive && m_lines[line].Key == key &&
                   ActiveSectionOf(line) == section;
        });
    }

    /// @return the first active header, or 0.
    LineNumber FindHeader(View section) const {
        return Find(KeyIn(section), section, [&](LineNumber line) {
            return m_lines[line].IsActiveHeader() && m_lines[line].Section == section;
        });
    }

    /// @return whether there is an active header, or an active key above the first one.
    bool HasSection(View section) const {
        return FindHeader(section) != 0 || (section.empty() && GetIndex().LastKey[0] != 0);
    }

    /// @return the last active key, or 0.
    LineNumber FindLastKey(View section) const {
        const std::vector<LineNumber>& lastKeys = GetIndex().LastKey;
        LineNumber last = section.empty() ? lastKeys[0] : 0;
        Find(KeyIn(section), section, [&](LineNumber line) {
            if (m_lines[line].IsHeader() && m_lines[line].Section == section && lastKeys[line] != 0)
                last = lastKeys[line];
            return false;
        });
        return last;
    }

    /// @return the first of the comment lines of a record, or its own line.
    LineNumber FirstComment(LineNumber record) const {
        LineNumber first = record;
        for (LineNumber line = Previous(record); line != 0; line = Previous(line))
            if (m_lines[line].IsComment())
                first = line;
            else if (IsCommon() || m_lines[line].IsRecord)
                break;
        return first;
    }

    /// @return whether a line would continue an active key with this indentation directly above it.
    bool Continues(LineNumber line, View indentation) const {
        return IsRun(m_lines[line]) && m_lines[line].Indentation().size() > indentation.size();
    }

    /// @return the line below those that continue a line, or would if it were active.
    LineNumber AfterContinuations(LineNumber line) const {
        LineNumber after = Next(line);
        while (Continues(after, m_lines[line].Indentation())) after = Next(after);
        return after;
    }

    /// @return the newline that new lines get.
    View Newline() const {
        static constexpr Char crLf[] = {'\r', '\n'};
        const View first = m_lines[First()].Raw;
        const bool isCrLf =
            first.ends_with('\n') ? first.ends_with(View(crLf, 2)) : platform::Newline.size() == 2;
        return View(crLf, 2).substr(isCrLf ? 0 : 1);
    }

    /// @return a line of these pieces of text, for a change; nothing when they do not make one line.
    std::optional<DocLine> Make(std::initializer_list<View> pieces) const {
        std::size_t size = 0;
        for (const View piece : pieces) size += piece.size();
        auto own = std::make_unique_for_overwrite<Char[]>(size);
        Char* end = own.get();
        for (const View piece : pieces) end += piece.copy(end, piece.size());

        std::optional<DocLine> line;
        const View text(own.get(), size);
        if (IsCommon() && text.find(Char()) != text.npos) return line;
        ScanLines(m_syntax, text, [&](const Line<Char>& scanned) {
            if (scanned.Raw.size() == size && scanned.Kind != LineKind::MalformedHeader)
                line.emplace(scanned);
        });
        if (line) line->Own = std::move(own);
        return line;
    }

    /// Makes all changes, at least one, or none when it throws.
    /// @return false, with nothing changed, when the text would then begin with a byte order mark.
    bool Commit(Changes changes) {
        auto atFirst = changes.begin();
        LineNumber first = First();
        for (; atFirst != changes.end() && atFirst->At == first && !atFirst->Made; ++atFirst)
            first = Next(first);
        const bool isMade = atFirst != changes.end() && atFirst->At == first;
        if (IsMark(isMade ? atFirst->Made->Raw : m_lines[first].Raw)) return false;

        const LineNumber size = Number(m_lines.size() + changes.size());
        if (size > m_lines.capacity()) m_lines.reserve(2 * std::size_t{size});
        if (Index* const index = m_index) {
            index->Next.resize(size);
            index->LastKey.resize(size);
        }
        // From here on nothing throws.
        const LineNumber above = Previous(changes.front().At);
        const LineNumber below = changes.back().IsErased ? Next(changes.back().At) : changes.back().At;
        for (Change& change : changes) {
            if (!change.Made)
                Erase(change.At);
            else if (change.IsErased)
                Replace(change.At, *change.Made);
            else
                change.At = Insert(change.At, *change.Made);
            if (change.Made) m_lines[change.At].Own = std::move(change.Made->Own);
        }
        PlaceBetween(above, below);
        for (const Change& change : changes)
            if (!change.IsErased) AddToIndex(change.At);
        return true;
    }

    /// Makes one change.
    bool Commit(LineNumber at, bool isErased, std::optional<DocLine> made) {
        Changes changes;
        changes.push_back({at, isErased, std::move(made)});
        return Commit(std::move(changes));
    }

    /// Puts the lines, all of them, in this order; fails as `Commit` does.
    bool Arrange(const std::vector<LineNumber>& order) {
        if (order.empty()) return true;
        if (IsMark(m_lines[order.front()].Raw)) return false;
        const LineNumber last = Last();
        if (order.back() != last && !m_lines[last].Raw.ends_with('\n'))
            Commit(last, true, Make({m_lines[last].Raw, Newline()}));
        LineNumber above = 0;
        for (const LineNumber line : order) {
            m_lines[above].Next = line;
            m_lines[line].Previous = above;
            above = line;
        }
        m_lines[above].Next = 0;
        m_lines[0].Previous = above;
        DropIndex();
        PlaceBetween(0, 0);
        return true;
    }

private:
    /// Chains of the headers and keys whose names have the same hash, in file order.
    struct Index {
        LineNumber& Chain(View key, View section) {
            const std::hash<View> hash;
            return First[(hash(key) + hash(section) * std::size_t{0x9E3779B1}) & (First.size() - 1)];
        }

        explicit Index(std::size_t lines) : First(std::bit_ceil(lines)), Next(lines), LastKey(lines) {}

        std::vector<LineNumber> First;    ///< of each chain
        std::vector<LineNumber> Next;     ///< by line, in its chain
        std::vector<LineNumber> LastKey;  ///< by header: the last active key below it
        std::size_t Size = 0;             ///< number of lines
    };

    /// @return the name of the section that an active record would have here.
    View ActiveSectionOf(LineNumber line) const { return m_lines[m_lines[line].NearestActive].Section; }

    /// @return the key that a header of this name has.
    View KeyIn(View section) const {
        const std::size_t equals = IsCommon() ? View::npos : section.find('=');
        return equals != View::npos ? section.substr(0, equals) : View();
    }

    /// @return the first line for which `isWanted` is true, or 0. It is asked about all lines of this key and
    ///   section, in file order, and about others.
    template <class Predicate>
    LineNumber Find(View key, View section, Predicate isWanted) const {
        LineNumber line = 0;
        if (m_isSearched.load(std::memory_order_relaxed) || m_isSearched.exchange(true)) {
            Index& index = GetIndex();
            for (line = index.Chain(key, section); line != 0 && !isWanted(line);) line = index.Next[line];
        } else {  // a single search takes less time than the index
            for (line = First(); line != 0 && !isWanted(line);) line = Next(line);
        }
        return line;
    }

    Index& GetIndex() const {
        Index* index = m_index.load(std::memory_order_acquire);
        if (index != nullptr) return *index;
        auto made = std::make_unique<Index>(m_lines.size());
        for (LineNumber line = Last(); line != 0; line = Previous(line)) AddTo(*made, line);
        if (m_index.compare_exchange_strong(index, made.get(), std::memory_order_acq_rel))
            index = made.release();  // no other thread was faster
        return *index;
    }

    /// Adds a line to the index, at the start of its chain.
    void AddTo(Index& index, LineNumber number) const {
        const DocLine& line = m_lines[number];
        if (line.IsActiveKey() && index.LastKey[line.NearestActive] == 0)
            index.LastKey[line.NearestActive] = number;
        if (!line.IsHeader() && line.Key.empty()) return;
        const View section = line.IsHeader() ? line.Section : ActiveSectionOf(number);
        index.Next[number] = std::exchange(index.Chain(line.Key, section), number);
        ++index.Size;
    }

    /// Adds a new line to the index, if there is one, or drops the index where it would have to grow or lose
    /// its order. An inserted key is the only one of its name that is active.
    void AddToIndex(LineNumber number) {
        Index* const index = m_index;
        if (index == nullptr) return;
        const DocLine& line = m_lines[number];
        const bool isNew = !line.IsHeader() ||
                           Find(line.Key, line.Section, [&](LineNumber other) {
                               return m_lines[other].IsHeader() && m_lines[other].Section == line.Section;
                           }) == 0;
        if (line.IsActiveKey()) {  // below the last key of its header?
            LineNumber above = line.Previous;
            while (above != line.NearestActive && !m_lines[above].IsActiveKey()) above = Previous(above);
            if (above == index->LastKey[line.NearestActive]) index->LastKey[line.NearestActive] = 0;
        }
        AddTo(*index, number);
        if (!isNew || index->Size > index->First.size()) DropIndex();
    }

    void DropIndex() {
        delete m_index.exchange(nullptr);
        m_isSearched = false;
    }

    /// @return whether a line can be part of a run of a key and lines that continue it.
    bool IsRun(const Line<Char>& line) const {
        return IsCommon() && (line.IsActiveKey() || line.Kind == LineKind::Other);
    }

    /// @return whether a text at the start would be read as a byte order mark.
    bool IsMark(View text) const { return IsCommon() && m_mark.empty() && ByteOrderMarkSize(text) != 0; }

    /// @throws std::length_error
    static LineNumber Number(std::size_t number) {
        if (number > std::numeric_limits<LineNumber>::max())
            throw std::length_error("an INI file is too large");
        return static_cast<LineNumber>(number);
    }

    // The three changes. The index goes, unless it is one that applications make many times: a new value,
    // key, section or comment.

    /// Puts a line in front of another.
    LineNumber Insert(LineNumber before, const Line<Char>& made) {
        const LineNumber number = m_free != 0 ? m_free : Number(m_lines.size());
        if (m_free == 0)
            m_lines.emplace_back(made);
        else {
            m_free = Next(m_free);
            m_lines[number] = DocLine(made);
        }
        DocLine& line = m_lines[number];
        line.Next = before;
        line.Previous = Previous(before);
        m_lines[line.Previous].Next = m_lines[before].Previous = number;
        return number;
    }

    void Replace(LineNumber number, const Line<Char>& made) {
        Line<Char>& line = m_lines[number];
        if (line.IsHeader() || line.IsActive() != made.IsActive()) DropIndex();
        line = made;
    }

    void Erase(LineNumber number) {
        DocLine& line = m_lines[number];
        if (line.IsRecord) DropIndex();
        m_lines[line.Previous].Next = line.Next;
        m_lines[line.Next].Previous = line.Previous;
        line = {};
        line.Next = std::exchange(m_free, number);
    }

    /// Finds what a line means.
    void Place(LineNumber number) {
        DocLine& line = m_lines[number];
        const Meaning& above = m_lines[line.Previous];
        const bool isRun = IsRun(line);
        const auto indentation =
            static_cast<std::uint32_t>(std::min<std::size_t>(line.Indentation().size(), Meaning::NoOwner));
        line.Nearest = line.IsHeader() ? number : above.Nearest;
        line.NearestActive =
            line.IsHeader() && (line.IsActive() || !IsCommon()) ? number : above.NearestActive;
        line.IsRecord = line.IsHeader() || line.IsKey() ||
                        (line.Kind == LineKind::Other && !IsCommon() && !above.HasComments);
        line.HasComments = line.IsComment() || (above.HasComments && !line.IsRecord);
        line.IsContinuation = isRun && indentation > above.Owner;
        line.Owner = line.IsContinuation     ? above.Owner
                     : isRun && line.IsKey() ? indentation
                                             : Meaning::NoOwner;
    }

    /// Finds what the lines between two mean, and those below as far as it changes.
    void PlaceBetween(LineNumber above, LineNumber below) {
        bool isBelow = false;
        for (LineNumber line = Next(above); line != 0; line = Next(line)) {
            isBelow = isBelow || line == below;
            const Meaning before = m_lines[line];
            Place(line);
            if (isBelow && before == m_lines[line]) return;
        }
    }

    INISyntax m_syntax;
    ini::Encoding<Char> m_encoding;
    platform::Buffer<Char> m_text;  ///< as it was loaded
    View m_mark;                    ///< the byte order mark at its start
    View m_rest;                    ///< what follows its last newline and is not read
    std::vector<DocLine> m_lines;
    LineNumber m_free = 0;  ///< first of the erased lines, whose places are used again
    mutable std::atomic<Index*> m_index = nullptr;
    mutable std::atomic<bool> m_isSearched = false;  ///< since the index was dropped
};

}  // namespace ini
