// SPDX-License-Identifier: MIT
/// @file
/// Random operations on a file or on a document, each compared with the model's: its result, and what the file
/// or the document then holds.

#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

namespace {

const std::string Path = "/dev/shm/qmUtility-fuzz-" + std::to_string(getpid());
const std::wstring WidePath(Path.begin(), Path.end());

/// An operation of `INIParser` or of the document, on the arguments without the path.
#define CALL(Operation, ...)                                                                                 \
    (IsOfFile ? INIParser::Operation(__VA_ARGS__, Path) : Document.Operation(__VA_ARGS__))

/// A file, or a document that was loaded from it, and the records that the model knows of it.
struct Session
{
    FuzzedDataProvider& Data;
    bool IsOfFile; ///< whether operations are those of `INIParser`, which read and write the file
    std::string Text;
    model::Records Records = {};
    INIDocument Document = {};

    /// @return a name of the file's own, more often than not, or any bytes.
    std::string Name(std::string INIParser::Record::*field)
    {
        if (Records.empty() || Data.ConsumeIntegralInRange(0, 3) == 0)
            return Data.ConsumeRandomLengthString(16);
        return Records[Data.ConsumeIntegralInRange<std::size_t>(0, Records.size() - 1)].*field;
    }

    void Compare() const
    {
        std::ifstream file(Path, std::ios::binary);
        Require(std::string(std::istreambuf_iterator<char>(file), {}) == Text, "the text of the file");
        Require(IsOfFile || Document.Content() == model::Content(Records), "the content of the document");
    }

    /// Compares what the library says that it did, and did, with what is expected of it.
    void Edited(bool result, bool isExpected)
    {
        Require(result == isExpected, "the result of the edit");
        if (isExpected && IsOfFile)
            Text = model::Save(Records);
        Compare();
    }

    void Look(const std::string& key, const std::string& section)
    {
        const auto at = model::Find(Records, key, section);
        const bool isFound = at != Records.end();
        Require(model::Equal(CALL(GetRecord, key, section),
                             isFound ? decltype(Records){*at} : decltype(Records)()),
                "GetRecord");
        Require(CALL(GetValue, key, section) == (isFound ? at->Value : ""), "GetValue");
        Require(CALL(RecordExists, key, section) == isFound, "RecordExists");
        Require(CALL(SectionExists, section) == (model::Find(Records, section) != Records.end()),
                "SectionExists");
        model::Records keys;
        std::vector<std::string> names;
        for (const auto& record : Records)
            if (record.Key.empty())
                names.push_back(record.Section);
            else if (record.Section == section)
                keys.push_back(record);
        Require(model::Equal(CALL(GetSection, section), keys), "GetSection");
        Require((IsOfFile ? INIParser::GetSectionNames(Path) : Document.GetSectionNames()) == names,
                "GetSectionNames");
        Require((IsOfFile ? INIParser::Content(Path) : Document.Content()) == model::Content(Records),
                "Content");
    }

    void Step()
    {
        const auto key = Name(&INIParser::Record::Key);
        const auto section = Name(&INIParser::Record::Section);
        const auto text = Data.ConsumeRandomLengthString(16);
        const bool flag = Data.ConsumeBool();
        const char mark = flag ? '#' : Data.ConsumeIntegral<char>();
        const auto at = model::Find(Records, key, section);
        const bool isFound = at != Records.end();
        const auto everyRecord = [&](auto change) {
            for (auto& record : Records)
                if (record.Section == section)
                    change(record);
        };
        switch (Data.ConsumeIntegralInRange(0, 12)) {
        case 0:
            return Look(key, section);
        case 1:
            model::SetValue(Records, key, text, section);
            return Edited(CALL(SetValue, key, text, section), true);
        case 2:
            Records.push_back({{}, ' ', section, {}, {}});
            return Edited(CALL(AddSection, section), true);
        case 3:
            if (isFound)
                Records.erase(at);
            return Edited(CALL(DeleteRecord, key, section), isFound);
        case 4:
            std::erase_if(Records, [&](const auto& record) { return record.Section == section; });
            return Edited(CALL(DeleteSection, section), true);
        case 5:
            everyRecord([&](auto& record) { record.Section = text; });
            return Edited(CALL(RenameSection, section, text), true);
        case 6:
            if (isFound)
                at->Commented = flag ? '#' : ';';
            return Edited(CALL(CommentRecord, flag ? INIParser::Hash : INIParser::Semicolon, key, section),
                          isFound);
        case 7:
            everyRecord([&](auto& record) { record.Commented = mark; });
            return Edited(CALL(CommentSection, mark, section), true);
        case 8:
            if (isFound)
                at->Commented = ' ';
            return Edited(CALL(UnCommentRecord, key, section), isFound);
        case 9:
            everyRecord([](auto& record) { record.Commented = ' '; });
            return Edited(CALL(UnCommentSection, section), true);
        case 10:
            if (isFound)
                at->Comments = text.size() >= 2 ? text + "\n" : text;
            return Edited(key.empty() ? CALL(SetSectionComments, text, section)
                                      : CALL(SetRecordComments, text, key, section),
                          isFound);
        case 11: {
            const auto sorted = model::Sorted(Records, flag);
            if (!sorted.empty())
                Records = sorted;
            return Edited(IsOfFile ? INIParser::Sort(Path, flag) : Document.Sort(flag), !sorted.empty());
        }
        default:
            Records.clear();
            Document = INIDocument();
            return Edited(!IsOfFile || INIParser::Create(Path), true);
        }
    }
};

template <class Call>
void RequireThrow(Call call)
{
    try {
        call();
    } catch (const std::out_of_range&) {
        return;
    }
    Require(false, "a malformed header throws");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    // Choices are taken from the end of the bytes and texts from their front, up to a backslash before another
    // character, so a seed is a plain INI file, a "\\.", and some more.
    FuzzedDataProvider data(bytes, size);
    const auto steps = data.ConsumeIntegralInRange(1, 8);
    Session session = {data, data.ConsumeBool(), data.ConsumeRandomLengthString(size)};
    std::ofstream(Path, std::ios::binary) << session.Text;
    try {
        session.Records = model::Load(session.Text);
        // Its text is in memory of just its size: the address sanitizer detects a read past it.
        WINIDocument wide;
        Require(session.Document.Load(Path) && wide.Load(WidePath), "the documents are loaded");
        std::wstring content;
        for (const char c : model::Content(session.Records))
            content += static_cast<wchar_t>(static_cast<unsigned char>(c));
        Require(wide.Content() == content, "the content of the wide document");
        for (int i = 0; i != steps; ++i) {
            session.Step();
            if (session.IsOfFile)
                session.Records = model::Load(session.Text);
        }
        if (!session.IsOfFile) {
            Require(session.Document.Save(Path), "the document is saved");
            session.Text = model::Save(session.Records);
        }
    } catch (const std::out_of_range&) {
        RequireThrow([&] { session.Document.Load(Path); });
        RequireThrow([&] { return INIParser::GetValue("", "", Path); });
        RequireThrow([&] { return INIParser::SetValue(L"k", L"v", L"S", WidePath); });
        RequireThrow([&] { return INIParser::Sort(Path, false); });
    }
    session.Compare();
    return 0;
}
