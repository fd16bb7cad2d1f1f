// SPDX-License-Identifier: MIT
/// @file
/// INI operations beside other libraries and beside a lower bound: to read a file, one read and a search for
/// every newline; to write one, a write for each record. Names are job/library/KiB.

#include "benchmarks/IniPeers.h"
#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string_view>

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens a file without a buffer, so that each call is one of the system.
File Open(const std::string& path, const char* mode)
{
    File file(std::fopen(path.c_str(), mode), std::fclose);
    Require(file && std::setvbuf(file.get(), nullptr, _IONBF, 0) == 0);
    return file;
}

void WriteEach(const std::string& path, const std::vector<std::string_view>& pieces)
{
    const File file = Open(path, "w");
    for (const std::string_view piece : pieces)
        Require(std::fwrite(piece.data(), 1, piece.size(), file.get()) == piece.size());
}

/// Splits a text into its records: each ends with its first line that is neither empty nor a comment.
std::vector<std::string_view> Records(std::string_view text)
{
    std::vector<std::string_view> records;
    for (std::size_t start = 0, line = 0; line < text.size();) {
        const bool isRecord = text[line] != '#' && text[line] != '\n';
        line = std::min(text.find('\n', line), text.size() - 1) + 1;
        if (isRecord) {
            records.push_back(text.substr(start, line - start));
            start = line;
        }
    }
    return records;
}

/// A settings file that exists as long as the object: one section of 25 keys in each KiB, a comment above
/// every fourth key, sections and keys in no order.
template <class Char>
class Sample
{
public:
    using String = std::basic_string<Char>;

    struct Setting
    {
        String Section;
        String Key;
    };

    std::string Path = (std::filesystem::temp_directory_path() / "qmUtility-benchmark.ini").string();
    String OwnPath = String(Path.begin(), Path.end()); ///< in the characters of the library
    std::string Text;
    std::vector<Setting> Settings;

    explicit Sample(const benchmark::State& state)
    {
        const std::int64_t sections = state.range(0);
        for (std::int64_t i = 0; i != sections; ++i) {
            const std::int64_t number = i * 7919 % sections;
            const std::string section = "Section" + std::to_string(100'000 + number);
            Text += '[' + section + "]\n";
            for (int k = 0; k != 25; ++k) {
                const std::string key = "Setting" + std::to_string(1'000'000 + number * 25 + k * 7 % 25);
                if (k % 4 == 0)
                    Text += "# the values that the next setting may take\n";
                Text += key + "=value " + std::to_string(100'000 + i * 7919 % 900'000) + '\n';
                Settings.push_back({String(section.begin(), section.end()), String(key.begin(), key.end())});
            }
        }
        Write();
    }

    Sample(const Sample&) = delete;
    Sample& operator=(const Sample&) = delete;
    ~Sample() { std::filesystem::remove(Path); }

    void Write() const { WriteEach(Path, {Text}); }
};

/// The static operations, with the interface of the peers.
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

/// A document that loads when it is constructed, as the peers do.
template <class C>
struct Document : BasicINIDocument<C>
{
    using Char = C;

