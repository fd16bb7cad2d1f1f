#include "benchmarks/IniPeers.h"

#include <stdexcept>

#ifdef HAVE_SIMPLEINI
#define SI_NO_CONVERSION // bytes as they are, as in our narrow form
#define SI_IMPLEMENTATION
#include <SimpleIni.h>
#endif
#ifdef HAVE_GLIB
#include <glib.h>

#include <memory>
#endif
#ifdef HAVE_INIH
#include <ini.h>
#endif
#ifdef HAVE_BOOST
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#endif

namespace {

void Require(bool isDone)
{
    if (!isDone)
        throw std::runtime_error("a peer could not handle the file");
}

#ifdef HAVE_SIMPLEINI
IniPeer SimpleIni()
{
    const auto load = [](CSimpleIniCaseA& file, const std::string& path) {
        Require(file.LoadFile(path.c_str()) == SI_OK);
    };
    return {"SimpleIni",
            [=](const auto& path, const auto& section, const auto& key) {
                CSimpleIniCaseA file;
                load(file, path);
                return std::string(file.GetValue(section.c_str(), key.c_str(), ""));
            },
            [=](const auto& path, const auto& section) {
                CSimpleIniCaseA file;
                load(file, path);
                return static_cast<std::size_t>(file.GetSectionSize(section.c_str()));
            },
            [=](const auto& path, const auto& section, const auto& key, const auto& value) {
                CSimpleIniCaseA file;
                load(file, path);
                file.SetValue(section.c_str(), key.c_str(), value.c_str());
                Require(file.SaveFile(path.c_str(), false) == SI_OK);
            }};
}
#endif

#ifdef HAVE_GLIB
IniPeer GLib()
{
    const auto load = [](const std::string& path) {
        std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> file(g_key_file_new(), &g_key_file_free);
        Require(g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr));
        return file;
    };
    return {"GLib",
            [=](const auto& path, const auto& section, const auto& key) {
                const auto file = load(path);
                gchar* const text = g_key_file_get_value(file.get(), section.c_str(), key.c_str(), nullptr);
                Require(text != nullptr);
                std::string value = text;
                g_free(text);
                return value;
            },
            [=](const auto& path, const auto& section) {
                const auto file = load(path);
                gsize count = 0;
                g_strfreev(g_key_file_get_keys(file.get(), section.c_str(), &count, nullptr));
                return static_cast<std::size_t>(count);
            },
            [=](const auto& path, const auto& section, const auto& key, const auto& value) {
                const auto file = load(path);
                g_key_file_set_value(file.get(), section.c_str(), key.c_str(), value.c_str());
                Require(g_key_file_save_to_file(file.get(), path.c_str(), nullptr));
            }};
}
#endif

#ifdef HAVE_INIH
IniPeer Inih()
{
    // The library hands out each key and keeps nothing: a lookup compares, a load copies into a list.
    struct Lookup
    {
        const std::string& Section;
        const std::string& Key;
        std::string Value;
    };
    struct Entry
    {
        std::string Section;
        std::string Key;
        std::string Value;
    };
    return {"inih",
            [](const auto& path, const auto& section, const auto& key) {
                Lookup lookup = {section, key, {}};
                const auto compare = [](void* user, const char* s, const char* k, const char* v) {
                    auto& wanted = *static_cast<Lookup*>(user);
                    if (wanted.Section == s && wanted.Key == k)
                        wanted.Value = v;
                    return 1;
                };
                Require(ini_parse(path.c_str(), compare, &lookup) == 0);
                return lookup.Value;
            },
            [](const auto& path, const auto&) {
                std::vector<Entry> entries;
                const auto keep = [](void* user, const char* s, const char* k, const char* v) {
                    static_cast<std::vector<Entry>*>(user)->push_back({s, k, v});
                    return 1;
                };
                Require(ini_parse(path.c_str(), keep, &entries) == 0);
                return entries.size();
            },
            {}};
}
#endif

#ifdef HAVE_BOOST
IniPeer BoostPropertyTree()
{
    namespace pt = boost::property_tree;
    const auto load = [](const std::string& path) {
        pt::ptree tree;
        pt::read_ini(path, tree);
        return tree;
    };
    return {"Boost.PropertyTree",
            [=](const auto& path, const auto& section, const auto& key) {
                return load(path).get_child(section).template get<std::string>(key);
            },
            [=](const auto& path, const auto& section) { return load(path).get_child(section).size(); },
            [=](const auto& path, const auto& section, const auto& key, const auto& value) {
                pt::ptree tree = load(path);
                tree.get_child(section).put(key, value);
                pt::write_ini(path, tree);
            }};
}
#endif

} // namespace

std::vector<IniPeer> IniPeers()
{
    return {
#ifdef HAVE_SIMPLEINI
        SimpleIni(),
#endif
#ifdef HAVE_GLIB
        GLib(),
#endif
#ifdef HAVE_INIH
        Inih(),
#endif
#ifdef HAVE_BOOST
        BoostPropertyTree(),
#endif
    };
}
