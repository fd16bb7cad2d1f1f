// SPDX-License-Identifier: MIT
// INI operations beside other libraries and beside baselines: `ReadLines`, `WriteRecords` and `Replace`.
// Names are job/library/KiB.

#include "qmUtility/ini/INIDocument.h"
#include "qmUtility/ini/INIParser.h"

#include <benchmark/benchmark.h>

#include <glib.h>
#include <ini.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// Ends the program when a library could not do its job, which makes its time worthless.
void Require(bool isDone) {
    if (!isDone) throw std::runtime_error("an INI library could not handle the file");
}

// The libraries behind one interface: the constructor loads a file, `GetValue` looks up a setting, `SetValue`
// changes one and returns whether it could, and `Save` writes the file.

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
    using List = std::vector<std::array<std::string, 3>>;
    List Settings;

    explicit Inih(Word path) {
        const auto keep = [](void* settings, const char* section, const char* key, const char* value) {
            static_cast<List*>(settings)->push_back({section, key, value});
            return 1;
        };
        Require(ini_parse(path.c_str(), keep, &Settings) == 0);
    }
    std::string GetValue(Word key, Word section) const {
        const auto isWanted = [&](const auto& s) { return s[0] == section && s[1] == key; };
        const auto found = std::ranges::find_if(Settings, isWanted);
        return found != Settings.end() ? found->back() : "";
    }
};

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens a file without a buffer, so that each call is one of the system.
File Open(const fs::path& path, const char* mode) {
    File file(std::fopen(path.c_str(), mode), std::fclose);
    Require(file && std::setvbuf(file.get(), nullptr, _IONBF, 0) == 0);
    return file;
}

void WriteEach(const fs::path& path, std::span<const std::string> pieces) {
    const File file = Open(path, "w");
    for (const std::string& piece : pieces)
        Require(std::fwrite(piece.data(), 1, piece.size(), file.get()) == piece.size());
}

/// What a settings file looks like.
struct Shape {
    int KiB;  ///< with "\n" for newlines
    int Sections = KiB;
    int Keys = 25;  ///< of each section
    std::string Newline = "\n";
    bool IsOnDisk = false;  ///< in the current directory, otherwise in the one for temporary files
};

/// A settings file that exists as long as the object: a comment above every fourth key, sections and keys in
/// no order.
template <class Char>
struct Sample {
    using String = std::basic_string<Char>;

    String Path;
    std::string Text;
    std::vector<std::string> Records;                 ///< the text in the pieces that are written in place
    std::vector<std::pair<String, String>> Settings;  ///< section and key

    explicit Sample(const Shape& shape)
        : Path(((shape.IsOnDisk ? "." : fs::temp_directory_path()) / "qmUtility-benchmark.ini")
                   .string<Char>()) {
        const std::string comment = "# the values that the next setting may take" + shape.Newline;
        for (std::int64_t i = 0; i != shape.Sections; ++i) {
            const std::int64_t number = i * 7919 % shape.Sections;
            const std::string section = "Section" + std::to_string(100'000 + number);
            Records.push_back('[' + section + ']' + shape.Newline);
            for (int k = 0; k != shape.Keys; ++k) {
                const std::int64_t setting = number * shape.Keys + k * 7 % shape.Keys;
                const std::string key = "Setting" + std::to_string(1'000'000 + setting);
                const std::string line =
                    key + "=value " + std::to_string(100'000 + i * 7919 % 900'000) + shape.Newline;
                Records.push_back(k % 4 == 0 ? comment + line : line);
                Settings.emplace_back(String(section.begin(), section.end()), String(key.begin(), key.end()));
            }
        }
        for (const std::string& record : Records) Text += record;
        WriteEach(Path, {&Text, 1});
    }
    Sample(const Sample&) = delete;
    ~Sample() { fs::remove(Path); }
};

/// Reads a file and finds every newline.
void ReadLines(benchmark::State& state, const Shape& shape) {
    std::vector<char> buffer(64 << 10);  // stays in the cache
    const Sample<char> sample(shape);
    for ([[maybe_unused]] auto _ : state) {
        const File file = Open(sample.Path, "r");
        std::size_t lines = 0;
        while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
            const std::string_view text(buffer.data(), size);
            for (std::size_t at = 0; (at = text.find('\n', at)) != std::string_view::npos; ++at) ++lines;
        }
        benchmark::DoNotOptimize(lines);
    }
}

/// Writes a file in place, with one call for each record.
void WriteRecords(benchmark::State& state, const Shape& shape) {
    const Sample<char> sample(shape);
    for ([[maybe_unused]] auto _ : state) WriteEach(sample.Path, sample.Records);
}

/// Writes a file beside the old one, synchronises it, renames it, and synchronises the folder.
void Replace(benchmark::State& state, const Shape& shape) {
    const Sample<char> sample(shape);
    const std::string temporary = sample.Path + ".new";
    for ([[maybe_unused]] auto _ : state) {
        File file = Open(temporary, "wx");
        Require(std::fwrite(sample.Text.data(), sample.Text.size(), 1, file.get()) == 1 &&
                fsync(fileno(file.get())) == 0);
        file = Open(fs::path(sample.Path).parent_path(), "r");
        fs::rename(temporary, sample.Path);
        Require(fsync(fileno(file.get())) == 0);
    }
}

