/// @file
/// The scanner in both widths against the model. The text of the wide one takes each byte, and one past the
/// bytes for each 0x80.

#include "qmUtility/ini/ScanFile.h"
#include "tests/fuzz/Model.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace {

/// @return what `load` gives, or nothing when it throws.
template <class Load>
auto Loaded(Load load) -> std::optional<decltype(load())>
{
    try {
        return load();
    } catch (const std::out_of_range& error) {
        Require(error.what() == std::string("invalid string position"), "the message of the exception");
        return std::nullopt;
    }
}

template <class Char>
void Check(const std::basic_string<Char>& text)
{
    // Of just its size, so that the address sanitizer sees any read past the end.
    const std::unique_ptr<Char[]> exact(new Char[text.size()]);
    std::copy(text.begin(), text.end(), exact.get());
    const auto found = Loaded([&] {
        model::Records<Char> records;
        ini::Scan(std::basic_string_view<Char>(exact.get(), text.size()),
                  [&](const auto& view) { records.push_back(ini::ToRecord<Char>(view)); });
        return records;
    });
    const auto expected = Loaded([&] { return model::Load(text); });
    Require(found.has_value() == expected.has_value(), "both accept the text");
    Require(!found || model::operator==(*found, *expected), "both find the same records");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    Check(text);
    std::wstring wide = model::Widen<wchar_t>(text);
    std::replace(wide.begin(), wide.end(), L'\x80', wchar_t(0x15B)); // whose low byte is a "["
    Check(wide);
    return 0;
}
