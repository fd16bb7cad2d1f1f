#include "qmUtility/ini/INIParser.h"

#include <algorithm>
#include <iterator>

bool INIParser::Sort(std::string path, bool descending)
{
    const auto sortBy = [descending](std::vector<Record>& records, std::string Record::*field) {
        std::sort(records.begin(), records.end(), [descending, field](const Record& a, const Record& b) {
            return descending ? b.*field < a.*field : a.*field < b.*field;
        });
    };

    std::vector<Record> sections = GetSections(path);
    if (sections.empty())
        return false;
    sortBy(sections, &Record::Section);

    // Each header takes the keys of its name from the whole file. So keys are written once for every header
    // of their section, twice for a section with two, and not at all for a section with none.
    std::vector<Record> sorted;
    for (const Record& section : sections) {
        sorted.push_back(section);
        std::vector<Record> keys = GetSection(section.Section, path);
        sortBy(keys, &Record::Key);
        sorted.insert(sorted.end(), std::make_move_iterator(keys.begin()),
                      std::make_move_iterator(keys.end()));
    }
    return Save(path, sorted);
}