template <class Library, class Char = char>
void Load(benchmark::State& state, const Shape& shape) {
    const Sample<Char> sample(shape);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(Library(sample.Path));
}

/// Looks up the last settings of a file, which is loaded every time: a library may defer work to a lookup.
template <class Library, class Char = char>
void Get(benchmark::State& state, const Shape& shape, std::size_t count, bool isLoadTimed) {
    const Sample<Char> sample(shape);
    std::optional<const Library> library;
    for ([[maybe_unused]] auto _ : state) {
        if (!isLoadTimed) state.PauseTiming();
        library.emplace(sample.Path);
        if (!isLoadTimed) state.ResumeTiming();
        for (const auto& [section, key] : std::span(sample.Settings).last(count))
            Require(!library->GetValue(key, section).empty());
    }
}

/// Changes the last settings of a file and saves it.
template <class Library, class Char = char>
void Set(benchmark::State& state, const Shape& shape, std::size_t count) {
    const Sample<Char> sample(shape);
    std::basic_string<Char> value(12, 'A');  // as long as the values in the file
    for ([[maybe_unused]] auto _ : state) {
        value.back() ^= 1;  // a new value each time
        Library library(sample.Path);
        for (const auto& [section, key] : std::span(sample.Settings).last(count))
            Require(library.SetValue(key, value, section));
        if constexpr (requires { library.Save(sample.Path); }) Require(library.Save(sample.Path));
    }
}

void Sort(benchmark::State& state, const Shape& shape) {
    const Sample<char> sample(shape);
    for ([[maybe_unused]] auto _ : state) {
        Require(INIParser::Sort(sample.Path, false));
        state.PauseTiming();
        WriteEach(sample.Path, {&sample.Text, 1});
        state.ResumeTiming();
    }
}

/// Adds settings to a section that another follows.
void Add(benchmark::State& state, const Shape& shape) {
    std::vector<std::string> keys;
    for (int i = 0; i != shape.Keys; ++i) keys.push_back("Setting" + std::to_string(1'000'000 + i));
    for ([[maybe_unused]] auto _ : state) {
        INIDocument document;
        Require(document.Parse("[Section]\n\n[Next]\n"));
        for (const std::string& key : keys) Require(document.SetValue(key, "value 100000", "Section"));
    }
}

/// The files of each job. One of 4 KiB holds 100 settings.
const std::map<std::string, std::vector<Shape>> Shapes = {
    {"get", {{64}, {1024}}},
    {"load", {{64}, {1024}, {16384}}},
    {"load CR LF", {{64, 64, 25, "\r\n"}, {1024, 1024, 25, "\r\n"}, {16384, 16384, 25, "\r\n"}}},
    {"set", {{64}, {1024}}},
    {"sort", {{1024}, {16384}}},
    {"read 100", {{4}}},
    {"read all", {{389, 500, 20}}},
    {"write 100", {{4}}},
    {"write 100 on disk", {{4, 4, 25, "\n", true}}},
    {"add", {{137, 1, 5'000}, {547, 1, 20'000}}}};

template <class Function, class... Arguments>
void Register(const std::string& job, const std::string& library, Function function, Arguments... arguments) {
    const std::string name = job + '/' + library;
    for (const Shape& shape : Shapes.at(job)) {
        auto* const benchmark = benchmark::RegisterBenchmark(name.c_str(), function, shape, arguments...);
        benchmark->Arg(shape.KiB);
        if (shape.IsOnDisk)  // where waiting counts, and varies
            benchmark->UseRealTime()->Repetitions(25);
    }
}

[[maybe_unused]] const bool IsRegistered = [] {
    Register("get", "INIParser", Get<Parser<char>>, 1, true);
    Register("get", "INIParser wide", Get<Parser<wchar_t>, wchar_t>, 1, true);
    Register("get", "inih", Get<Inih>, 1, true);
    for (const char* const job : {"load", "load CR LF"}) {
        Register(job, "INIDocument", Load<Document<char>>);
        Register(job, "WINIDocument", Load<Document<wchar_t>, wchar_t>);
        Register(job, "GLib", Load<GLib>);
        Register(job, "inih", Load<Inih>);
    }
    Register("read 100", "INIDocument", Get<Document<char>>, 100, true);
    Register("read 100", "INIParser", Get<Parser<char>>, 100, true);
    Register("read 100", "GLib", Get<GLib>, 100, true);
    for (const char* const job : {"get", "load", "load CR LF", "read 100"})
        Register(job, "baseline", ReadLines);

    Register("read all", "INIDocument", Get<Document<char>>, 10'000, false);
    Register("read all", "GLib", Get<GLib>, 10'000, false);

    Register("set", "INIParser", Set<Parser<char>>, 1);
    Register("set", "INIParser wide", Set<Parser<wchar_t>, wchar_t>, 1);
    Register("set", "GLib", Set<GLib>, 1);
    Register("sort", "INIParser", Sort);
    for (const char* const job : {"set", "sort"}) Register(job, "baseline", WriteRecords);

    Register("write 100", "INIParser", Set<Parser<char>>, 100);
    Register("write 100", "GLib", Set<GLib>, 100);
    for (const char* const job : {"write 100", "write 100 on disk"}) {
        Register(job, "INIDocument", Set<Document<char>>, 100);
        Register(job, "baseline", Replace);
    }
    Register("add", "INIDocument", Add);
    return true;
}();

}  // namespace