    explicit Document(const std::basic_string<C>& path) { Require(this->Load(path)); }
};

void ReadLines(benchmark::State& state)
{
    constexpr std::size_t capacity = 64 << 10; // stays in the cache
    const auto text = std::make_unique<char[]>(capacity);
    const Sample<char> sample(state);
    for ([[maybe_unused]] auto _ : state) {
        const File file = Open(sample.Path, "r");
        std::size_t lines = 0;
        while (const std::size_t size = std::fread(text.get(), 1, capacity, file.get()))
            lines += static_cast<std::size_t>(std::count(text.get(), text.get() + size, '\n'));
        benchmark::DoNotOptimize(lines);
    }
}

void WriteRecords(benchmark::State& state)
{
    const Sample<char> sample(state);
    const std::vector<std::string_view> records = Records(sample.Text);
    for ([[maybe_unused]] auto _ : state)
        WriteEach(sample.Path, records);
}

template <class Library>
void Load(benchmark::State& state)
{
    const Sample<typename Library::Char> sample(state);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(Library(sample.OwnPath));
}

/// Looks up the last settings of a file.
template <class Library>
void Get(benchmark::State& state, int count)
{
    const Sample<typename Library::Char> sample(state);
    for ([[maybe_unused]] auto _ : state) {
        const Library library(sample.OwnPath);
        for (auto setting = sample.Settings.end() - count; setting != sample.Settings.end(); ++setting)
            Require(!library.GetValue(setting->Key, setting->Section).empty());
    }
}

/// Looks up the last setting of a file with a library that need not keep the others.
template <class Library>
void Find(benchmark::State& state)
{
    const Sample<char> sample(state);
    const auto& [section, key] = sample.Settings.back();
    for ([[maybe_unused]] auto _ : state)
        Require(!Library::Find(sample.Path, section, key).empty());
}

/// Changes the last settings of a file and saves it. A peer's text is saved in one write or, for the same
/// guarantee as the library's one flush a record, in a write for each record: the cheapest way to either.
template <class Library>
void Set(benchmark::State& state, int count, bool writeEachRecord)
{
    const Sample<typename Library::Char> sample(state);
    const std::string newValue = "a new value";
    const decltype(sample.OwnPath) value(newValue.begin(), newValue.end());
    for ([[maybe_unused]] auto _ : state) {
        Library library(sample.OwnPath);
        for (auto setting = sample.Settings.end() - count; setting != sample.Settings.end(); ++setting)
            library.SetValue(setting->Key, value, setting->Section);
        if constexpr (requires { library.Save(sample.OwnPath); })
            Require(library.Save(sample.OwnPath));
        else if constexpr (requires { library.Text(); }) {
            const std::string text = library.Text();
            WriteEach(sample.Path, writeEachRecord ? Records(text) : std::vector<std::string_view>{text});
        }
    }
}

void Sort(benchmark::State& state)
{
    const Sample<char> sample(state);
    for ([[maybe_unused]] auto _ : state) {
        Require(INIParser::Sort(sample.Path, false));
        state.PauseTiming();
        sample.Write();
        state.ResumeTiming();
    }
}

/// The sizes of the files of a job, in KiB. One of 4 KiB holds 100 settings.
const std::map<std::string, std::vector<int>> Sizes = {
    {"get", {4, 64, 1024, 16384}}, {"load", {64, 1024, 16384}}, {"set", {64, 1024}},
    {"sort", {1024, 16384}},       {"read 100", {4}},           {"write 100", {4}}};

template <class Function, class... Arguments>
void Register(const std::string& job, const std::string& library, Function function, Arguments... arguments)
{
    auto* const benchmark =
        benchmark::RegisterBenchmark((job + '/' + library).c_str(), function, arguments...);
    benchmark->Unit(benchmark::kMicrosecond);
    for (const int kib : Sizes.at(job))
        benchmark->Arg(kib);
}

template <class Peer>
void RegisterPeer(const std::string& name)
{
    if constexpr (requires { &Peer::Find; })
        Register("get", name, Find<Peer>);
    else
        Register("get", name, Get<Peer>, 1);
    Register("load", name, Load<Peer>);
    Register("read 100", name, Get<Peer>, 100);
    if constexpr (requires { &Peer::Text; }) {
        Register("set", name, Set<Peer>, 1, false);
        Register("write 100", name, Set<Peer>, 100, true);
    }
}

[[maybe_unused]] const bool IsRegistered = [] {
    Register("get", "lower bound", ReadLines);
    Register("load", "lower bound", ReadLines);
    Register("read 100", "lower bound", ReadLines);
    Register("set", "lower bound", WriteRecords);
    Register("sort", "lower bound", WriteRecords);
    Register("write 100", "lower bound", WriteRecords);

    Register("get", "INIParser", Get<Parser<char>>, 1);
    Register("get", "INIParser wide", Get<Parser<wchar_t>>, 1);
    Register("load", "INIDocument", Load<Document<char>>);
    Register("load", "WINIDocument", Load<Document<wchar_t>>);
    Register("read 100", "INIDocument", Get<Document<char>>, 100);
    Register("read 100", "INIParser", Get<Parser<char>>, 100);
    Register("set", "INIParser", Set<Parser<char>>, 1, true);
    Register("set", "INIParser wide", Set<Parser<wchar_t>>, 1, true);
    Register("sort", "INIParser", Sort);
    Register("write 100", "INIDocument", Set<Document<char>>, 100, true);
    Register("write 100", "INIParser", Set<Parser<char>>, 100, true);

#ifdef HAVE_SIMPLEINI
    RegisterPeer<SimpleIni>("SimpleIni");
#endif
#ifdef HAVE_GLIB
    RegisterPeer<GLib>("GLib");
#endif
#ifdef HAVE_INIH
    RegisterPeer<Inih>("inih");
#endif
#ifdef HAVE_BOOST
    RegisterPeer<PropertyTree>("Boost.PropertyTree");
#endif
    return true;
}();

} // namespace
