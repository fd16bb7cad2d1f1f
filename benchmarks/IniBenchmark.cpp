/// @file
/// What the INI operations cost beside other libraries, and beside what cannot be done without: for a lookup,
/// reading the file once and finding every line end; for an edit, a write for each record. All in one
/// process, as ratios of medians.

#include "benchmarks/IniPeers.h"
#include "benchmarks/MedianReporter.h"
#include "qmUtility/ini/INIParser.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

namespace {

constexpr std::array<std::size_t, 4> sizes = {4 << 10, 64 << 10, 1 << 20, 16 << 20};

const char* SizeName(std::size_t size)
{
    return size == sizes[0] ? "4 KiB" : size == sizes[1] ? "64 KiB" : size == sizes[2] ? "1 MiB" : "16 MiB";
}

/// A generated file as settings files are: a comment above every fourth key, a header every `keysPerSection`
/// keys.
struct Sample
{
    std::string Path;
    std::string LastSection;
    std::string LastKey;
    std::size_t Sections = 0;
    std::size_t Keys = 0;

    Sample(const std::filesystem::path& path, std::size_t size, std::size_t keysPerSection)
        : Path(path.string())
    {
        std::string text;
        for (; text.size() < size; ++Keys) {
            if (Keys % keysPerSection == 0) {
                LastSection = "Section" + std::to_string(Sections++);
                text += "[" + LastSection + "]\n";
            }
            if (Keys % 4 == 0)
                text += "# what the next setting is for, and which values it takes\n";
            LastKey = "SettingNumber" + std::to_string(Keys);
            text += LastKey + "=the value of setting " + std::to_string(Keys * 7919) + "\n";
        }
        std::ofstream(Path) << text;
    }
};

/// Reads a file once into fresh memory and finds every line end.
std::size_t CountLines(const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "r"), std::fclose);
    static_cast<void>(std::setvbuf(file.get(), nullptr, _IONBF, 0));
    const auto size = static_cast<std::size_t>(std::filesystem::file_size(path));
    const auto text = std::make_unique_for_overwrite<char[]>(size);
    const char* const end = text.get() + std::fread(text.get(), 1, size, file.get());
    std::size_t lines = 0;
    for (const char* at = text.get();
         (at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))) !=
         nullptr;
         ++at)
        ++lines;
    return lines;
}

/// Fills a file with so many bytes, in as many writes as the sample has records.
std::size_t WriteRecords(const std::string& path, const Sample& sample, std::size_t size)
{
    const std::size_t records = sample.Sections + sample.Keys;
    const std::string record(size / records, 'x');
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "w"), std::fclose);
    static_cast<void>(std::setvbuf(file.get(), nullptr, _IONBF, 0));
    std::size_t written = 0;
    for (std::size_t i = 0; i != records; ++i)
        written += std::fwrite(record.data(), 1, record.size(), file.get());
    return written;
}

template <class Call>
void Register(const std::string& name, Call call)
{
    benchmark::RegisterBenchmark(name.c_str(), [call](benchmark::State& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(call());
    })->Unit(benchmark::kMicrosecond);
}

/// The fastest peer at one job, with its time.
struct Fastest
{
    std::string Name = "none";
    double Time = 0.0;
};

Fastest FastestPeer(const MedianReporter& reporter, const std::vector<IniPeer>& peers, const std::string& job)
{
    Fastest fastest;
    for (const IniPeer& peer : peers) {
        const double time = reporter.Median(job + peer.Name);
        if (time > 0.0 && (fastest.Time == 0.0 || time < fastest.Time))
            fastest = {peer.Name, time};
    }
    return fastest;
}

/// @return a time in microseconds to three digits, in the unit that suits it.
std::string Duration(double time)
{
    std::array<char, 32> text;
    const bool isLong = time >= 1000.0;
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.3g %s", isLong ? time / 1000.0 : time,
                                    isLong ? "ms" : "us"));
    return text.data();
}

