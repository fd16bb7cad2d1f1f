// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/ini/INIDocument.h"

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

constexpr auto Common = INISyntax::Common;
constexpr auto Parser = INISyntax::Parser;
constexpr auto Hash = INICommentChar::Hash;
constexpr auto Semicolon = INICommentChar::Semicolon;
#define BOM "\xEF\xBB\xBF"
/// The edits that both classes make with the same arguments, each as an argument of a macro `EDIT`.
// clang-format off
#define EDITS                                                                                                \
    EDIT(SetValue) EDIT(AddSection) EDIT(DeleteRecord) EDIT(DeleteSection) EDIT(RenameSection)               \
    EDIT(CommentRecord) EDIT(CommentSection) EDIT(UnCommentRecord) EDIT(UnCommentSection)                    \
    EDIT(SetRecordComments) EDIT(SetSectionComments)
// clang-format on

/// @return records, or views of them, each as "comments|Commented|Section|Key|Value" and a newline.
std::string Flat(const auto& records) {
    std::string all;
    const auto add = [&](const auto& field, char end) { all.append(field.begin(), field.end()) += end; };
    for (const auto& record : records) {
        add(std::invoke(&std::decay_t<decltype(record)>::Comments, record), '|');
        add(std::vector{record.Commented}, '|'), add(record.Section, '|');
        add(record.Key, '|'), add(record.Value, '\n');
    }
    return all;
}
