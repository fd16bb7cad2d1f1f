// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/Export.h"
#include "qmUtility/ini/INIRecord.h"

#include <string>
#include <vector>

/// Reads and edits INI files named by their path.
///
///     INIParser::Create("app.ini");
///     INIParser::SetValue("Width", "800", "Window", "app.ini");       // key, value, section, path
///     auto width = INIParser::GetValue("Width", "Window", "app.ini"); // "800"; empty if there is none
///     INIParser::CommentRecord(INIParser::CommentChar::Hash, "Width", "Window", "app.ini");
///
/// Each call reads the whole file once; an edit rewrites it in place, and none creates a file.
/// docs/ini-format.md specifies how a file is read, what a rewrite changes, and how characters are converted.
///
/// **Names** are compared by code unit. Commented-out records are found like active ones. Of several matches
/// the first in the file counts. An empty key names the section's header.
///
/// **Paths** are used as given. A wide path is UTF-8 where the system's paths are bytes. A path with a NUL,
/// and a wide one that is not valid Unicode, name no file.
///
/// **Failure.** For a file that cannot be opened, read to its end or decoded, lookups return nothing,
/// existence tests true, and edits false, without writing. Edits also return false when the file cannot be
/// opened for writing. Later errors, such as a full disk, are not reported. Edits of one record, except
/// `SetValue`, return false and write nothing when there is none; those of a section, except
/// `SetSectionComments`, return true even then.
/// @throws INIFormatError from every operation that reads, for a header line without a "]" after its first
///   character; the file is unchanged.
/// @throws std::bad_alloc when memory runs out; the file is unchanged.
///
/// **Threads.** Any thread may call. Of two simultaneous edits of a file, one is lost.
class QMUTILITY_API INIParser {
public:
    using Record = BasicINIRecord<char>;      ///< of the narrow form
    using WRecord = BasicINIRecord<wchar_t>;  ///< of the wide form
    using CommentChar = INICommentChar;       ///< argument of `CommentRecord`

    INIParser();                             ///< Instances are stateless.
    INIParser(const INIParser&);             ///< Instances are stateless.
    INIParser& operator=(const INIParser&);  ///< Instances are stateless.
    virtual ~INIParser();

    /// @name Whole files
    /// @{

    /// Creates an empty file. An existing file is truncated.
    static bool Create(std::string path);

    /// @return the file as a rewrite would write it, without the space before active lines; newlines are
    ///   "\n". Empty when there are no records or the file cannot be read.
    static std::string Content(std::string path);

    /// Sorts the sections, and the keys of each section, by name, byte by byte. Each header is followed by
    /// all keys of its name: a name with two headers gets its keys twice, and keys above the first header are
    /// dropped. The order of equal names is unspecified.
    /// @param path of the file.
    /// @param descending true for descending order, of sections and keys alike.
    /// @return false also, and nothing is written, when the file has no section record.
    static bool Sort(std::string path, bool descending);

    /// @}
    /// @name Lookups
    /// @{

    /// @return the first record of this key and section, or nothing.
    static std::vector<Record> GetRecord(std::string key, std::string section, std::string path);
    /// @overload
    static std::vector<WRecord> GetRecord(std::wstring key, std::wstring section, std::wstring path);

    /// @return the value of the first record of this key and section; empty when there is none.
    static std::string GetValue(std::string key, std::string section, std::string path);
    static std::wstring GetValue(std::wstring key, std::wstring section, std::wstring path);  ///< @overload

    /// @return all key records of the section, in file order, under all headers of that name.
    static std::vector<Record> GetSection(std::string section, std::string path);

    /// @return the `Section` of every section record, in file order; a name with two headers occurs twice.
    static std::vector<std::string> GetSectionNames(std::string path);

    /// @return whether there is a record of this key and section.
    static bool RecordExists(std::string key, std::string section, std::string path);
    static bool RecordExists(std::wstring key, std::wstring section, std::wstring path);  ///< @overload

    /// @return whether any record, header or key, has this section name.
    static bool SectionExists(std::string section, std::string path);
    static bool SectionExists(std::wstring section, std::wstring path);  ///< @overload

    /// @}
    /// @name Edits
    /// @{

    /// Sets the value of the first record of this key and section, which stays commented out if it was. A
    /// missing key is added as the first of its section, a missing section at the end of the file.
    static bool SetValue(std::string key, std::string value, std::string section, std::string path);
    /// @overload
    static bool SetValue(std::wstring key, std::wstring value, std::wstring section, std::wstring path);

    /// Adds a section header at the end of the file, also when there is one of that name already.
    static bool AddSection(std::string section, std::string path);

    /// Removes the first record of this key and section with the comments above it.
    static bool DeleteRecord(std::string key, std::string section, std::string path);

    /// Removes every record of the section with the comments above them.
    static bool DeleteSection(std::string section, std::string path);

    /// Gives every record of section `oldName` the section name `newName`, which may already exist.
    static bool RenameSection(std::string oldName, std::string newName, std::string path);

    /// Comments out the first record of this key and section, or changes the character that comments it out.
    static bool CommentRecord(CommentChar character, std::string key, std::string section, std::string path);

    /// Comments out every record of the section, including its headers.
    /// @param character stored as given: any other than "#" and ";" is read back as part of the line.
    /// @param section its name.
    /// @param path of the file.
    static bool CommentSection(char character, std::string section, std::string path);

    /// Makes the first record of this key and section active.
    static bool UnCommentRecord(std::string key, std::string section, std::string path);

    /// Makes every record of the section active, including its headers.
    static bool UnCommentSection(std::string section, std::string path);

    /// Replaces the comments above the first record of this key and section.
    /// @param comments the comment lines exactly as written to the file, with their "#" or ";". A "\n" is
    ///   appended to a text of two characters or more, even to one that ends in "\n"; a shorter one is stored
    ///   as it is. Empty removes the comments.
    /// @param key of the record; empty for the section's header.
    /// @param section its name.
    /// @param path of the file.
    static bool SetRecordComments(std::string comments, std::string key, std::string section,
                                  std::string path);

    /// Replaces the comments above the section's first header, as `SetRecordComments` does.
    static bool SetSectionComments(std::string comments, std::string section, std::string path);

    /// @}

private:
    template <class Char>
    struct QMUTILITY_PRIVATE List;

    template <class Char>
    QMUTILITY_PRIVATE static bool Load(std::basic_string<Char> path, List<Char>& list);
    template <class Char>
    QMUTILITY_PRIVATE static bool Save(std::basic_string<Char> path, const List<Char>& list);
};
