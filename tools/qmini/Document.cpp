// SPDX-License-Identifier: MIT
#include "qmUtility/platform/FileLock.h"
#include "qmini/Qmini.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <istream>
#include <ostream>
#include <thread>

namespace qmini {

namespace {

/// Waits up to five seconds for the lock of a file.
void Lock(platform::FileLock& lock, const std::string& file, std::ostream& err) {
    std::error_code error;
    for (int tries = 0; !lock.TryLock(platform::SystemPath(std::filesystem::path(file)), error); ++tries) {
        if (error) throw Failure{Failed, "cannot edit " + file + ": " + error.message()};
        if (tries == 500) throw Failure{Failed, "cannot edit " + file + ": another program has locked it"};
        if (tries == 100) Say(err, "waiting for another program that has locked " + file);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/// @return the difference as `patch` reads it, from the first to the last line that changes, or nothing
/// @param name the file's name, for the header lines
std::string UnifiedDifference(const std::string& name, std::string_view before, std::string_view after) {
    if (before == after) return {};
    const auto split = [](std::string_view text) {  // newlines included: the last line may have none
        std::vector<std::string_view> lines;
        ini::ScanLines<INISyntax::Common>(text, [&](const auto& line) { lines.push_back(line.Raw); });
        return lines;
    };
    const auto left = split(before);
    const auto right = split(after);
    const auto [leftBegin, rightBegin] = std::ranges::mismatch(left, right);
    const auto [leftTail, rightTail] = std::mismatch(left.rbegin(), std::reverse_iterator(leftBegin),
                                                     right.rbegin(), std::reverse_iterator(rightBegin));
    const auto leftEnd = leftTail.base();
    const auto rightEnd = rightTail.base();
    constexpr std::ptrdiff_t context = 3;
    const auto first = leftBegin - std::min(context, leftBegin - left.begin());
    const auto last = leftEnd + std::min(context, left.end() - leftEnd);

    const auto range = [&](char side, std::ptrdiff_t lines) {  // one without lines is at the line before it
        return side + std::to_string(first - left.begin() + (lines != 0)) + ',' + std::to_string(lines) + ' ';
    };
    const std::ptrdiff_t growth = (rightEnd - rightBegin) - (leftEnd - leftBegin);
    // A tab ends a name that holds blanks, so that `patch` takes all of it.
    const std::string end = name.find(' ') == std::string_view::npos ? "\n" : "\t\n";
    std::string text = "--- " + name + end + "+++ " + name + end + "@@ " + range('-', last - first) +
                       range('+', last - first + growth) + "@@\n";
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

}  // namespace

void EachLine(std::string_view text, INISyntax syntax,
              const std::function<void(const NumberedLine&)>& visit) {
    const bool isCommon = syntax == INISyntax::Common;
    if (isCommon) text.remove_prefix(ini::ByteOrderMarkSize(text));
    NumberedLine line;
    std::size_t indentation = std::string_view::npos;  // of the key that deeper lines continue
    bool isAfterBackslash = false;
    ini::ScanLines(syntax, text, [&](const ini::Line<char>& scanned) {
        static_cast<ini::Line<char>&>(line) = scanned;
        ++line.Number;
        if (line.IsHeader()) {
            line.Nearest = line.Section;
            if (line.IsActive() || !isCommon) line.NearestActive = line.Section;
        }
        const bool isKey = line.IsActiveKey();
        const bool canContinue = isCommon && (isKey || line.Kind == ini::LineKind::Other);
        const std::size_t own = line.Indentation().size();
        line.IsIndented = canContinue && own > indentation;
        line.Continues = line.IsIndented || (canContinue && isAfterBackslash);
        if (!line.Continues && (canContinue || line.IsActiveHeader()))  // comments do not end a value
            indentation = isKey ? own : std::string_view::npos;
        // The last of an odd number of backslashes is escaped by none.
        const std::size_t backslashes = line.Text().size() - (line.Text().find_last_not_of('\\') + 1);
        isAfterBackslash = (isKey || line.Continues) && backslashes % 2 != 0;
        visit(line);
    });
}

bool IsMatch(const NumberedLine& line, const Call& call) {
    return line.Kind == (call.Key.empty() ? ini::LineKind::Header : ini::LineKind::Key) &&
           line.IsActive() == (call.Command->Edit != Uncomment) && line.Key == call.Key &&
           line.Within() == call.Section;
}

std::string ReadAll(std::istream& standardInput) {
    std::string text;
    for (char block[1 << 16]; standardInput.read(block, sizeof block), standardInput.gcount() != 0;)
        text.append(block, static_cast<std::size_t>(standardInput.gcount()));
    if (standardInput.bad()) throw Failure{Failed, "cannot read standard input"};
    return text;
}

platform::Buffer<char> ReadText(const Call& call, std::istream& standardInput) {
    std::optional<platform::Buffer<char>> text;
    if (call.File == "-") {
        const std::string input = ReadAll(standardInput);
        text.emplace(input.size());
        text->Size = input.copy(text->Data.get(), input.size());
    } else {
        std::error_code error;
        text = platform::File::Read(platform::SystemPath(std::filesystem::path(call.File)), error);
        if (!text) throw Failure{Failed, "cannot read " + call.File + ": " + error.message()};
    }
    if (!call.Has("--parser") && std::string_view(*text).find('\0') != std::string_view::npos)
        throw Failure{Failed, "cannot read " + call.FileName() + ": binary file or UTF-16?"};
    return std::move(*text);
}

INIDocument ReadDocument(const Call& call, std::string_view text) {
    INIDocument document(call.Syntax());
    try {
        document.Parse(text);
    } catch (const INIFormatError& error) {
        throw Failure{Failed,
                      call.FileName() + ':' + std::to_string(error.Line()) + ": header without \"]\""};
    }
    return document;
}

std::optional<INIDocument::RecordView> FindCommentedOut(const INIDocument& document, std::string_view key,
                                                        std::string_view section) {
    for (const auto& record : document)
        if (record.Commented != ' ' && record.Key == key && record.Section == section) return record;
    return std::nullopt;
}

void RequireActive(const INIDocument& document, const Call& call) {
    const bool hasSection = document.SectionExists(call.Section);
    if (call.Key.empty() ? hasSection : document.RecordExists(call.Key, call.Section)) return;
    std::string_view key = call.Key;
    if (!hasSection && !FindCommentedOut(document, key, call.Section))
        key = {};  // it is the section that is missing
    const std::string where = "section " + Quoted(call.Section);
    const std::string what =
        (key.empty() ? where + " in " : "key " + Quoted(key) + " in " + where + " of ") + call.FileName();
    if (FindCommentedOut(document, key, call.Section)) throw Failure{Failed, what + " is commented out"};
    const auto isSimilar = [](std::string_view a, std::string_view b) {
        const auto lower = [](unsigned char c) { return std::tolower(c); };
        return std::ranges::equal(ini::Trimmed(a), ini::Trimmed(b), {}, lower, lower);
    };
    for (const auto& record : document) {
        const bool isOther = !key.empty() && record.Section != call.Section;
        const auto name = key.empty() ? record.Section : record.Key;
        if (!isOther && isSimilar(name, key.empty() ? call.Section : key))
            throw Failure{Failed, "no " + what + "; did you mean " + Quoted(name) + '?'};
    }
    throw Failure{Failed, "no " + what};
}

void EditFile(const Call& call, const Streams& streams, const std::function<void(Editing&)>& edit) {
    const bool isFilter = call.File == "-";
    const bool isDryRun = call.Has("--dry-run");
    const std::filesystem::path path(call.File);
    platform::FileLock lock;
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!isFilter && std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Failure{Failed, "cannot edit " + call.File + ": no regular file"};
    if (!isFilter && !isDryRun) Lock(lock, call.File, streams.Err);
    const auto before = ReadText(call, streams.In);
    Editing editing{ReadDocument(call, before)};
    edit(editing);
    const std::string after = editing.Document.Text();
    if (isDryRun)
        streams.Out << UnifiedDifference(call.FileName(), before, after);
    else if (isFilter)
        streams.Out << after;
    else if (!platform::File::Replace(platform::SystemPath(path), after, error))  // `Save` would copy it
        throw Failure{Failed, "cannot write " + call.File + ": " + error.message()};
}

}  // namespace qmini
