#pragma once

/// @file
/// Finding names, and what to say when they are not there.

#include "qmUtility/ini/INIDocument.h"

#include <optional>
#include <string>
#include <string_view>

namespace qmini {

std::string Quoted(std::string_view text);

/// @return the key of the section that is this one but for outer blanks
std::optional<std::string> KeyWithOtherBlanks(const INIDocument& document, std::string_view key,
                                              std::string_view section);

/// @param key empty for the section itself
/// @throws Failure that says what is missing, and which similar name there is
[[noreturn]] void ThrowNotFound(const INIDocument& document, std::string_view key, std::string_view section,
                                const std::string& file);

/// Makes sure that the section has the key.
/// @param key empty for the section itself, which may lack a header
/// @throws Failure, as `ThrowNotFound`
void Require(const INIDocument& document, std::string_view key, std::string_view section,
             const std::string& file);

/// @return whether the key is commented out; if so, whether an active one follows
std::optional<bool> IsCommentedOut(const INIDocument& document, std::string_view key,
                                   std::string_view section);

} // namespace qmini
