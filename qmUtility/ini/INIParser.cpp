// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"

#include "qmUtility/ini/Records.h"
#include "qmUtility/ini/TextFile.h"
#include "qmUtility/platform/File.h"

#include <algorithm>
#include <cstddef>
#include <locale>
#include <map>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

/// The records of a file, in file order, as views into its text and into the arguments of an edit.
template <class Char>
struct INIParser::List {
    using View = std::basic_string_view<Char>;
    using RecordView = ini::RecordView<Char>;

    /// Calls `change` with the iterator of the first record of a key and section.
    /// @return whether there is one.
    template <class Change>
    bool ChangeRecord(View key, View section, Change change) {
        const auto at = std::find_if(Records.begin(), Records.end(), [=](const RecordView& record) {
            return record.Section == section && record.Key == key;
        });
        if (at == Records.end()) return false;
        change(at);
        return true;
    }

    /// Calls `change` with each record of a section, if there are any.
    template <class Change>
    bool ChangeSection(View section, Change change) {
        for (RecordView& record : Records)
            if (record.Section == section) change(record);
        return true;
    }

    bool SetValue(View key, View value, View section) {
        if (ChangeRecord(key, section, [=](auto at) { at->Value = value; })) return true;
        auto at = std::find_if(Records.begin(), Records.end(),
                               [=](const RecordView& record) { return record.Section == section; });
        if (at == Records.end()) at = Records.insert(at, {.Section = section});
        // The first key of its section, not the last.
        Records.insert(at + 1, {.Section = section, .Key = key, .Value = value});
        return true;
    }

    /// Loads a file, calls `change` with its records, and saves them if that returns true.
    template <class Change>
    static bool Edit(std::basic_string<Char> path, Change change) {
        List list;
        return Load(path, list) && change(list) && Save(path, list);
    }

    ini::Encoding<Char> Encoding{std::locale()};
    platform::Buffer<Char> Text{0};
    std::vector<RecordView> Records;
};

INIParser::INIParser() = default;
INIParser::INIParser(const INIParser&) = default;
INIParser& INIParser::operator=(const INIParser&) = default;
INIParser::~INIParser() = default;

template <class Char>
bool INIParser::Load(std::basic_string<Char> path, List<Char>& list) {
    std::error_code error;
    auto bytes = platform::File::Read(platform::SystemPath(path), error);
    if (!bytes) return false;
    auto text = list.Encoding.Decode(std::move(*bytes));
    if (!text) return false;
    list.Text = std::move(*text);
    list.Records.clear();
    constexpr std::size_t charactersPerRecord = 32;  // less than in most files: the list seldom grows
    list.Records.reserve(list.Text.Size / charactersPerRecord);
    ini::Scan(std::basic_string_view<Char>(list.Text),
              [&](const auto& record) { list.Records.push_back(record); });
    for (auto& record : list.Records)
        record.Comments = ini::TidyComments(list.Text.Data.get(), record.Comments);
    return true;
}

namespace {

/// Appends a record as text.
/// @param isIndented whether an active record's line begins with a space
/// @param isSpaced whether an empty line stands between the comments and the line
template <class Char>
void AppendRecord(std::basic_string<Char>& text, const ini::RecordView<Char>& record, bool isIndented,
                  bool isSpaced) {
    text += record.Comments;
    if (isSpaced) text += Char('\n');
    if (isIndented || record.Commented != ' ') text += record.Commented;
    if (record.Key.empty())
        ((text += Char('[')) += record.Section) += Char(']');
    else
        ((text += record.Key) += Char('=')) += record.Value;
    text += Char('\n');
}

/// Appends bytes with the newlines of the system's text files.
void AppendLines(std::string& text, std::string_view bytes) {
    for (std::size_t end = 0; (end = bytes.find('\n')) != std::string_view::npos;
         bytes.remove_prefix(end + 1))
        (text += bytes.substr(0, end)) += platform::Newline;
    text += bytes;
}

}  // namespace

/// The two widths of a saved file differ intentionally: the narrow form begins every active line with a
/// space; the wide one does not, and has an empty line between a section's comments and its header, for each
/// section but the first.
template <class Char>
bool INIParser::Save(std::basic_string<Char> path, const List<Char>& list) {
    // All bytes are made before the file is opened: running out of memory between the old content and the new
    // one would lose both.
    constexpr bool isNarrow = std::is_same_v<Char, char>;
    std::string bytes;
    bytes.reserve(list.Text.Size + 2 * list.Records.size());  // nearly always enough
    std::vector<std::size_t> ends;                            // of the records
    ends.reserve(list.Records.size() + 1);
    std::basic_string<Char> text;
    auto encoding = list.Encoding;
    std::string encoded;
    bool isFirstSection = true;
    for (const auto& record : list.Records) {
        const bool isSpaced = record.Key.empty() && !std::exchange(isFirstSection, false) && !isNarrow;
        text.clear();
        AppendRecord(text, record, isNarrow, isSpaced);
        encoded.clear();
        encoding.Append(encoded, text, ini::Unencodable::Replace);
        AppendLines(bytes, encoded);
        ends.push_back(bytes.size());
    }
    encoding.Finish(bytes);
    ends.push_back(bytes.size());

    platform::File file{platform::SystemPath(path)};
    if (!file.IsOpen()) return false;
    std::size_t begin = 0;
    for (const std::size_t end : ends) {  // a write for each record: what is written survives the host
        file.Write({bytes.data() + begin, end - begin});
        begin = end;
    }
    return true;
}

