// SPDX-License-Identifier: MIT
/// @file
/// What there is to say about texts: remarks on lines, and differences.

#include "qmini/Qmini.h"

#include <algorithm>
#include <map>

namespace qmini {

using ini::LineKind;

namespace {

/// @return what is unusual about a line in itself; empty when there is nothing
std::string Remark(const NumberedLine& line)
{
    const std::size_t close = line.Text().find(']');
    if (line.Continues == NumberedLine::AfterBackslash)
        return "continuation line: the line above ends in a backslash";
    if (line.Continues == NumberedLine::Indented)
        return "continuation line: it is indented deeper than the key above";
    if (line.Text().find('\r') != std::string_view::npos)
        return "carriage return inside the line: many programs end it there";
    if (line.Text().starts_with('[') && close == std::string_view::npos)
        return "header without \"]\"";
    if (line.Kind == LineKind::Other)
        return "neither a header nor a key nor a comment";
    if (line.Kind == LineKind::Header && close + 1 != line.Text().size())
        return "text after \"]\": " + Quoted(ini::Trimmed(line.Text().substr(close + 1)));
    return {};
}

/// @return what `INIParser` reads in place of a line; empty when it reads the same
std::string Difference(const NumberedLine& line, const NumberedLine& parsed)
{
    if (parsed.Kind == LineKind::MalformedHeader)
        return "INIParser cannot read the file: \"[\" without \"]\"";
    if (parsed.Kind == LineKind::Header &&
        (line.Kind != LineKind::Header || parsed.HasKey || parsed.Section != line.Section))
        return "INIParser reads the header of section " + Quoted(parsed.Section);
    if (parsed.Kind == LineKind::Key &&
        (line.Kind != LineKind::Key || parsed.Key != line.Key || parsed.Value != line.Value))
        return "INIParser reads key " + Quoted(parsed.Key) + " with value " + Quoted(parsed.Value);
    return {};
}

/// The lines of a text, each with its newline: a last line without one differs from the same line with one.
std::vector<std::string_view> SplitLines(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (; !text.empty(); text.remove_prefix(lines.back().size()))
        lines.push_back(text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1));
    return lines;
}

/// @return one side of a hunk's header. A side without lines is at the line before it.
std::string Range(std::ptrdiff_t linesAbove, std::ptrdiff_t lines)
{
    return std::to_string(linesAbove + (lines != 0)) + ',' + std::to_string(lines);
}

} // namespace

std::vector<std::pair<std::size_t, std::string>> Check(std::string_view text)
{
    std::vector<std::pair<std::size_t, std::string>> findings;
    const auto add = [&](std::size_t line, const std::string& remark) {
        if (!remark.empty())
            findings.emplace_back(line, remark);
    };
    const bool hasMark = ini::ByteOrderMarkSize(text) != 0;
    add(1, hasMark ? "byte order mark: INIParser reads it as text" : "");

    // The first active and the first commented-out line of each name
    std::map<std::pair<std::string_view, std::string_view>, std::pair<std::size_t, std::size_t>> firstLines;
    std::string_view header; // the nearest name, active or commented out
    std::vector<NumberedLine> parsed;
    EachLine(text, INISyntax::Parser, [&](const NumberedLine& line) { parsed.push_back(line); });
    EachLine(text, INISyntax::Common, [&](const NumberedLine& line) {
        add(line.Number, Remark(line));
        header = line.Kind == LineKind::Header ? line.Section : header;
        if (line.Kind == LineKind::Key && line.Commented == ' ' && line.Within != header)
            add(line.Number, "INIParser reads it in section " + Quoted(header));
        if (line.Kind == LineKind::Header || line.Kind == LineKind::Key) {
            auto& [active, commentedOut] = firstLines[{line.Within, line.Key}];
            const bool isActive = line.Commented == ' ';
            const std::string name = (line.Key.empty() ? "" : "key " + Quoted(line.Key) + " in ") +
                                     "section " + Quoted(line.Within);
            if (isActive && active != 0)
                add(line.Number, "duplicate " + name + ": first in line " + std::to_string(active));
            else if (isActive && commentedOut != 0)
                add(line.Number,
                    name + ": INIParser finds commented-out line " + std::to_string(commentedOut));
            auto& first = isActive ? active : commentedOut;
            first = first != 0 ? first : line.Number;
        }
        if (line.Number > parsed.size())
            add(line.Number, "last line without a newline: INIParser does not read it");
        else if (!hasMark || line.Number != 1)
            add(line.Number, Difference(line, parsed[line.Number - 1]));
    });
    return findings;
}

std::string UnifiedDifference(const std::string& name, std::string_view before, std::string_view after)
{
    if (before == after)
        return {};
    const auto left = SplitLines(before);
    const auto right = SplitLines(after);
    const auto [leftBegin, rightBegin] = std::ranges::mismatch(left, right);
    const auto [leftTail, rightTail] = std::mismatch(left.rbegin(), std::reverse_iterator(leftBegin),
                                                     right.rbegin(), std::reverse_iterator(rightBegin));
    const auto leftEnd = leftTail.base();
    const auto rightEnd = rightTail.base();
    constexpr std::ptrdiff_t context = 3;
    const auto first = leftBegin - std::min(context, leftBegin - left.begin());
    const auto last = leftEnd + std::min(context, left.end() - leftEnd);

    // A tab ends a name that holds blanks, so that `patch` takes all of it.
    const std::string end = name.find(' ') == std::string_view::npos ? "\n" : "\t\n";
    const std::ptrdiff_t growth = (rightEnd - rightBegin) - (leftEnd - leftBegin);
    std::string text = "--- " + name + end + "+++ " + name + end + "@@ -" +
                       Range(first - left.begin(), last - first) + " +" +
                       Range(first - left.begin(), last - first + growth) + " @@\n";
    const auto append = [&](char mark, auto begin, auto to) {
        for (; begin != to; ++begin)
            (text += mark).append(*begin) += begin->ends_with('\n') ? "" : "\n\\ No newline at end of file\n";
    };
    append(' ', first, leftBegin);
    append('-', leftBegin, leftEnd);
    append('+', rightBegin, rightEnd);
    append(' ', leftEnd, last);
    return text;
}

} // namespace qmini
