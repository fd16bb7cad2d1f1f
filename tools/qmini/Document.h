#pragma once

/// @file
/// Loading documents, and editing a file by way of a document.

#include "qmini/Command.h"
#include "qmini/Files.h"

#include <functional>

namespace qmini {

/// @throws Failure when the input cannot be read, or holds a malformed header
INIDocument Load(const Input& input);

/// Edits the file of a call, or copies standard input to standard output with the edit made. Shows the
/// difference in place of that for a dry run.
/// @throws Failure, with nothing written, when the edit fails or is refused
void EditFile(const Call& call, const Streams& streams, const std::function<void(Editing&)>& edit);

} // namespace qmini