bool INIParser::Create(std::string path) { return Save(path, List<char>()); }

std::string INIParser::Content(std::string path) {
    List<char> list;
    std::string text;
    if (Load(path, list))
        for (const auto& record : list.Records) AppendRecord(text, record, false, false);
    return text;
}

bool INIParser::Sort(std::string path, bool descending) {
    List<char> list;
    if (!Load(path, list)) return false;

    using RecordView = ini::RecordView<char>;
    using Pointers = std::vector<const RecordView*>;  // moved faster than records
    const auto sortBy = [descending](Pointers& records, std::string_view RecordView::*field) {
        std::sort(records.begin(), records.end(), [=](const RecordView* a, const RecordView* b) {
            return descending ? b->*field < a->*field : a->*field < b->*field;
        });
    };
    Pointers headers;
    std::map<std::string_view, Pointers> keys;  // of each section, in file order
    for (const RecordView& record : list.Records)
        (record.Key.empty() ? headers : keys[record.Section]).push_back(&record);
    if (headers.empty()) return false;

    sortBy(headers, &RecordView::Section);
    for (auto& [section, ofSection] : keys) sortBy(ofSection, &RecordView::Key);

    // Each header takes the keys of its name from the whole file. So keys are written once for each header of
    // their section: twice for a section with two, and not at all for a section with none.
    std::vector<RecordView> sorted;
    sorted.reserve(list.Records.size());
    for (const RecordView* header : headers) {
        sorted.push_back(*header);
        for (const RecordView* key : keys[header->Section]) sorted.push_back(*key);
    }
    list.Records = std::move(sorted);
    return Save(path, list);
}

bool INIParser::SetValue(std::string key, std::string value, std::string section, std::string path) {
    return List<char>::Edit(path, [&](auto& list) { return list.SetValue(key, value, section); });
}

bool INIParser::SetValue(std::wstring key, std::wstring value, std::wstring section, std::wstring path) {
    return List<wchar_t>::Edit(path, [&](auto& list) { return list.SetValue(key, value, section); });
}

bool INIParser::AddSection(std::string section, std::string path) {
    return List<char>::Edit(path, [&](auto& list) {
        list.Records.push_back({.Section = section});
        return true;
    });
}

bool INIParser::DeleteRecord(std::string key, std::string section, std::string path) {
    return List<char>::Edit(path, [&](auto& list) {
        return list.ChangeRecord(key, section, [&](auto at) { list.Records.erase(at); });
    });
}

bool INIParser::DeleteSection(std::string section, std::string path) {
    return List<char>::Edit(path, [&](auto& list) {
        std::erase_if(list.Records, [&](const auto& record) { return record.Section == section; });
        return true;
    });
}

bool INIParser::RenameSection(std::string oldName, std::string newName, std::string path) {
    return List<char>::Edit(path, [&](auto& list) {
        return list.ChangeSection(oldName, [&](auto& record) { record.Section = newName; });
    });
}

bool INIParser::CommentRecord(CommentChar character, std::string key, std::string section, std::string path) {
    return List<char>::Edit(path, [&](auto& list) {
        return list.ChangeRecord(key, section,
                                 [=](auto at) { at->Commented = static_cast<char>(character); });
    });
}

bool INIParser::CommentSection(char character, std::string section, std::string path) {
    return List<char>::Edit(path, [&](auto& list) {
        return list.ChangeSection(section, [=](auto& record) { record.Commented = character; });
    });
}

bool INIParser::UnCommentRecord(std::string key, std::string section, std::string path) {
    return CommentRecord(static_cast<CommentChar>(' '), std::move(key), std::move(section), std::move(path));
}

bool INIParser::UnCommentSection(std::string section, std::string path) {
    return CommentSection(' ', std::move(section), std::move(path));
}

bool INIParser::SetRecordComments(std::string comments, std::string key, std::string section,
                                  std::string path) {
    // The newline that is appended depends on the length of the text alone: a text that ends in one gets
    // another, and a text of a single character gets none.
    if (comments.size() >= 2) comments += '\n';
    return List<char>::Edit(path, [&](auto& list) {
        return list.ChangeRecord(key, section, [&](auto at) { at->Comments = comments; });
    });
}

bool INIParser::SetSectionComments(std::string comments, std::string section, std::string path) {
    return SetRecordComments(std::move(comments), {}, std::move(section), std::move(path));
}
