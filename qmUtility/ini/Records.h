// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// The records that `INIParser` makes of the lines of a text.

#include "qmUtility/ini/Grammar.h"
#include "qmUtility/ini/INIRecord.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace ini {

/// A record as views into the text that it was read from; see `BasicINIRecord`.
template <class Char>
struct RecordView {
    View<Char> Comments = {};
    Char Commented = Char(' ');
    View<Char> Section = {};
    View<Char> Key = {};
    View<Char> Value = {};
};

/// Throws the error of a malformed header.
/// @param line begins there in the text
template <class Char>
[[noreturn]] void ThrowMalformed(View<Char> text, const Char* line) {
    throw INIFormatError(static_cast<std::size_t>(std::count(text.data(), line, Char('\n'))) + 1);
}

/// Calls `visit` with the `RecordView` of each record of a text. Its `Comments` is the range of the text that
/// holds the comment lines; see `TidyComments`.
/// @throws INIFormatError for a malformed header
template <class Char, class Visitor>
void Scan(View<Char> text, Visitor&& visit) {
    View<Char> section;
    View<Char> comments;  // from the first pending comment to the newline of the last
    ScanLines<INISyntax::Parser>(text, [&](const Line<Char>& line) {
        if (line.Kind == LineKind::Blank) return;  // comments stay pending
        if (line.Kind == LineKind::Comment) {
            const Char* const begin = comments.empty() ? line.Text().data() : comments.data();
            comments = {begin, static_cast<std::size_t>(line.Raw.data() + line.Raw.size() - begin)};
            return;
        }
        if (line.Kind == LineKind::MalformedHeader) ThrowMalformed(text, line.Raw.data());
        if (line.Kind == LineKind::Other && !comments.empty())
            return;  // else it makes a record, empty in all its fields
        if (line.Kind == LineKind::Header) {
            section = line.Section;
            if (line.HasKey) comments = {};  // the comments above a header with "=" in its name are lost
        }
        visit(RecordView<Char>{std::exchange(comments, {}), line.Commented,
                               line.Kind == LineKind::Other ? View<Char>() : section, line.Key, line.Value});
    });
}

/// Brings a range of comment lines that `Scan` has found into the form of a record's `Comments`, in place:
/// each line trimmed and followed by one newline, without the lines between them that are blank or made no
/// record. It never gets longer.
/// @param text that holds the range
template <class Char>
View<Char> TidyComments(Char* text, View<Char> range) {
    Char* const begin = range.empty() ? text : text + (range.data() - text);
    Char* end = begin;
    ScanLines<INISyntax::Parser>(range, [&](const Line<Char>& line) {
        if (line.Kind != LineKind::Comment) return;
        const View<Char> comment = line.Text();  // before it is overwritten
        end = std::char_traits<Char>::move(end, comment.data(), comment.size()) + comment.size();
        *end++ = Char('\n');
    });
    return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace ini
