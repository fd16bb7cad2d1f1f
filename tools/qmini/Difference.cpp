#include "qmini/Difference.h"

#include <dtl/dtl.hpp>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ostream>
#include <sstream>
#include <utility>
#include <vector>

namespace qmini {

namespace {

/// The text's lines, each with its line end: a last line without one differs from the same line with one.
std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(in.eof() ? line : line + '\n');
    return lines;
}

/// A line of both texts together, and whether it is added, deleted or common.
using Step = std::pair<std::string, dtl::elemInfo>;

bool IsChange(const Step& step) { return step.second.type != dtl::SES_COMMON; }
bool IsDeleted(const Step& step) { return step.second.type == dtl::SES_DELETE; }
bool IsAdded(const Step& step) { return step.second.type == dtl::SES_ADD; }

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
    dtl::Diff<std::string> difference(Lines(before), Lines(after));
    difference.compose();
    // Its own hunks bear wrong line numbers once the texts differ much, so they are made here.
    std::vector<Step> steps = difference.getSes().getSequence();

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
            const std::string& line = at->first;
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