void PrintTable(const MedianReporter& reporter, const std::vector<IniPeer>& peers, std::size_t sortedSections)
{
    std::printf("\n| job | file | ours | limit | ours : limit | fastest peer | peer : ours |\n"
                "|---|---|---:|---:|---:|---|---:|\n");
    for (const char* const job : {"get", "get wide", "load", "set"})
        for (const std::size_t size : sizes) {
            const std::string prefix = std::string(job) + '/' + SizeName(size) + '/';
            const std::string narrow = job == std::string("get wide") ? "get/" + prefix.substr(9) : prefix;
            const double ours = reporter.Median(prefix + "ours");
            if (ours == 0.0)
                continue; // filtered out
            const char* const limits = job == std::string("set") ? "write limit/" : "limit/";
            const double limit = reporter.Median(limits + std::string(SizeName(size)));
            const Fastest peer = FastestPeer(reporter, peers, narrow);
            std::printf("| %s | %s | %s | %s | %.2f | %s, %s | %.2f |\n", job, SizeName(size),
                        Duration(ours).c_str(), Duration(limit).c_str(), ours / limit, peer.Name.c_str(),
                        Duration(peer.Time).c_str(), peer.Time / ours);
        }
    const double lookup = reporter.Median("sort/lookup");
    const double sort = reporter.Median("sort/ours");
    if (sort > 0.0 && lookup > 0.0)
        std::printf("\nSorting %zu sections in a 1 MiB file takes as long as %.0f lookups in it (%.0f us, "
                    "%.1f us).\n",
                    sortedSections, sort / lookup, sort, lookup);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);

    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "qmUtility-benchmark";
    std::filesystem::create_directories(folder);
    const std::vector<IniPeer> peers = IniPeers();

    for (const std::size_t size : sizes) {
        const std::string suffix = '/' + std::string(SizeName(size)) + '/';
        const Sample file(folder / (std::to_string(size) + ".ini"), size, 25);
        const std::wstring wideSection(file.LastSection.begin(), file.LastSection.end());
        const std::wstring wideKey(file.LastKey.begin(), file.LastKey.end());
        const std::wstring widePath(file.Path.begin(), file.Path.end());
        const Sample flat(folder / (std::to_string(size) + "-flat.ini"), size, size); // all in one section
        // Each library edits a file of its own, in the form that it writes itself.
        const auto edited = [&](const std::string& name) {
            return Sample(folder / (std::to_string(size) + '-' + name + ".ini"), size, 25);
        };

        Register("limit/" + std::string(SizeName(size)), [=] { return CountLines(file.Path); });
        Register("write limit/" + std::string(SizeName(size)),
                 [=, path = (folder / "writes").string()] { return WriteRecords(path, file, size); });
        Register("get" + suffix + "ours",
                 [=] { return INIParser::GetValue(file.LastKey, file.LastSection, file.Path); });
        Register("get wide" + suffix + "ours",
                 [=] { return INIParser::GetValue(wideKey, wideSection, widePath); });
        Register("load" + suffix + "ours",
                 [=] { return INIParser::GetSection(flat.LastSection, flat.Path); });
        Register("set" + suffix + "ours", [file = edited("ours")] {
            return INIParser::SetValue(file.LastKey, "a new value", file.LastSection, file.Path);
        });
        for (const IniPeer& peer : peers) {
            Register("get" + suffix + peer.Name,
                     [=] { return peer.Get(file.Path, file.LastSection, file.LastKey); });
            Register("load" + suffix + peer.Name, [=] { return peer.Load(flat.Path, flat.LastSection); });
            if (peer.Set)
                Register("set" + suffix + peer.Name, [peer, file = edited(peer.Name)] {
                    peer.Set(file.Path, file.LastSection, file.LastKey, "a new value");
                    return 0;
                });
        }
    }

    const Sample sorted(folder / "sorted.ini", 1'020'000, 16); // 1,000 sections
    Register("sort/lookup",
             [=] { return INIParser::GetValue(sorted.LastKey, sorted.LastSection, sorted.Path); });
    Register("sort/ours", [=] { return INIParser::Sort(sorted.Path, false); });

    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    PrintTable(reporter, peers, sorted.Sections);
    std::filesystem::remove_all(folder);
    return 0;
}
