#include "qmUtility/ini/INIParser.h"
#include "qmUtility/ini/ScanFile.h"
#include "qmUtility/ini/TextFile.h"

#include <array>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

using ini::String;

namespace {

template <class Char>
bool LoadRecords(const String<Char>& path, std::vector<INIParser::BasicRecord<Char>>& records)
{
    std::vector<INIParser::BasicRecord<Char>> loaded;
    if (!ini::ScanFile(path, [&](const auto& record) { loaded.push_back(ini::ToRecord<Char>(record)); }))
        return false;
    records = std::move(loaded);
    return true;
}

/// A file that is rewritten. Once it is open nothing is allocated any more: running out of memory while the
/// old content is gone and the new one is not yet there would lose it.
template <class Char>
class Output
{
public:
    explicit Output(const String<Char>& path)
    {
        m_file.rdbuf()->pubsetbuf(m_buffer.data(), std::ssize(m_buffer));
        ini::Open(m_file, path);
    }

    bool IsOpen() const { return m_file.is_open(); }

    Output& operator<<(std::basic_string_view<Char> text)
    {
        if constexpr (std::is_same_v<Char, char>)
            m_file.write(text.data(), static_cast<std::streamsize>(text.size()));
        else
            m_encoding.Write(m_file, text);
        return *this;
    }

    /// A character of the format's own, or one that a record keeps.
    Output& operator<<(Char c) { return *this << std::basic_string_view<Char>(&c, 1); }

    void Flush() { m_file.flush(); }

    void Finish()
    {
        if constexpr (!std::is_same_v<Char, char>)
            m_encoding.Finish(m_file);
    }

private:
    std::array<char, 8192> m_buffer;
    std::ofstream m_file;
    ini::Encoding m_encoding;
};

/// The two widths differ on purpose: a narrow file begins every live line with a space, a wide one does not
/// and has an empty line between a section's comments and its header, for every section but the first.
template <class Char>
bool SaveRecords(const String<Char>& path, const std::vector<INIParser::BasicRecord<Char>>& records)
{
    constexpr bool narrow = std::is_same_v<Char, char>;
    Output<Char> file(path);
    if (!file.IsOpen())
        return false;
    bool firstSection = true;
    for (const auto& record : records) {
        const bool isSection = record.Key.empty();
        file << record.Comments;
        if (!narrow && isSection && !std::exchange(firstSection, false))
            file << Char('\n');
        if (narrow || record.Commented != ' ')
            file << record.Commented;
        if (isSection)
            file << Char('[') << record.Section << Char(']');
        else
            file << record.Key << Char('=') << record.Value;
        file << Char('\n');
        file.Flush(); // line by line, so that what was written survives the host
    }
    file.Finish();
    return true;
}

} // namespace

bool INIParser::Load(std::string path, std::vector<Record>& records) { return LoadRecords(path, records); }
bool INIParser::Load(std::wstring path, std::vector<WRecord>& records) { return LoadRecords(path, records); }
bool INIParser::Save(std::string path, std::vector<Record>& records) { return SaveRecords(path, records); }
bool INIParser::Save(std::wstring path, std::vector<WRecord>& records) { return SaveRecords(path, records); }

bool INIParser::Create(std::string path)
{
    std::vector<Record> none;
    return Save(path, none);
}

std::string INIParser::Content(std::string path)
{
    std::vector<Record> records;
    if (!Load(path, records))
        return {};
    std::string text;
    for (const Record& record : records) {
        text += record.Comments;
        if (record.Commented != ' ')
            text += record.Commented;
        if (record.Key.empty())
            text += '[' + record.Section + ']';
        else
            text += record.Key + '=' + record.Value;
        text += '\n';
    }
    return text;
}
