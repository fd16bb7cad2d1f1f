// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// `INIDocument`.

#include "qmUtility/Export.h"
#include "qmUtility/ini/INIRecord.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <limits>
#include <locale>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace ini {
template <class Char>
class DocumentLines;
}  // namespace ini

/// An INI file in memory: a text, and the records that it holds.
///
///     INIDocument settings;
///     settings.Load("app.ini");                               // false if it cannot be read
///     int width = settings.Get<int>("Width", "Window").value_or(800);
///     settings.SetValue("Width", "1024", "Window");           // changes the characters of the value
///     settings.Save("app.ini");                               // false: the file is unchanged
///
/// **Text.** An edit changes only the characters it concerns. The records are always those that a new
/// document would read from `Text()`. docs/ini-format.md specifies both syntaxes and every edit.
///
/// **Names** are compared by code unit. Of several matches the first in the file counts. Lookups see active
/// records only, iteration all of them. An empty key names the section's header in a lookup; an empty section
/// name is that of the keys above the first header.
///
/// **Edits** return false and change nothing when there is no such record or section, when the result would
/// not be read back as given, and when another record would be read differently. Arguments may be views into
/// the document.
///
/// **Complexity.** `Load`, `Parse`, `Text` and `Save` are linear in the text. `SetValue`, `AddSection` and
/// lookups of one record take amortized constant time; `Sort` and `GetSectionNames` take n log n, everything
/// else at most linear time in the number of lines.
///
/// **Failure.** An operation that throws (std::bad_alloc, unless stated otherwise) leaves the document
/// unchanged. 2^32 lines throw std::length_error.
///
/// **Threads.** Concurrent reads are safe; an edit needs exclusive access. Copies are independent.
template <class Char>
class QMUTILITY_API BasicINIDocument {
    using Lines = ini::DocumentLines<Char>;

public:
    using String = std::basic_string<Char>;     ///< a text of this width
    using View = std::basic_string_view<Char>;  ///< an argument of this width, not retained
    using Record = BasicINIRecord<Char>;        ///< a copy of a record

    class Iterator;

    /// A record as views into the document, valid until its next edit.
    class RecordView {
    public:
        Char Commented = Char(' ');  ///< see `BasicINIRecord`
        View Section;                ///< see `BasicINIRecord`
        View Key;                    ///< see `BasicINIRecord`
        View Value;                  ///< see `BasicINIRecord`

        String Comments() const { return CommentsOf(*m_lines, m_line); }  ///< see `BasicINIRecord`

    private:
        friend class BasicINIDocument;
        friend class Iterator;
        const Lines* m_lines = nullptr;
        std::uint32_t m_line = 0;
    };

    /// A forward iterator over the records in file order, valid until the next edit.
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;   ///< C++17 category: `operator*` returns by value
        using iterator_concept = std::forward_iterator_tag;  ///< C++20 category
        using value_type = RecordView;                       ///< element type
        using difference_type = std::ptrdiff_t;              ///< of two iterators
        using pointer = const RecordView*;                   ///< of `operator->`
        using reference = RecordView;                        ///< of `operator*`

        reference operator*() const { return m_record; }  ///< @return the record.
        pointer operator->() const { return &m_record; }  ///< @return the record, until the iterator changes.
        Iterator& operator++() { return Advance(m_record), *this; }  ///< Moves to the next record.
        /// Moves to the next record. @return the former place.
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        /// @return whether both are at the same record of the same document.
        bool operator==(const Iterator& other) const { return m_record.m_line == other.m_record.m_line; }
        bool operator!=(const Iterator& other) const { return !(*this == other); }  ///< the opposite of `==`

