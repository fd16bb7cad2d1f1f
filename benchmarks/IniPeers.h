// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// INI libraries behind one interface: the constructor loads a file, `GetValue` looks up a setting,
/// `SetValue` changes one and returns whether it could, and `Text` returns what the library saves.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"

#include <ini.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#define SI_NO_CONVERSION  // bytes as they are, as in the library's narrow form
#define SI_IMPLEMENTATION
#include <SimpleIni.h>
#include <glib.h>

/// Ends the program when a library could not do its job, which makes its time worthless.
inline void Require(bool isDone) {
    if (!isDone) throw std::runtime_error("an INI library could not handle the file");
}

/// A document, which saves its text itself.
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

struct SimpleIni {
    CSimpleIniCaseA File;

    explicit SimpleIni(Word path) { Require(File.LoadFile(path.c_str()) == SI_OK); }
    std::string GetValue(Word key, Word section) const {
        return File.GetValue(section.c_str(), key.c_str(), "");
    }
    bool SetValue(Word key, Word value, Word section) {
        return File.SetValue(section.c_str(), key.c_str(), value.c_str()) >= 0;
    }
    std::string Text() const {
        std::string text;
        Require(File.Save(text) == SI_OK);
        return text;
    }
};

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
    std::string Text() const { return Own(g_key_file_to_data(File.get(), nullptr, nullptr)).get(); }

    static std::unique_ptr<gchar, decltype(&g_free)> Own(gchar* text) {
        Require(text != nullptr);
        return {text, &g_free};
    }
};

/// The library hands out each setting and keeps nothing: loading copies them into a list. It cannot save.
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
    std::string GetValue(Word key, Word section) const {
        for (const Setting& setting : Settings)
            if (setting.Key == key && setting.Section == section) return setting.Value;
        return {};
    }
};
