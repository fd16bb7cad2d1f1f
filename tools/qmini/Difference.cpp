// SPDX-License-Identifier: MIT
#include "qmini/Difference.h"

#include <dtl/dtl.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace qmini {

namespace {

using Texts = std::vector<std::string_view>;

/// The lines of a text, each with its newline: a last line without one differs from the same line with one.
Texts SplitLines(std::string_view text)
{
    Texts lines;
    while (!text.empty()) {
        lines.push_back(text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1));
        text.remove_prefix(lines.back().size());
    }
    return lines;
}

/// Compares lines until so many differed that the shortest difference would take too long. From then on all
/// lines are equal to it, which soon ends the comparison.
class BoundedCompare : public dtl::Compare<std::string_view>
{
public:
    explicit BoundedCompare(std::size_t& left) : m_left(&left) {}

    bool impl(const std::string_view& a, const std::string_view& b) const override
    {
        return *m_left == 0 || a == b || --*m_left == 0;
    }

private:
    std::size_t* m_left;
};

/// A line, and its mark in a difference: added "+", deleted "-" or common " ".
struct Step
{
    char Mark;
    std::string_view Line;
};

/// @return the steps from one text to another: as few as possible, or all lines of both where too many differ.
std::vector<Step> FindSteps(const Texts& before, const Texts& after)
{
    const auto [beginBefore, beginAfter] = std::ranges::mismatch(before, after);
    const auto fromEnd = std::mismatch(before.rbegin(), std::make_reverse_iterator(beginBefore),
                                       after.rbegin(), std::make_reverse_iterator(beginAfter));
    const auto [endBefore, endAfter] = std::pair(fromEnd.first.base(), fromEnd.second.base());

    std::vector<Step> steps;
    const auto add = [&](char mark, Texts::const_iterator begin, Texts::const_iterator end) {
        for (; begin != end; ++begin)
            steps.push_back({mark, *begin});
    };
    add(' ', before.begin(), beginBefore);
    std::size_t left = 200'000;
    // Its own hunks have wrong line numbers once the texts differ much, so they are made here.
    dtl::Diff<std::string_view, Texts, BoundedCompare> difference(Texts(beginBefore, endBefore),
                                                                  Texts(beginAfter, endAfter),
                                                                  /*deleteFirst=*/true, BoundedCompare(left));
    difference.compose();
    if (left != 0) {
        for (const auto& [line, info] : difference.getSes().getSequence())
            steps.push_back({"- +"[info.type + 1], line});
    } else {
        add('-', beginBefore, endBefore);
        add('+', beginAfter, endAfter);
    }
    add(' ', endBefore, before.end());
    return steps;
}

/// @return one side of a hunk's header. A side without lines is at the line before it.
std::string Range(std::ptrdiff_t firstLine, std::ptrdiff_t lines)
{
    return std::to_string(lines == 0 ? firstLine - 1 : firstLine) + ',' + std::to_string(lines);
}

} // namespace

std::string UnifiedDifference(const std::string& name, const std::string& before, const std::string& after)
{
    if (before == after)
        return {};
    const std::vector<Step> steps = FindSteps(SplitLines(before), SplitLines(after));

    std::ostringstream out;
    // A tab ends a name that holds blanks, so that `patch` takes all of it.
    const char* const end = name.find(' ') == std::string::npos ? "\n" : "\t\n";
    out << "--- " << name << end << "+++ " << name << end;

    constexpr std::ptrdiff_t context = 3;
    const auto isChange = [](const Step& step) { return step.Mark != ' '; };
    std::ptrdiff_t lineBefore = 1;
    std::ptrdiff_t lineAfter = 1;
    auto at = steps.begin();
    for (auto change = at; (change = std::find_if(at, steps.end(), isChange)) != steps.end();) {
        const auto first = change - std::min(context, change - at);
        // Changes whose context would touch share a hunk.
        auto last = change;
        while (change != steps.end() && change - last <= 2 * context) {
            last = std::find_if_not(change, steps.end(), isChange);
            change = std::find_if(last, steps.end(), isChange);
        }
        last += std::min(context, steps.end() - last);

        lineBefore += first - at;
        lineAfter += first - at;
        const auto linesBefore = last - first - std::ranges::count(first, last, '+', &Step::Mark);
        const auto linesAfter = last - first - std::ranges::count(first, last, '-', &Step::Mark);
        out << "@@ -" << Range(lineBefore, linesBefore) << " +" << Range(lineAfter, linesAfter) << " @@\n";
        for (at = first; at != last; ++at)
            out << at->Mark << at->Line
                << (at->Line.ends_with('\n') ? "" : "\n\\ No newline at end of file\n");
        lineBefore += linesBefore;
        lineAfter += linesAfter;
    }
    return out.str();
}

} // namespace qmini
