/// @file
/// Wide printing: single directives compared with the C library's wide printing, and arbitrary formats, which must
/// stay within the buffer.

#include "qmUtility/platform/WidePrint.h"
#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <clocale>
#include <cwchar>

namespace {

/// Prints one argument with random flags, width and precision.
/// @param ours,standard length and conversion, here and in the C library.
template <class Argument, class Standard>
void Check(FuzzedDataProvider& data, const std::wstring& ours, Argument argument,
           const std::wstring& standard, Standard standardArgument)
{
    std::wstring start = L"<%";
    for (const wchar_t flag : {L'-', L'+', L' ', L'#', L'0'})
        start.append(data.ConsumeBool() ? 1 : 0, flag);
    start += L"*.*";
    const int range = data.ConsumeIntegralInRange(0, 99) == 0 ? 70'000 : 40;
    const int width = data.ConsumeIntegralInRange(-range, range);
    const int precision = data.ConsumeIntegralInRange(-range, range);
    const bool isText = ours.find_first_of(L"sScC") != std::wstring::npos;
    static std::vector<wchar_t> expected(70'000);
    const int size = std::swprintf(expected.data(), expected.size(), (start + standard + L'>').c_str(),
                                   std::clamp(width, -65535, 65535),
                                   isText ? precision : std::min(precision, 65535), standardArgument);
    Require(size >= 0, "the C library prints");
    std::wstring text(expected.data(), static_cast<std::size_t>(size));
    const auto capacity = data.ConsumeIntegralInRange<std::size_t>(1, 400);
    std::vector<wchar_t> buffer(capacity); // the address sanitizer detects a write past the end
    const std::ptrdiff_t result =
        platform::Print(buffer.data(), capacity, (start + ours + L'>').c_str(), width, precision, argument);
    Require(result == (text.size() < capacity ? size : -1), "the length of the text");
    text = text.substr(0, capacity - 1) + L'\0';
    Require(std::equal(text.begin(), text.end(), buffer.begin()), "the text");
}

void CheckNumber(FuzzedDataProvider& data)
{
    static constexpr std::pair<const wchar_t*, const wchar_t*> lengths[] = {
        {L"hh", L"hh"}, {L"h", L"h"},    {L"", L""},   {L"I32", L""}, {L"l", L"l"}, {L"w", L"l"},
        {L"ll", L"ll"}, {L"I64", L"ll"}, {L"I", L"z"}, {L"j", L"j"},  {L"z", L"z"}, {L"t", L"t"}};
    const auto [ours, standard] = data.PickValueInArray(lengths);
    const std::wstring integer(1, data.PickValueInArray({L'd', L'i', L'u', L'o', L'x', L'X'}));
    const auto number = data.ConsumeIntegral<long long>();
    Check(data, ours + integer, number, standard + integer, number);

    const std::wstring floating(1, data.PickValueInArray({L'e', L'E', L'f', L'F', L'g', L'G', L'a', L'A'}));
    const auto real = data.ConsumeFloatingPoint<double>();
    Check(data, floating, real, floating, real);
    Check(data, L'L' + floating, real / 3.0L, L'L' + floating, real / 3.0L);
}

void CheckText(FuzzedDataProvider& data)
{
    std::wstring wide;
    for (const char c : data.ConsumeRandomLengthString(64))
        wide += c >= 0 ? static_cast<wchar_t>(c) : data.ConsumeIntegral<wchar_t>();
    Check(data, data.PickValueInArray({L"s", L"ls", L"ws", L"lS"}), wide.c_str(), L"ls", wide.c_str());
    Check(data, data.PickValueInArray({L"c", L"lc", L"wc"}), wide[0], L"lc",
          static_cast<std::wint_t>(wide[0]));

    // Narrow text is UTF-8; each byte that is not is the character of its value.
    const std::string narrow = data.ConsumeRandomLengthString(64).c_str();
    wide.clear();
    for (std::size_t at = 0; at < narrow.size();) {
        wchar_t c = 0;
        std::mbstate_t state{};
        const std::size_t length = std::mbrtowc(&c, &narrow[at], narrow.size() - at, &state);
        const bool isValid = length <= 4 && c <= 0x10FFFF;
        wide += isValid ? c : static_cast<unsigned char>(narrow[at]);
        at += isValid ? length : 1;
    }
    Check(data, data.PickValueInArray({L"hs", L"hhs", L"S"}), narrow.c_str(), L"ls", wide.c_str());
    Check(data, data.PickValueInArray({L"hc", L"hhc", L"C"}), narrow[0], L"lc",
          std::wint_t{static_cast<unsigned char>(narrow[0])});
}

/// Each argument is the address of a text that is null-terminated as bytes and as wide characters.
void CheckAnyFormat(FuzzedDataProvider& data)
{
    const auto capacity = data.ConsumeIntegralInRange<std::size_t>(1, 100);
    std::wstring format = model::Widen<wchar_t>(data.ConsumeRemainingBytesAsString());
    int arguments = 0; // a long double is as large as two of those below
    std::erase_if(format, [&](wchar_t c) { return (c == L'%' || c == L'*') && ++arguments > 12; });
    const auto* const t = L"text";
    std::vector<wchar_t> buffer(capacity);
    const std::ptrdiff_t result =
        platform::Print(buffer.data(), capacity, format.c_str(), t, t, t, t, t, t, t, t, t, t, t, t, t, t, t,
                        t, t, t, t, t, t, t, t, t, t, t, t, t, t, t);
    Require(buffer[result < 0 ? capacity - 1 : static_cast<std::size_t>(result)] == 0,
            "the text is terminated");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    [[maybe_unused]] static const char* const locale = std::setlocale(LC_CTYPE, "C.UTF-8");
    FuzzedDataProvider data(bytes, size);
    data.PickValueInArray({CheckAnyFormat, CheckNumber, CheckText})(data);
    return 0;
}