    private:
        friend class BasicINIDocument;
        RecordView m_record;
    };

    /// Constructs an empty document.
    /// @param syntax of its text.
    /// @param locale converts between the bytes of files and `wchar_t`; the default is the global one.
    explicit BasicINIDocument(INISyntax syntax = INISyntax::Common,
                              const std::locale& locale = std::locale());
    BasicINIDocument(const BasicINIDocument& other);      ///< takes linear time
    BasicINIDocument(BasicINIDocument&& other) noexcept;  ///< leaves a default-constructed document behind
    BasicINIDocument& operator=(const BasicINIDocument& other);      ///< see the copy constructor
    BasicINIDocument& operator=(BasicINIDocument&& other) noexcept;  ///< see the move constructor
    ~BasicINIDocument();

    /// @name Files and text
    /// @{

    /// Replaces the text with a file's contents.
    /// @param path of the file.
    /// @param error the reason of a failure: `no_such_file_or_directory`, `is_a_directory`,
    ///   `permission_denied`, `illegal_byte_sequence` for what the locale cannot decode and, in the syntax
    ///   `Common`, for a file with a NUL (UTF-16 has them), or another system error; cleared on success.
    /// @return false when the file cannot be opened, read to its end or decoded; the document is unchanged.
    /// @throws INIFormatError for a malformed header, in the syntax `Parser` only; the document is unchanged.
    bool Load(const std::filesystem::path& path, std::error_code& error);
    bool Load(const std::filesystem::path& path);  ///< @overload

    /// Replaces the text.
    /// @return false for a text with a NUL in the syntax `Common`; the document is unchanged.
    /// @throws INIFormatError as `Load` does.
    bool Parse(View text);

    /// @return the text, as `Save` encodes it.
    String Text() const;

    /// Replaces or creates a file, completely or not at all; docs/ini-format.md has the exact guarantee.
    /// @param path of the file.
    /// @param error the reason of a failure, `illegal_byte_sequence` for a character that the locale cannot
    ///   encode; cleared on success.
    /// @return false when the text is not saved; the file is then unchanged.
    bool Save(const std::filesystem::path& path, std::error_code& error) const;
    bool Save(const std::filesystem::path& path) const;  ///< @overload

    /// @}
    /// @name Lookups
    /// @{

    /// @return the value of the first active record of this key and section, else the fallback.
    String GetValue(View key, View section, View fallback = {}) const;

    /// Reads a value as a number, a truth value or a text.
    /// @tparam T `bool` (true/false, yes/no, on/off, 1/0, case-insensitive), an integer (decimal digits, with
    ///   an optional "-" for signed types), `float` or `double` (decimal, with an optional fraction and
    ///   exponent), or `String`.
    /// @return nothing when the record is missing, or its value is out of range or not entirely such a value.
    template <class T>
    std::optional<T> Get(View key, View section) const;

    /// @return the first active record of this key and section.
    std::optional<Record> GetRecord(View key, View section) const;
    /// @return the active key records of the section, in file order.
    std::vector<Record> GetSection(View section) const;
    /// @return the names of the active headers, in file order, each once.
    std::vector<String> GetSectionNames() const;
    /// @return whether there is an active record of this key and section.
    bool RecordExists(View key, View section) const;
    /// @return whether there is an active header of this name; for the empty name, also whether there is an
    ///   active key above the first header.
    bool SectionExists(View section) const;

    /// Iterates over all records in file order, commented-out ones included.
    Iterator begin() const;
    Iterator end() const { return {}; }  ///< see `begin`

    /// @}
    /// @name Edits
    /// The class comment says what all edits share.
    /// @{

    /// Sets the value of the first active record of this key and section. A missing key becomes a new line
    /// below a commented-out record of the same name, else below the last key of its section, with the same
    /// layout; a missing section is added first.
    /// @return false also for an empty key, and for a value with ignored continuation lines.
    bool SetValue(View key, View value, View section);

    /// Adds a header at the end, after an empty line.
    /// @return false also when the section exists, and for an empty name.
    bool AddSection(View section);

    /// Removes the first active record of this key and section with its comments and continuation lines.
    /// @return false also when one of those is a record.
    bool DeleteRecord(View key, View section);

    /// Removes the section's active headers and everything below them, up to the comments of the next header,
    /// and its active keys below a commented-out header, with their comments; for the empty name, the keys
    /// above the first active header.
    bool DeleteSection(View section);

    /// Changes the name in the section's active headers.
    /// @return false also when a section `to` exists.
    bool RenameSection(View from, View to);

    /// Comments out the first active record of this key and section.
    /// @return false also for a value with ignored continuation lines.
    bool CommentRecord(INICommentChar character, View key, View section);

    /// Comments out the section's active headers and records; see `CommentRecord`.
    bool CommentSection(INICommentChar character, View section);

    /// Uncomments the first commented-out record of this key that would then belong to this section.
    /// @return false also for a value that would have ignored continuation lines.
    bool UnCommentRecord(View key, View section);

    /// Uncomments the section's commented-out headers and records; see `UnCommentRecord`.
    bool UnCommentSection(View section);

    /// Replaces the comments above the first active record of this key and section.
    /// @param comments the lines, each with its "#" or ";" and without surrounding blanks; the last newline
    ///   is optional. Empty removes the comments.
    /// @param key of the record.
    /// @param section its name.
    bool SetRecordComments(View comments, View key, View section);

    /// Replaces the comments above the section's first active header, as `SetRecordComments` does.
    bool SetSectionComments(View comments, View section);

    /// Sorts the sections by name, and the keys between two headers, or above the first, by name, code unit
    /// by code unit; equal names keep their order. Each record moves with its comments. Other lines above the
    /// first header, comments that an empty line sets apart from the key below, and what is below the last
    /// record stay in place.
    /// @return false if the text would then begin with a byte order mark.
    bool Sort(bool descending);

    /// @}

private:
    QMUTILITY_PRIVATE Lines& EditLines();
    QMUTILITY_PRIVATE const Lines& GetLines() const;
    QMUTILITY_PRIVATE static RecordView ViewOf(const Lines& lines, std::uint32_t line);
    QMUTILITY_PRIVATE static Record Copy(const RecordView& record);
    QMUTILITY_PRIVATE bool ChangeCommented(Char commented, View key, View section);
    QMUTILITY_PRIVATE bool SetComments(std::uint32_t line, View comments);

    static String CommentsOf(const Lines& lines, std::uint32_t line);
    static void Advance(RecordView& record);
    std::optional<View> FindValue(View key, View section) const;
    static bool Read(View text, bool& value);
    static bool Read(View text, long long& value);
    static bool Read(View text, unsigned long long& value);
    static bool Read(View text, float& value);
    static bool Read(View text, double& value);
    static bool Read(View text, String& value);

    std::unique_ptr<Lines> m_lines;  ///< null after a move
};

template <class Char>
template <class T>
std::optional<T> BasicINIDocument<Char>::Get(View key, View section) const {
    constexpr bool isInteger = std::is_integral_v<T> && !std::is_same_v<T, bool>;
    static_assert(!std::is_same_v<T, char> && !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char16_t> &&
                      !std::is_same_v<T, char32_t>,
                  "a character is neither a number nor a text");
    using Widest = std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>;

    const std::optional<View> text = FindValue(key, section);
    std::conditional_t<isInteger, Widest, T> value{};
    if (!text || !Read(*text, value)) return std::nullopt;
    if constexpr (isInteger)
        if (value < std::numeric_limits<T>::min() || value > std::numeric_limits<T>::max())
            return std::nullopt;
    return static_cast<T>(std::move(value));
}

// Not declared extern: MinGW exports no inline members, so an unoptimised program instantiates its own.
using INIDocument = BasicINIDocument<char>;      ///< narrow form
using WINIDocument = BasicINIDocument<wchar_t>;  ///< wide form
