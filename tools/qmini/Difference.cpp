#include "qmini/Difference.h"

#include <dtl/dtl.hpp>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ostream>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace qmini {

namespace {

using Texts = std::vector<std::string_view>;
using Lines = Texts::const_iterator;

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
    BoundedCompare() = default;
    explicit BoundedCompare(std::size_t& left) : m_left(&left) {}

    bool impl(const std::string_view& a, const std::string_view& b) const override
    {
        return *m_left == 0 || a == b || --*m_left == 0;
    }

private:
    std::size_t* m_left = nullptr;
};

/// A line of one or both texts, and whether it is added, deleted or common.
using Step = std::pair<std::string_view, dtl::edit_t>;

bool IsChange(const Step& step) { return step.second != dtl::SES_COMMON; }
bool IsDeleted(const Step& step) { return step.second == dtl::SES_DELETE; }
bool IsAdded(const Step& step) { return step.second == dtl::SES_ADD; }

/// @return the steps from one text to another: few ones, or else all lines of both where too many differ.
std::vector<Step> FindSteps(const Texts& before, const Texts& after)
{
    const auto [beginBefore, beginAfter] = std::ranges::mismatch(before, after);
    const auto fromEnd = std::mismatch(before.rbegin(), std::make_reverse_iterator(beginBefore),
                                       after.rbegin(), std::make_reverse_iterator(beginAfter));
    const auto [endBefore, endAfter] = std::pair(fromEnd.first.base(), fromEnd.second.base());

    std::vector<Step> steps;
    const auto add = [&](Lines begin, Lines end, dtl::edit_t kind) {
        std::transform(begin, end, std::back_inserter(steps),
                       [kind](std::string_view line) { return Step(line, kind); });
    };
    add(before.begin(), beginBefore, dtl::SES_COMMON);
    std::size_t left = 200'000;
    // Its own hunks have wrong line numbers once the texts differ much, so they are made here.
    dtl::Diff<std::string_view, Texts, BoundedCompare> difference(
        Texts(beginBefore, endBefore), Texts(beginAfter, endAfter), BoundedCompare(left));
    difference.compose();
    if (left != 0) {
        for (const auto& [line, info] : difference.getSes().getSequence())
            steps.emplace_back(line, info.type);
    } else {
        add(beginBefore, endBefore, dtl::SES_DELETE);
        add(beginAfter, endAfter, dtl::SES_ADD);
    }
    add(endBefore, before.end(), dtl::SES_COMMON);
    return steps;
}

/// Prints one side of a hunk's header. A side without lines stands behind the line before it.
void PrintRange(std::ostream& out, std::ptrdiff_t firstLine, std::ptrdiff_t lines)
{
    out << (lines == 0 ? firstLine - 1 : firstLine) << ',' << lines;
}

} // namespace

std::string UnifiedDifference(const std::string& name, const std::string& before, const std::string& after)
{
    if (before == after)
        return {};
    std::vector<Step> steps = FindSteps(SplitLines(before), SplitLines(after));

    std::ostringstream out;
    // A tab ends a name that holds blanks, so that `patch` takes all of it.
    const char* const end = name.find(' ') == std::string::npos ? "\n" : "\t\n";
    out << "--- " << name << end << "+++ " << name << end;

    constexpr std::ptrdiff_t context = 3;
    std::ptrdiff_t lineBefore = 1;
    std::ptrdiff_t lineAfter = 1;
    auto at = steps.begin();
    for (auto change = at; (change = std::find_if(at, steps.end(), IsChange)) != steps.end();) {
        const auto first = change - std::min(context, change - at);
        // Changes whose context would touch share a hunk; within one, deleted lines come before added ones.
        auto last = change;
        while (change != steps.end() && change - last <= 2 * context) {
            last = std::find_if_not(change, steps.end(), IsChange);
            std::stable_partition(change, last, IsDeleted);
            change = std::find_if(last, steps.end(), IsChange);
        }
        last += std::min(context, steps.end() - last);

        lineBefore += first - at;
        lineAfter += first - at;
        const auto linesBefore = std::count_if(first, last, std::not_fn(IsAdded));
        const auto linesAfter = std::count_if(first, last, std::not_fn(IsDeleted));
        out << "@@ -";
        PrintRange(out, lineBefore, linesBefore);
        out << " +";
        PrintRange(out, lineAfter, linesAfter);
        out << " @@\n";
        for (at = first; at != last; ++at) {
            const std::string_view line = at->first;
            out << (IsAdded(*at) ? '+' : IsDeleted(*at) ? '-' : ' ') << line;
            if (line.back() != '\n')
                out << "\n\\ No newline at end of file\n";
        }
        lineBefore += linesBefore;
        lineAfter += linesAfter;
    }
    return out.str();
}

} // namespace qmini
