#include "qmini/Check.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace qmini {

namespace {

constexpr std::string_view Blanks = " \t\n\r"; // of the format; no other character is one

std::string_view Trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(Blanks) + 1 - first);
}

bool Contains(std::string_view text, char wanted) { return text.find(wanted) != std::string_view::npos; }

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// A line as the library reads it.
struct Line
{
    enum class Kind
    {
        Blank,
        Comment,
        Header,
        OpenHeader, ///< without a "]"
        Key,
        Neither
    };

    Kind kind;
    bool commentedOut = false;
    bool bracketInside = false;    ///< of a header: whether text stands before its "["
    std::string_view section = {}; ///< of a header: its name
    std::string_view after = {};   ///< of a header: what stands behind its "]"
    std::string_view key = {};     ///< of a key line, and of a header whose name holds a "="
    std::string_view value = {};
};

Line Classify(std::string_view text)
{
    text = Trim(text);
    if (text.empty())
        return {Line::Kind::Blank};
    const bool isHeader = Contains(text, '['); // asked before "=", so it takes keys whose value holds a "["
    if (!isHeader && !Contains(text, '='))
        return {text.front() == '#' || text.front() == ';' ? Line::Kind::Comment : Line::Kind::Neither};

    Line line = {isHeader ? Line::Kind::Header : Line::Kind::Key};
    line.commentedOut = text.front() == '#' || text.front() == ';';
    if (line.commentedOut)
        text = Trim(text.substr(1));
    if (isHeader) {
        line.bracketInside = text.front() != '[';
        text.remove_prefix(1);
        const std::size_t close = text.find(']');
        if (close == std::string_view::npos)
            return {Line::Kind::OpenHeader};
        line.after = text.substr(close + 1);
        text = line.section = text.substr(0, close);
    }
    const std::size_t split = text.find('=');
    line.key = text.substr(0, split);
    if (split == std::string_view::npos)
        line.key = {};
    else
        line.value = text.substr(split + 1);
    return line;
}

/// Reads a file's lines one after another and collects what there is to say about them.
class Checker
{
public:
    void Read(std::string_view text)
    {
        if (++m_number == 1 && text.starts_with("\xEF\xBB\xBF"))
            Add("byte order mark: it is read as part of the line");
        const Line line = Classify(text);
        switch (line.kind) {
        case Line::Kind::Blank:
            break;
        case Line::Kind::Comment:
            if (!m_comments)
                m_comments = m_number;
            break;
        case Line::Kind::OpenHeader:
            m_findings.push_back({m_number, "header without \"]\": no operation can read the file", true});
            break;
        case Line::Kind::Neither:
            Add(m_comments
                    ? "neither a header nor a key: dropped"
                    : "neither a header nor a key: a rewrite turns it into the header \"[]\", which takes "
                      "the keys below");
            break;
        case Line::Kind::Header:
            m_section = line.section;
            AddHeader(line);
            AddDuplicate(line.key);
            m_comments.reset();
            break;
        case Line::Kind::Key:
            AddKey(line);
            m_comments.reset();
            break;
        }
    }

    /// @param rest what follows the last line end
    std::vector<Finding> Finish(std::string_view rest)
    {
        if (m_comments)
            m_findings.push_back({*m_comments, "comments after the last record are lost in a rewrite"});
        ++m_number;
        if (!Trim(rest).empty())
            Add("last line without a line end: it is not read, and lost in a rewrite");
        std::ranges::stable_sort(m_findings, {}, &Finding::line);
        return std::move(m_findings);
    }

private:
    void Add(const std::string& text) { m_findings.push_back({m_number, text}); }

    void AddHeader(const Line& line)
    {
        if (line.bracketInside)
            Add((line.commentedOut ? "comment with \"[\"" : "\"[\" inside the line") +
                (": read as the header of section " + Quoted(line.section)));
        else if (Trim(line.section) != line.section)
            Add("blanks inside the brackets belong to the section's name: " + Quoted(line.section));
        if (!line.after.empty())
            Add("text after \"]\" is lost in a rewrite: " + Quoted(Trim(line.after)));
        if (m_comments && Contains(line.section, '='))
            Add("the comments above a header with \"=\" in its name are lost in a rewrite");
        if (!line.key.empty())
            Add("header with \"=\" in its name: a rewrite turns it into the key line " +
                Quoted(line.section) +
                (Contains(line.section, '[') ? ", after which no operation can read the file" : ""));
    }

    void AddKey(const Line& line)
    {
        if (line.key.empty()) {
            Add("no key before \"=\": a rewrite turns the line into the header \"[" + std::string(m_section) +
                "]\"");
            return; // the library takes it for a header already
        }
        if (line.commentedOut && Trim(line.key).find_first_of(Blanks) != std::string_view::npos)
            Add("comment with \"=\": read as the commented-out key " + Quoted(line.key));
        else if (Trim(line.key) != line.key || Trim(line.value) != line.value)
            Add("blanks next to \"=\" belong to the key and the value: " + Quoted(line.key) + " and " +
                Quoted(line.value));
        AddDuplicate(line.key);
    }

    /// Whether a record is commented out plays no part: lookups find it all the same.
    void AddDuplicate(std::string_view key)
    {
        const auto [first, isNew] = m_firstLines.try_emplace({m_section, key}, m_number);
        if (isNew)
            return;
        const std::string line = std::to_string(first->second);
        if (key.empty())
            Add("duplicate section " + Quoted(m_section) + ": line " + line + " has its first header");
        else
            Add("duplicate key " + Quoted(key) + " in section " + Quoted(m_section) +
                ": lookups and edits find that of line " + line);
    }

    std::size_t m_number = 0;
    std::vector<Finding> m_findings;
    std::string_view m_section;
    std::optional<std::size_t> m_comments; ///< the first of the comment lines that wait for a record
    std::map<std::pair<std::string_view, std::string_view>, std::size_t> m_firstLines; ///< header: key empty
};

} // namespace

std::vector<Finding> Check(std::string_view text)
{
    Checker checker;
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1))
        checker.Read(text.substr(0, end));
    return checker.Finish(text);
}

} // namespace qmini
