// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIParser.h"

#include "qmUtility/ini/INIDocument.h"

#include <utility>

INIParser::INIParser() = default;
INIParser::INIParser(const INIParser&) = default;
INIParser& INIParser::operator=(const INIParser&) = default;
INIParser::~INIParser() = default;

bool INIParser::Load(std::string path, INIDocument& document) { return document.Load(path); }
bool INIParser::Load(std::wstring path, WINIDocument& document) { return document.Load(path); }
bool INIParser::Save(std::string path, const INIDocument& document) { return document.Save(path); }
bool INIParser::Save(std::wstring path, const WINIDocument& document) { return document.Save(path); }

template <class Char, class... Parameters, class... Arguments>
bool INIParser::Edit(const std::basic_string<Char>& path,
                     bool (BasicINIDocument<Char>::*operation)(Parameters...), Arguments&&... arguments)
{
    BasicINIDocument<Char> document;
    return Load(path, document) && (document.*operation)(std::forward<Arguments>(arguments)...) &&
           Save(path, document);
}

bool INIParser::Create(std::string path) { return Save(path, INIDocument()); }

std::string INIParser::Content(std::string path)
{
    INIDocument document;
    return Load(path, document) ? document.Content() : std::string();
}

bool INIParser::Sort(std::string path, bool descending) { return Edit(path, &INIDocument::Sort, descending); }

bool INIParser::SetValue(std::string key, std::string value, std::string section, std::string path)
{
    return Edit(path, &INIDocument::SetValue, std::move(key), std::move(value), std::move(section));
}

bool INIParser::SetValue(std::wstring key, std::wstring value, std::wstring section, std::wstring path)
{
    return Edit(path, &WINIDocument::SetValue, std::move(key), std::move(value), std::move(section));
}

bool INIParser::AddSection(std::string section, std::string path)
{
    return Edit(path, &INIDocument::AddSection, std::move(section));
}

bool INIParser::DeleteRecord(std::string key, std::string section, std::string path)
{
    return Edit(path, &INIDocument::DeleteRecord, std::move(key), std::move(section));
}

bool INIParser::DeleteSection(std::string section, std::string path)
{
    return Edit(path, &INIDocument::DeleteSection, std::move(section));
}

bool INIParser::RenameSection(std::string oldName, std::string newName, std::string path)
{
    return Edit(path, &INIDocument::RenameSection, std::move(oldName), std::move(newName));
}

bool INIParser::CommentRecord(CommentChar character, std::string key, std::string section, std::string path)
{
    return Edit(path, &INIDocument::CommentRecord, character, std::move(key), std::move(section));
}

bool INIParser::CommentSection(char character, std::string section, std::string path)
{
    return Edit(path, &INIDocument::CommentSection, character, std::move(section));
}

bool INIParser::UnCommentRecord(std::string key, std::string section, std::string path)
{
    return Edit(path, &INIDocument::UnCommentRecord, std::move(key), std::move(section));
}

bool INIParser::UnCommentSection(std::string section, std::string path)
{
    return Edit(path, &INIDocument::UnCommentSection, std::move(section));
}

bool INIParser::SetRecordComments(std::string comments, std::string key, std::string section,
                                  std::string path)
{
    return Edit(path, &INIDocument::SetRecordComments, std::move(comments), std::move(key),
                std::move(section));
}

bool INIParser::SetSectionComments(std::string comments, std::string section, std::string path)
{
    return Edit(path, &INIDocument::SetSectionComments, std::move(comments), std::move(section));
}
