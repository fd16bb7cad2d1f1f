// SPDX-License-Identifier: MIT
/// @file
/// The table of commands and options, and the texts on all of them.

#include "qmini/Command.h"

namespace qmini {

namespace {

const Option Default = {"--default", "TEXT", "print TEXT when there is no such key", {}, &Call::Default};
const Option Nul = {"-z", "", "end each name with a NUL in place of a newline", &Call::EndsWithNul, {}};
const Option Activate = {"--activate", "", "make the key active if it is commented out", &Call::Activate, {}};
const Option KeepCommented = {
    "--keep-commented", "", "set a commented-out key and leave it commented out", &Call::KeepCommented, {}};
const Option With = {
    "--with", "CHAR", "comment out with CHAR, \"#\" (the default) or \";\"", {}, &Call::With};
const Option Descending = {"--descending", "", "sort from the last name to the first", &Call::Descending, {}};
const Option DryRun = {
    "--dry-run", "", "print the difference that the edit makes, and change nothing", &Call::DryRun, {}};
const Option Force = {
    "--force", "", "edit even if more changes than the edit was asked to", &Call::Force, {}};

Command Entry(Action* run, EditAction* edit, std::string_view name, std::string_view arguments,
              std::vector<const Option*> options, std::string_view summary, std::string_view details)
{
    return {run, edit, name, arguments, std::move(options), summary, details};
}

} // namespace

const std::vector<Command> Commands = {
    Entry(Get, nullptr, "get", "FILE SECTION KEY", {&Default}, "Prints the value of a key.",
          R"(The value of a commented-out key is printed as well; a note on standard error
says so. When the section holds the key twice, the first one counts.
)"),
    Entry(Keys, nullptr, "keys", "FILE SECTION", {&Nul}, "Prints the names of a section's keys.",
          R"(One name a line, in file order. Commented-out keys are included.
)"),
    Entry(Sections, nullptr, "sections", "FILE", {&Nul}, "Prints the names of the sections.",
          R"(One name for each header, in file order. Commented-out headers are included.
)"),
    Entry(Show, nullptr, "show", "FILE", {}, "Prints the file as it is understood.",
          R"(Prints each header and key with the comments above it, without anything else
that the file holds: blank lines, indentation, text after a header.
)"),
    Entry(CheckFile, nullptr, "check", "FILE", {}, "Reports what reading or an edit does unexpectedly.",
          R"(Prints a line "FILE:LINE: SEVERITY: TEXT" for everything in the file that is
read, or comes out of an edit, in a surprising way. These are warnings, and those
in the first two items make an edit be refused:

  - what an edit loses: a last line without a newline, comments below the last
    record, text after the "]" of a header, some lines that are no record;
  - what an edit changes: a line with a "[" anywhere, which is read as a header;
    a line without a key before its "="; a header with a "=" in its name; a line
    that is no record; a byte order mark, and a text in UTF-16;
  - what is read as something else: a comment with a "=" is a commented-out key
    (reported when its name holds blanks, as in a sentence);
  - names that hide others: duplicate sections and keys, and blanks around "=" and
    inside the brackets of a header, which belong to the name.

A header without "]" is an error: no operation can read the file. A note tells
where readers that know continuation lines join lines after an edit, since an
edit indents active lines by a space. Succeeds when there are no more than notes.
)"),
    Entry(nullptr, Set, "set", "FILE SECTION KEY VALUE", {&Activate, &KeepCommented, &DryRun, &Force},
          "Sets the value of a key.",
          R"(A new key becomes the first of its section; a new section goes to the end of
the file. Setting a commented-out key takes --activate or --keep-commented. A new
key that differs from another one by outer blanks only is refused. An error is
what would not be read back the same: a key that holds "[" or "=" or begins with
"#", ";" or a blank, a value that holds "[" or ends with a blank, a section name
that holds "]" or "=", and newlines.
)"),
    Entry(Create, nullptr, "create", "FILE", {&DryRun}, "Creates an empty file.",
          R"(A file that exists is left alone. With --dry-run nothing is printed, since an
empty file has no lines.
)"),
    Entry(nullptr, Add, "add", "FILE SECTION", {&DryRun, &Force}, "Adds an empty section at the end.",
          R"(The section must not exist. Its name cannot hold "]", "=" or a newline.
)"),
    Entry(nullptr, Delete, "delete", "FILE SECTION [KEY]", {&DryRun, &Force},
          "Deletes a key, or a whole section.",
          R"(The comments above what is deleted go as well. Of duplicate keys the first is
deleted; a section is deleted wherever its name stands.
)"),
    Entry(nullptr, Rename, "rename", "FILE OLD NEW", {&DryRun, &Force}, "Renames a section.",
          R"(Every header of the name OLD is renamed. A section NEW must not exist; its name
cannot hold "]", "=" or a newline.
)"),
    Entry(nullptr, Comment, "comment", "FILE SECTION [KEY]", {&With, &DryRun, &Force},
          "Comments out a key, or a whole section.",
          R"(Nothing is lost: "qmini uncomment" brings it back. Of duplicate keys the first
is commented out. What is commented out already gets the new character.
)"),
    Entry(nullptr, Uncomment, "uncomment", "FILE SECTION [KEY]", {&DryRun, &Force},
          "Makes a key, or a whole section, active.",
          R"(Of duplicate keys the first becomes active. A key whose name begins with "#" or
";" ("##key=value" in the file) loses one of these characters, and stays
commented out.
)"),
    Entry(nullptr, Sort, "sort", "FILE", {&Descending, &DryRun, &Force},
          "Sorts the sections, and the keys in each.",
          R"(Names are compared byte by byte, so "B" comes before "a". Comments move with the
line below them. Refused are files with keys above the first header, which would
be dropped, and with duplicate names: each header of a duplicate section would
get all keys of that name, and duplicate keys may change places.
)"),
    Entry(nullptr, Note, "note", "FILE SECTION [KEY] TEXT", {&DryRun, &Force},
          "Writes the comment above a key or a header.",
          R"(TEXT replaces the comments that stand there; an empty TEXT removes them. Each
line of TEXT that does not begin with "#" or ";" gets a "; " in front. A line
cannot hold "[" or "=", since it would be read as a record.
)"),
    Entry(EditBatch, nullptr, "edit", "FILE", {&DryRun, &Force}, "Makes the edits that standard input lists.",
          R"(Each line holds one of the commands above that edit, without FILE, --dry-run and
--force; for example: set Window title 'My "best" view'. Quotes, single or
double, enclose words that hold blanks, or nothing. Empty lines and lines that
begin with "#" are skipped. The file is read once and written once: all edits are
made, or none.
)"),
};

const std::vector<Topic> Topics = {
    {"Names", R"(Names must match exactly, letter case and blanks included. Keys above the first
header are in the section "". A FILE "-" is standard input; a command that edits
then prints the edited text. "--" ends the options, for arguments that begin with
"-".
)"},
    {"Edits", R"(An edit writes the whole file anew: every header and key gets one space in front
(or the character that comments it out), and blank lines go. Comments stay above
the line that they stood above. --dry-run prints the difference in the form that
"patch" takes.

An edit that would lose or change anything else is refused, and so is one of a
commented-out key that hides an active one. --force makes it anyway.
"qmini check" reports what any edit of the file loses.

The file stays the same file, with its links, owner and permissions. What was
written is read back; if it differs, the former content is put back. Meanwhile
FILE.qmini-save, beside the file, holds the former content. It stays only if
qmini is killed or the content cannot be put back, and keeps qmini from editing
the file until it is removed.
)"},
    {"Exit status", R"(  0  done
  1  failed, not found, or "check" reports more than notes
  2  usage error
  3  an edit that is refused; the file is as it was
)"},
};

} // namespace qmini
