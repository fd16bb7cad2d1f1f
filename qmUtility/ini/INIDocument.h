// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// An INI file in memory: read once, looked up and edited many times, written once.

#include "qmUtility/Export.h"
#include "qmUtility/ini/INIParser.h"

#include <cstddef>
#include <locale>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// An INI file in memory: the list of its records, in file order. Use it instead of `INIParser`, whose
/// operations read the file on each call, for several lookups or edits of one file.
///
/// **Operations** are those of `INIParser` without the path, in both widths: what is said there about names,
/// keys, results and the form of a saved file holds here as well.
///
/// **Edits** change the list in memory only, and their effect is not parsed: a value with a "[" stays as it
/// is until the document is saved and loaded, where its line becomes a header.
///
/// **Characters.** `WINIDocument` converts by the global C++ locale as it is at `Load` (for a document that
/// was never loaded: at construction) and saves by the same one. `INIDocument` keeps bytes as they are.
///
/// **Complexity.** `Load`, `Save` and `Content` take linear time in the size of the file, lookups and edits
/// in the number of records, `Sort` n log n in that of its result. Replaced texts are released after some
/// further edits.
///
/// **Failure.** An operation that throws (std::bad_alloc, unless stated otherwise) leaves the document as it
/// was.
///
/// **Threads.** Several threads may read a document that none edits. Copies are independent of one another.
template <class Char>
class QMUTILITY_API BasicINIDocument
{
public:
    using String = std::basic_string<Char>;      ///< a text of this width
    using View = std::basic_string_view<Char>;   ///< an argument of this width, not kept
    using Record = INIParser::BasicRecord<Char>; ///< a copy of a record
    /// Views into the document, valid until it is next edited, loaded, assigned or destroyed.
    using RecordView = INIParser::BasicRecordView<Char>;

    BasicINIDocument();                                  ///< an empty file
    BasicINIDocument(const BasicINIDocument& other);     ///< shares the loaded text, which never changes
    BasicINIDocument(BasicINIDocument&& other) noexcept; ///< leaves an empty file behind
    BasicINIDocument& operator=(const BasicINIDocument& other);     ///< see the copy constructor
    BasicINIDocument& operator=(BasicINIDocument&& other) noexcept; ///< leaves an empty file behind
    ~BasicINIDocument();

    /// @name Whole files
    /// @{

    /// Replaces the document by a file.
    /// @return false when the file cannot be opened, read to its end, or decoded; the document is then as it
    ///   was.
    /// @throws std::out_of_range ("invalid string position") for a header line without a "]" after its first
    ///   character.
    bool Load(const String& path);

    /// Writes the document to a file, in place; a missing file is created.
    /// @return false when the file cannot be opened for writing. Errors after that are not detected.
    bool Save(const String& path) const;

    /// @return the text that `Save` encodes and writes, with "\n" for each newline.
    String SavedText() const;

    /// @return the document as text; see `INIParser::Content`.
    String Content() const;

    /// Sorts sections and keys; see `INIParser::Sort`.
    /// @return false, and nothing is changed, when there is no section record.
    bool Sort(bool descending);

    /// @}
    /// @name Lookups
    /// @{

    std::vector<Record> GetRecord(View key, View section) const; ///< see `INIParser::GetRecord`
    String GetValue(View key, View section) const;               ///< see `INIParser::GetValue`
    std::vector<Record> GetSection(View section) const;          ///< see `INIParser::GetSection`
    std::vector<String> GetSectionNames() const;                 ///< see `INIParser::GetSectionNames`
    bool RecordExists(View key, View section) const;             ///< see `INIParser::RecordExists`
    bool SectionExists(View section) const;                      ///< see `INIParser::SectionExists`

    /// Iterates over all records in file order.
    typename std::vector<RecordView>::const_iterator begin() const { return m_records.begin(); }
    typename std::vector<RecordView>::const_iterator end() const { return m_records.end(); } ///< see `begin`

    /// @}
    /// @name Edits
    /// All return true, except `DeleteRecord`, `CommentRecord`, `UnCommentRecord`, `SetRecordComments` and
    /// `SetSectionComments`, which return false, and change nothing, when there is no such record.
    /// @{

    bool SetValue(String key, String value, String section); ///< see `INIParser::SetValue`
    bool AddSection(String section);                         ///< see `INIParser::AddSection`
    bool DeleteRecord(String key, String section);           ///< see `INIParser::DeleteRecord`
    bool DeleteSection(String section);                      ///< see `INIParser::DeleteSection`
    bool RenameSection(String oldName, String newName);      ///< see `INIParser::RenameSection`
    bool CommentRecord(INIParser::CommentChar character, String key,
                       String section);                  ///< see `INIParser::CommentRecord`
    bool CommentSection(Char character, String section); ///< see `INIParser::CommentSection`
    bool UnCommentRecord(String key, String section);    ///< see `INIParser::UnCommentRecord`
    bool UnCommentSection(String section);               ///< see `INIParser::UnCommentSection`
    bool SetRecordComments(String comments, String key,
                           String section);                   ///< see `INIParser::SetRecordComments`
    bool SetSectionComments(String comments, String section); ///< see `INIParser::SetSectionComments`

    /// @}

private:
    using Records = std::vector<RecordView>;
    enum : std::size_t
    {
        FewTexts = 16 ///< not worth looking for unused ones
    };

    QMUTILITY_PRIVATE View Keep(String text);
    QMUTILITY_PRIVATE void DropUnusedTexts();
    template <class Change>
    QMUTILITY_PRIVATE bool ChangeRecord(View key, View section, Change change);
    template <class Change>
    QMUTILITY_PRIVATE bool ChangeSection(View section, Change change);

    Records m_records;                                 ///< views into the texts below
    std::shared_ptr<const Char[]> m_text;              ///< what was loaded; never changed, so copies share it
    std::vector<std::shared_ptr<const String>> m_kept; ///< texts of edits; never changed either
    std::size_t m_dropAt = FewTexts;                   ///< number of kept texts to look for unused ones at
    std::locale m_locale;                              ///< converts between bytes and `wchar_t`
};

extern template class QMUTILITY_API BasicINIDocument<char>;
extern template class QMUTILITY_API BasicINIDocument<wchar_t>;

using INIDocument = BasicINIDocument<char>;     ///< narrow form
using WINIDocument = BasicINIDocument<wchar_t>; ///< wide form
