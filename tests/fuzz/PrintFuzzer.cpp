// SPDX-License-Identifier: MIT
// Wide printing: directives for numbers compared with the C library's wide printing, and arbitrary formats.

#include "qmUtility/framework/CString.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cassert>
#include <cwchar>

namespace {

/// Prints a number with random flags, width and precision.
/// @param ours,standard length and conversion, here and in the C library.
template <class Number>
void Check(FuzzedDataProvider& data, const std::wstring& ours, const std::wstring& standard, Number number) {
    std::wstring start = L"<%";
    for (const wchar_t flag : {L'-', L'+', L' ', L'#', L'0'}) start.append(data.ConsumeBool() ? 1 : 0, flag);
    start += L"*.*";
    const int range = data.ConsumeIntegralInRange(0, 99) == 0 ? 70'000 : 40;
    const int width = data.ConsumeIntegralInRange(-range, range);
    const int precision = data.ConsumeIntegralInRange(-range, range);
    static std::vector<wchar_t> expected(70'000);
    const int size = std::swprintf(expected.data(), expected.size(), (start + standard + L'>').c_str(),
                                   std::clamp(width, -65535, 65535), std::min(precision, 65535), number);
    assert(size >= 0);
    CString text;
    text.Format((start + ours + L'>').c_str(), width, precision, number);
    assert(text.GetString() == std::wstring(expected.data()));
}

void CheckNumber(FuzzedDataProvider& data) {
    static constexpr std::pair<const wchar_t*, const wchar_t*> lengths[] = {
        {L"hh", L"hh"}, {L"h", L"h"},    {L"", L""},   {L"I32", L""}, {L"l", L"l"}, {L"w", L"l"},
        {L"ll", L"ll"}, {L"I64", L"ll"}, {L"I", L"z"}, {L"j", L"j"},  {L"z", L"z"}, {L"t", L"t"}};
    const auto [ours, standard] = data.PickValueInArray(lengths);
    const std::wstring integer(1, data.PickValueInArray({L'd', L'i', L'u', L'o', L'x', L'X'}));
    const auto number = data.ConsumeIntegral<long long>();
    Check(data, ours + integer, standard + integer, number);

    const std::wstring floating(1, data.PickValueInArray({L'e', L'E', L'f', L'F', L'g', L'G', L'a', L'A'}));
    const auto real = data.ConsumeFloatingPoint<double>();
    Check(data, floating, floating, real);
    Check(data, L'L' + floating, L'L' + floating, real / 3.0L);
}

/// Each argument is the address of a text that is null-terminated as bytes and as wide characters.
void CheckAnyFormat(FuzzedDataProvider& data) {
    const std::string bytes = data.ConsumeRemainingBytesAsString();
    std::wstring format(bytes.begin(), bytes.end());
    int arguments = 0;  // a long double is as large as two of those below
    std::erase_if(format, [&](wchar_t c) { return (c == L'%' || c == L'*') && ++arguments > 12; });
    const auto* const t = L"text";
    CString text;
    text.Format(format.c_str(), t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t,
                t, t, t);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    data.PickValueInArray({CheckAnyFormat, CheckNumber})(data);
    return 0;
}
