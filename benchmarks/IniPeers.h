// SPDX-License-Identifier: MIT
#pragma once

/// @file
/// INI libraries behind one interface: the constructor loads a file, `GetValue` looks up a setting,
/// `SetValue` changes one, and `Text` returns what the library saves. The others are present where their
/// headers are.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"

#include <stdexcept>
#include <string>
#include <vector>

#if __has_include(<SimpleIni.h>)
#define HAVE_SIMPLEINI
#define SI_NO_CONVERSION // bytes as they are, as in the library's narrow form
#define SI_IMPLEMENTATION
#include <SimpleIni.h>
#endif
#if __has_include(<glib.h>)
#define HAVE_GLIB
#include <glib.h>

#include <memory>
#endif
#if __has_include(<ini.h>)
#define HAVE_INIH
#include <ini.h>
#endif
#if __has_include(<boost/property_tree/ini_parser.hpp>)
#define HAVE_BOOST
#include <boost/property_tree/ini_parser.hpp>

#include <sstream>
#endif

/// Ends the program when a library could not do its job, which makes its time worthless.
inline void Require(bool isDone)
{
    if (!isDone)
        throw std::runtime_error("an INI library could not handle the file");
}

/// The static operations: each loads the file, and each change is saved.
template <class C>
class Parser
{
public:
    using Char = C;
    using String = std::basic_string<Char>;

    explicit Parser(const String& path) : m_path(path) {}

    String GetValue(const String& key, const String& section) const
    {
        return INIParser::GetValue(key, section, m_path);
    }

    void SetValue(const String& key, const String& value, const String& section)
    {
        Require(INIParser::SetValue(key, value, section, m_path));
    }

private:
    const String& m_path;
};

/// A document, which saves its text itself.
template <class C>
struct Document : BasicINIDocument<C>
{
    using Char = C;
    using String = std::basic_string<Char>;

    explicit Document(const String& path) { Require(this->Load(path)); }

    void SetValue(const String& key, const String& value, const String& section)
    {
        Require(BasicINIDocument<C>::SetValue(key, value, section));
    }
};

#ifdef HAVE_SIMPLEINI
class SimpleIni
{
public:
    using Char = char;

    explicit SimpleIni(const std::string& path) { Require(m_file.LoadFile(path.c_str()) == SI_OK); }

    std::string GetValue(const std::string& key, const std::string& section) const
    {
        return m_file.GetValue(section.c_str(), key.c_str(), "");
    }

    void SetValue(const std::string& key, const std::string& value, const std::string& section)
    {
        m_file.SetValue(section.c_str(), key.c_str(), value.c_str());
    }

    std::string Text() const
    {
        std::string text;
        Require(m_file.Save(text) == SI_OK);
        return text;
    }

private:
    CSimpleIniCaseA m_file;
};
#endif

#ifdef HAVE_GLIB
class GLib
{
public:
    using Char = char;

    explicit GLib(const std::string& path)
    {
        Require(g_key_file_load_from_file(m_file.get(), path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr));
    }

    std::string GetValue(const std::string& key, const std::string& section) const
    {
        return Own(g_key_file_get_value(m_file.get(), section.c_str(), key.c_str(), nullptr)).get();
    }

    void SetValue(const std::string& key, const std::string& value, const std::string& section)
    {
        g_key_file_set_value(m_file.get(), section.c_str(), key.c_str(), value.c_str());
    }

    std::string Text() const { return Own(g_key_file_to_data(m_file.get(), nullptr, nullptr)).get(); }

private:
    static std::unique_ptr<gchar, decltype(&g_free)> Own(gchar* text)
    {
        Require(text != nullptr);
        return {text, &g_free};
    }

    std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> m_file{g_key_file_new(), &g_key_file_free};
};
#endif

#ifdef HAVE_INIH
/// The library hands out each setting and keeps nothing: loading copies them into a list. It cannot save.
class Inih
{
public:
    using Char = char;

    explicit Inih(const std::string& path)
    {
        const auto keep = [](void* settings, const char* section, const char* key, const char* value) {
            static_cast<std::vector<Setting>*>(settings)->push_back({section, key, value});
            return 1;
        };
        Require(ini_parse(path.c_str(), keep, &m_settings) == 0);
    }

    std::string GetValue(const std::string& key, const std::string& section) const
    {
        for (const Setting& setting : m_settings)
            if (setting.Key == key && setting.Section == section)
                return setting.Value;
        return {};
    }

    /// Returns one setting without loading the others, which is the fastest lookup here.
    static std::string Find(const std::string& path, const std::string& section, const std::string& key)
    {
        Setting wanted = {section, key, {}};
        const auto compare = [](void* user, const char* s, const char* k, const char* v) {
            auto& setting = *static_cast<Setting*>(user);
            if (setting.Key == k && setting.Section == s)
                setting.Value = v;
            return 1;
        };
        Require(ini_parse(path.c_str(), compare, &wanted) == 0);
        return wanted.Value;
    }

private:
    struct Setting
    {
        std::string Section;
        std::string Key;
        std::string Value;
    };

    std::vector<Setting> m_settings;
};
#endif

#ifdef HAVE_BOOST
class PropertyTree
{
public:
    using Char = char;

    explicit PropertyTree(const std::string& path) { boost::property_tree::read_ini(path, m_tree); }

    std::string GetValue(const std::string& key, const std::string& section) const
    {
        return m_tree.get_child(section).get<std::string>(key);
    }

    void SetValue(const std::string& key, const std::string& value, const std::string& section)
    {
        m_tree.get_child(section).put(key, value);
    }

    std::string Text() const
    {
        std::ostringstream text;
        boost::property_tree::write_ini(text, m_tree);
        return text.str();
    }

private:
    boost::property_tree::ptree m_tree;
};
#endif
