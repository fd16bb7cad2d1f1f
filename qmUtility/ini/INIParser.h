// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Reading and editing INI files named by their path.

#include "qmUtility/Export.h"
#include "qmUtility/ini/INIRecord.h"

#include <string>
#include <vector>

/// Reads and edits INI files named by their path. Every operation is a static member function. For an
/// application's settings use `INIDocument`, which is read once, edited many times and saved safely.
///
/// **Operations.** Each call reads the whole file once. One that edits changes the list of records in memory
/// and writes the whole file back. Nothing is kept between calls.
///
/// **A rewrite** truncates the file and writes it in place: links, inode, mode and owner stay, one flush for
/// each record. Meanwhile another process can see a part of the file, and a process that is killed leaves a
/// part of it. A rewrite does not keep blank lines, white space around lines, text after a header's "]",
/// comments below the last record, and a last line without a newline; docs/ini-format.md has every case.
///
/// **Narrow and wide form.** A narrow rewrite begins each active line with a space, intentionally. Programs
/// that support continuation lines take such a line for a part of the one above. A wide rewrite writes no
/// such space, and an empty line before each header but the first.
///
/// **Arguments.** The path comes last, and the key before the section's name. All are copied.
///
/// **Names** match when they have the same length and the same code units (bytes, or `wchar_t` in the wide
/// form): they are neither trimmed nor case-folded. Commented-out records are found like active ones. Of
/// several matches the first in the file counts. An empty key names the section's header.
///
/// **Paths** are used as given. A wide path is passed on as UTF-8 where the system's paths are bytes. A path
/// that holds a NUL, and a wide one that is not valid Unicode, name no file.
///
/// **Characters.** The narrow form keeps bytes as they are. The wide form maps each byte to the `wchar_t` of
/// the same value and back, unless the global C++ locale has a conversion of its own, which then applies.
/// Byte order marks are ordinary characters, and so is Ctrl-Z on Windows.
///
/// **Failure.** A file that cannot be opened, read to its end (a directory, a read error) or decoded by the
/// global locale gives an empty result from an operation that returns data, false from one that edits, which
/// then writes nothing, and true from `RecordExists` and `SectionExists`. Errors after the file is open for
/// writing, such as a full disk, are not reported.
///
/// @throws INIFormatError from every operation that reads, when the file holds a header line without a "]"
///   after its first character; the file is unchanged.
/// @throws std::bad_alloc when memory runs out; the file is unchanged.
///
/// **Threads.** Any thread may call; there is no shared state. Nothing protects a file from two writers: the
/// later one wins.
class QMUTILITY_API INIParser
{
public:
    using Record = BasicINIRecord<char>;     ///< of the narrow form
    using WRecord = BasicINIRecord<wchar_t>; ///< of the wide form
    using CommentChar = INICommentChar;      ///< what `CommentRecord` takes

    INIParser(); ///< Instances are stateless.
    INIParser(const INIParser&);
    INIParser& operator=(const INIParser&);
    virtual ~INIParser();

    /// @name Whole files
    /// @{

    /// Creates an empty file. An existing file is truncated.
    /// @return false when the file cannot be opened for writing.
    static bool Create(std::string path);

    /// @return the file's records as text, each line terminated by "\n", without the blank lines and outer white
    ///   space of the file, and without the space before active lines. Empty when there are no records or the
    ///   file cannot be read.
    static std::string Content(std::string path);

    /// Rewrites the file with its sections ordered by name and, inside each section, the keys by name (byte
    /// by byte, so "B" comes before "a"). Each section record is followed by all keys of its name from the
    /// whole file: a name with two headers gets its keys twice, and keys of a section without a header (those
    /// above the first one) are dropped. The order of equal names is unspecified.
    /// @param path of the file.
    /// @param descending true for descending order, of sections and keys alike.
    /// @return false, and nothing is written, when the file has no section record or cannot be read; false
    ///   when it cannot be opened for writing.
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
    /// @overload
    static std::wstring GetValue(std::wstring key, std::wstring section, std::wstring path);

    /// @return all key records of the section, in file order, those under further headers of that name
    /// included.
    static std::vector<Record> GetSection(std::string section, std::string path);

    /// @return the `Section` of every section record, in file order; a name with two headers occurs
    /// twice.
    static std::vector<std::string> GetSectionNames(std::string path);

    /// @return whether there is a record of this key and section; true also for a file that cannot be read.
    static bool RecordExists(std::string key, std::string section, std::string path);
    /// @overload
    static bool RecordExists(std::wstring key, std::wstring section, std::wstring path);

    /// @return whether any record, header or key, carries this section name; true also for a file that cannot
    ///   be read.
    static bool SectionExists(std::string section, std::string path);
    /// @overload
    static bool SectionExists(std::wstring section, std::wstring path);

    /// @}
    /// @name Edits
    /// All return false, and write nothing, when the file cannot be read, and false when it cannot be opened
    /// for writing. None creates a file.
    /// @{

    /// Sets the value of the first record of this key and section, which stays commented out if it was. A
    /// missing key is added as the first of its section, a missing section at the end of the file.
    static bool SetValue(std::string key, std::string value, std::string section, std::string path);
    /// @overload
    static bool SetValue(std::wstring key, std::wstring value, std::wstring section, std::wstring path);

    /// Adds a section header at the end of the file, also when there is one of that name already.
    static bool AddSection(std::string section, std::string path);

    /// Removes the first record of this key and section with the comments above it.
    /// @return false also when there is no such record; the file is then not rewritten.
    static bool DeleteRecord(std::string key, std::string section, std::string path);

    /// Removes every record of the section with the comments above them. Returns true even if the section has
    /// no records.
    static bool DeleteSection(std::string section, std::string path);

    /// Gives every record of section `oldName` the section name `newName`, which may already exist. Returns
    /// true even if the section has no records.
    static bool RenameSection(std::string oldName, std::string newName, std::string path);

    /// Comments out the first record of this key and section, or changes the character that comments it out.
    /// @return false also when there is no such record; the file is then not rewritten.
    static bool CommentRecord(CommentChar character, std::string key, std::string section, std::string path);

    /// Comments out every record of the section, its headers included. Returns true even if the section has no
    /// records.
    /// @param character stored as given: one that is neither "#" nor ";" comes back as part of the line.
    /// @param section its name.
    /// @param path of the file.
    static bool CommentSection(char character, std::string section, std::string path);

    /// Makes the first record of this key and section active.
    /// @return false also when there is no such record; the file is then not rewritten.
    static bool UnCommentRecord(std::string key, std::string section, std::string path);

    /// Makes every record of the section active, its headers included. Returns true even if the section has no
    /// records.
    static bool UnCommentSection(std::string section, std::string path);

    /// Replaces the comments above the first record of this key and section.
    /// @param comments the comment lines exactly as written to the file, with their "#" or ";". A "\n" is
    ///   appended to a text of two characters or more, even to one that ends in "\n"; a shorter one is stored
    ///   as it is. Empty removes the comments.
    /// @param key of the record; empty for the section's header.
    /// @param section its name.
    /// @param path of the file.
    /// @return false also when there is no such record; the file is then not rewritten.
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
