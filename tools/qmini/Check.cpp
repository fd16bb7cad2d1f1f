// SPDX-License-Identifier: MIT
#include "qmini/Check.h"

#include "qmUtility/ini/Grammar.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

namespace qmini {

namespace {

using ini::LineKind;
using ini::Trimmed;
using Line = ini::Line<char>;

/// Reads a file's lines one after another and collects what there is to say about them.
class Checker
{
public:
    Checker(Kind least, std::vector<Finding>& findings) : m_least(least), m_findings(findings) {}

    void Read(const Line& line)
    {
        ++m_number;
        switch (line.Kind) {
        case LineKind::Blank:
            return;
        case LineKind::Comment:
            if (!m_comments)
                m_comments = m_number;
            return;
        case LineKind::MalformedHeader:
            Add(Kind::Malformed, {"header without \"]\": no operation can read the file"});
            return;
        case LineKind::Other:
            Add(Kind::Loss, {m_comments ? "neither a header nor a key: dropped by an edit"
                                        : "neither a header nor a key: an edit turns it into the header "
                                          "\"[]\", which takes the keys below"});
            return;
        case LineKind::Header:
            m_section = line.Section;
            AddHeader(line);
            AddDuplicate(line.HasKey ? line.Key : std::string_view());
            break;
        case LineKind::Key:
            AddKey(line);
            break;
        }
        AddContinuation(line);
        m_comments.reset();
    }

    /// @param rest what follows the last newline
    void Finish(std::string_view rest)
    {
        if (m_comments)
            m_findings.push_back(
                {*m_comments, Kind::Loss, "comments below the last record: lost by an edit"});
        ++m_number;
        if (!Trimmed(rest).empty())
            Add(Kind::Loss, {"last line without a newline: not read, and lost by an edit"});
    }

private:
    void Add(Kind kind, std::initializer_list<std::string_view> parts)
    {
        if (kind < m_least)
            return;
        m_findings.push_back({m_number, kind, {}});
        for (const std::string_view part : parts)
            m_findings.back().Text += part;
    }

    void AddHeader(const Line& line)
    {
        const char first = *(line.Section.data() - 1); // the character that the library takes for the "["
        const std::string_view after(line.Section.data() + line.Section.size() + 1,
                                     line.Text.data() + line.Text.size());
        if (first != '[')
            Add(Kind::Loss, {line.Commented != ' ' ? "comment with \"[\"" : "\"[\" inside the line",
                             ": read as the header of section \"", line.Section, "\""});
        else if (Trimmed(line.Section) != line.Section)
            Add(Kind::Oddity,
                {"blanks inside the brackets belong to the section's name: \"", line.Section, "\""});
        if (first == '[' && !after.empty())
            Add(Kind::Loss, {"text after \"]\": lost by an edit: \"", Trimmed(after), "\""});
        if (m_comments && line.HasKey)
            Add(Kind::Loss, {"comments above a header with \"=\" in its name: lost by an edit"});
        if (!line.Key.empty())
            Add(Kind::Loss,
                {"header with \"=\" in its name: an edit turns it into the key line \"", line.Section, "\"",
                 line.Section.find('[') != std::string_view::npos
                     ? ", after which no operation can read the file"
                     : ""});
    }

    void AddKey(const Line& line)
    {
        if (line.Key.empty()) {
            Add(Kind::Loss,
                {"no key before \"=\": an edit turns the line into the header \"[", m_section, "]\""});
            return; // the library takes it for a header already
        }
        if (line.Commented != ' ' && Trimmed(line.Key).find_first_of(" \t") != std::string_view::npos)
            Add(Kind::Oddity, {"comment with \"=\": read as the commented-out key \"", line.Key, "\""});
        else if (Trimmed(line.Key) != line.Key || Trimmed(line.Value) != line.Value)
            Add(Kind::Oddity, {"blanks next to \"=\" belong to the key and the value: \"", line.Key,
                               "\" and \"", line.Value, "\""});
        AddDuplicate(line.Key);
    }

    /// Commented-out records count: lookups find them, too.
    void AddDuplicate(std::string_view key)
    {
        if (m_least > Kind::Oddity)
            return;
        const auto [first, isNew] = m_firstLines.try_emplace({m_section, key}, m_number);
        if (isNew)
            return;
        const std::string line = std::to_string(first->second);
        if (key.empty())
            Add(Kind::Oddity, {"duplicate section \"", m_section, "\": the first header is in line ", line});
        else
            Add(Kind::Oddity, {"duplicate key \"", key, "\" in section \"", m_section,
                               "\": lookups and edits find the one in line ", line});
    }

    /// Notes the first line that an edit indents below a key, once for the file.
    void AddContinuation(const Line& line)
    {
        if (m_hasContinuation || line.Commented != ' ')
            return;
        m_hasContinuation = m_hasActiveKey && line.Text.data() == line.Raw.data();
        if (m_hasContinuation)
            Add(Kind::Note, {"an edit indents active lines by a space: readers that know continuation lines "
                             "join this line to the key above"});
        m_hasActiveKey = m_hasActiveKey || line.Kind == LineKind::Key;
    }

    Kind m_least;
    std::vector<Finding>& m_findings;
    std::size_t m_number = 0;
    std::string_view m_section;
    std::optional<std::size_t> m_comments; ///< the first of the comment lines that wait for a record
    bool m_hasActiveKey = false;
    bool m_hasContinuation = false;
    std::map<std::pair<std::string_view, std::string_view>, std::size_t> m_firstLines; ///< header: key empty
};

} // namespace

std::vector<Finding> Check(std::string_view text, Kind least)
{
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF"))
        return {{1, Kind::Loss, "UTF-16 byte order mark: only encodings that extend ASCII are known"}};
    std::vector<Finding> findings;
    if (text.starts_with("\xEF\xBB\xBF"))
        findings.push_back({1, Kind::Loss, "byte order mark: read as text, and moved by an edit"});
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos)
        findings.push_back({1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + nul, '\n')),
                            Kind::Loss, "NUL byte: this is no text, or one in UTF-16"});

    Checker checker(least, findings);
    ini::ScanLines(text, [&](const Line& line) { checker.Read(line); });
    checker.Finish(text.substr(text.rfind('\n') + 1));
    std::erase_if(findings, [least](const Finding& finding) { return finding.What < least; });
    std::ranges::stable_sort(findings, {}, &Finding::Line);
    return findings;
}

} // namespace qmini
