#pragma once

/// @file
/// What other libraries do with an INI file, in the same terms.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

struct IniPeer
{
    std::string Name;
    /// Loads a file and returns a value.
    std::function<std::string(const std::string& path, const std::string& section, const std::string& key)>
        Get;
    /// Loads a file into the library's own list or tree and returns how many keys a section has.
    std::function<std::size_t(const std::string& path, const std::string& section)> Load;
    /// Loads a file, sets a value, and saves the file. Empty where the library cannot save.
    std::function<void(const std::string& path, const std::string& section, const std::string& key,
                       const std::string& value)>
        Set;
};

/// @return the peers that this program was built with.
std::vector<IniPeer> IniPeers();
