// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// INI libraries behind one interface: the constructor loads a file, `GetValue` looks up a setting,
/// `SetValue` changes one and returns whether it could, and `Save`, if any, writes the file.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"

#include <glib.h>
#include <ini.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// Ends the program when a library could not do its job, which makes its time worthless.
inline void Require(bool isDone) {
    if (!isDone) throw std::runtime_error("an INI library could not handle the file");
}

template <class Char>
struct Document : BasicINIDocument<Char> {
    explicit Document(const std::basic_string<Char>& path) { Require(this->Load(path)); }
};

/// The static operations: each loads the file, and each change is saved.
template <class Char>
struct Parser {
    using String = std::basic_string<Char>;

    const String& Path;

    explicit Parser(const String& path) : Path(path) {}
    String GetValue(const String& key, const String& section) const {
        return INIParser::GetValue(key, section, Path);
    }
    bool SetValue(const String& key, const String& value, const String& section) const {
        return INIParser::SetValue(key, value, section, Path);
    }
};

using Word = const std::string&;

struct GLib {
    std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> File{g_key_file_new(), &g_key_file_free};

    explicit GLib(Word path) {
        Require(g_key_file_load_from_file(File.get(), path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr));
    }
    std::string GetValue(Word key, Word section) const {
        return Own(g_key_file_get_value(File.get(), section.c_str(), key.c_str(), nullptr)).get();
    }
    bool SetValue(Word key, Word value, Word section) const {
        g_key_file_set_value(File.get(), section.c_str(), key.c_str(), value.c_str());
        return true;
    }
    /// Writes the text in place, with a single write.
    bool Save(Word path) const {
        gsize size = 0;
        const auto text = Own(g_key_file_to_data(File.get(), &size, nullptr));
        return bool(std::ofstream(path).write(text.get(), static_cast<std::streamsize>(size)).flush());
    }

    static std::unique_ptr<gchar, decltype(&g_free)> Own(gchar* text) {
        Require(text != nullptr);
        return {text, &g_free};
    }
};

/// The fastest library that only loads: it hands out each setting and keeps nothing, so a list keeps them.
struct Inih {
    struct Setting {
        std::string Section, Key, Value;
    };
    std::vector<Setting> Settings;

    explicit Inih(Word path) {
        const auto keep = [](void* settings, const char* section, const char* key, const char* value) {
            static_cast<std::vector<Setting>*>(settings)->push_back({section, key, value});
            return 1;
        };
        Require(ini_parse(path.c_str(), keep, &Settings) == 0);
    }
};
