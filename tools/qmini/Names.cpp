#include "qmini/Names.h"

#include "qmUtility/ini/Grammar.h"
#include "qmini/Failure.h"

#include <algorithm>
#include <cctype>

namespace qmini {

namespace {

bool IsSame(std::string_view a, std::string_view b, bool ignoresCase)
{
    const auto isSame = [ignoresCase](unsigned char x, unsigned char y) {
        return x == y || (ignoresCase && std::tolower(x) == std::tolower(y));
    };
    return std::ranges::equal(ini::Trimmed(a), ini::Trimmed(b), isSame);
}

/// @return the end of a message: a question when there is a name
std::string DidYouMean(const std::optional<std::string>& name)
{
    return name ? "; did you mean " + Quoted(*name) + '?' : std::string();
}

std::optional<std::string> SimilarKey(const INIDocument& document, std::string_view key,
                                      std::string_view section, bool ignoresCase)
{
    for (const auto& record : document)
        if (record.Section == section && !record.Key.empty() && IsSame(record.Key, key, ignoresCase))
            return std::string(record.Key);
    return std::nullopt;
}

std::optional<std::string> SimilarSection(const INIDocument& document, std::string_view section)
{
    for (const auto& record : document)
        if (IsSame(record.Section, section, true))
            return std::string(record.Section);
    return std::nullopt;
}

} // namespace

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::optional<std::string> KeyWithOtherBlanks(const INIDocument& document, std::string_view key,
                                              std::string_view section)
{
    return SimilarKey(document, key, section, false);
}

void ThrowNotFound(const INIDocument& document, std::string_view key, std::string_view section,
                   const std::string& file)
{
    const std::string where = "section " + Quoted(section);
    if (key.empty() || !document.SectionExists(section))
        throw Failure(Failed, "no " + where + " in " + file + DidYouMean(SimilarSection(document, section)));
    throw Failure(Failed, "no key " + Quoted(key) + " in " + where + " of " + file +
                              DidYouMean(SimilarKey(document, key, section, true)));
}

void Require(const INIDocument& document, std::string_view key, std::string_view section,
             const std::string& file)
{
    if (!(key.empty() ? document.SectionExists(section) : document.RecordExists(key, section)))
        ThrowNotFound(document, key, section, file);
}

std::optional<bool> IsCommentedOut(const INIDocument& document, std::string_view key,
                                   std::string_view section)
{
    const auto isKey = [&](const auto& record) { return record.Key == key && record.Section == section; };
    const auto first = std::find_if(document.begin(), document.end(), isKey);
    if (first == document.end() || first->Commented == ' ')
        return std::nullopt;
    return std::any_of(first, document.end(),
                       [&](const auto& record) { return record.Commented == ' ' && isKey(record); });
}

} // namespace qmini
