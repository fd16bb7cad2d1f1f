// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// Loading documents, finding names in them, and editing a file by way of a document.

#include "qmini/Command.h"
#include "qmini/Files.h"

#include <functional>

namespace qmini {

/// @throws Failure when the input cannot be read, or holds a malformed header
INIDocument Load(const Input& input);

/// @param key empty for the section itself
/// @return the name of a key of the section, or of a section, that is the same but for outer blanks, and letter
///   case if that is ignored
std::optional<std::string> SimilarName(const INIDocument& document, std::string_view key,
                                       std::string_view section, bool ignoresCase);

/// Makes sure that the section has the key.
/// @param key empty for the section itself, which may lack a header
/// @throws Failure that says what is missing, and which similar name there is
void Require(const INIDocument& document, std::string_view key, std::string_view section,
             const std::string& file);

/// @return whether the key is commented out; if so, whether an active one follows
std::optional<bool> IsCommentedOut(const INIDocument& document, std::string_view key,
                                   std::string_view section);

/// Edits the file of a call, or copies standard input to standard output with the edit made. Shows the
/// difference in place of that for a dry run.
/// @throws Failure, with nothing written, when the edit fails or is refused
void EditFile(const Call& call, const Streams& streams, const std::function<void(Editing&)>& edit);

} // namespace qmini
