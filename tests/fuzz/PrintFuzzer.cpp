/// @file
/// Wide printing: one directive against the C library's own wide printing, under the name that it has there;
/// and formats of any kind, which must stay within their buffer.

#include "qmUtility/platform/WidePrint.h"
#include "tests/fuzz/Model.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <clocale>
#include <cstdint>
#include <cwchar>
#include <memory>

namespace {

/// A length and a conversion, and what the C library calls them.
struct Name
{
    const wchar_t* Ours;
    const wchar_t* Standard;
};

/// Prints into buffers of exactly some capacity, so that the address sanitizer sees any write past the end.
template <class... Arguments>
void Check(std::size_t capacity, const std::wstring& expected, const std::wstring& format,
           Arguments... arguments)
{
    const std::unique_ptr<wchar_t[]> buffer(new wchar_t[capacity]);
    const std::ptrdiff_t result = platform::Print(buffer.get(), capacity, format.c_str(), arguments...);
    Require(result == (expected.size() < capacity ? static_cast<std::ptrdiff_t>(expected.size()) : -1),
            "the length of the text");
    if (capacity > 0)
        Require(std::wstring(buffer.get(), std::min(capacity - 1, expected.size()) + 1) ==
                    expected.substr(0, capacity - 1) + L'\0',
                "the text");
}

/// Each byte sequence that is UTF-8 is one character, and so is each other byte.
std::wstring FromUtf8(const std::string& bytes)
{
    std::wstring text;
    for (std::size_t at = 0; at < bytes.size();) {
        wchar_t c = 0;
        std::mbstate_t state{};
        const std::size_t length = std::mbrtowc(&c, &bytes[at], bytes.size() - at, &state);
        const bool isValid = length <= 4 && c <= 0x10FFFF;
        text += isValid ? c : static_cast<wchar_t>(static_cast<unsigned char>(bytes[at]));
        at += isValid ? length : 1;
    }
    return text;
}

/// A directive without its length and conversion, as given and as the C library may be asked.
class Start
{
public:
    explicit Start(FuzzedDataProvider& data) : m_capacity(data.ConsumeIntegralInRange<std::size_t>(0, 400))
    {
        for (const wchar_t flag : {L'-', L'+', L' ', L'#', L'0'})
            if (data.ConsumeBool())
                m_flags += flag;
        m_width = Number(data);
        m_precision = Number(data);
    }

    template <class Argument>
    void Check(Name name, Argument argument) const
    {
        CheckAs(name, argument, argument);
    }

    /// @param standard the argument to give to the C library instead.
    template <class Argument, class Standard>
    void CheckAs(Name name, Argument argument, Standard standard) const
    {
        const bool isText = std::wcspbrk(name.Ours, L"sScC") != nullptr;
        const int precision = isText ? m_precision : std::min(m_precision, 65535);
        const std::wstring asked = L"%" + Flags(name) + L"*.*" + name.Standard;
        static std::array<wchar_t, 70'000> expected;
        const int size = std::swprintf(expected.data(), expected.size(), asked.c_str(),
                                       std::clamp(m_width, -65535, 65535), precision, standard);
        Require(size >= 0, "the C library prints");
        const std::wstring text = L"<" + std::wstring(expected.data(), static_cast<std::size_t>(size)) + L">";

        ::Check(m_capacity, text, L"<%" + m_flags + L"*.*" + name.Ours + L">", m_width, m_precision,
                argument);
        if (m_width >= 0 && m_precision >= 0)
            ::Check(m_capacity, text,
                    L"<%" + m_flags + (m_width != 0 ? std::to_wstring(m_width) : L"") + L'.' +
                        std::to_wstring(m_precision) + name.Ours + L">",
                    argument);
    }

private:
    static int Number(FuzzedDataProvider& data)
    {
        switch (data.ConsumeIntegralInRange(0, 99)) {
        case 0:
            return -1;
        case 1:
            return data.ConsumeIntegralInRange(-70'000, 70'000);
        default:
            return data.ConsumeIntegralInRange(-40, 40);
        }
    }

    std::wstring Flags(Name name) const { return *name.Ours == L'p' ? m_flags + L'#' : m_flags; }

    std::size_t m_capacity;
    std::wstring m_flags;
    int m_width;
    int m_precision;
};

void CheckInteger(FuzzedDataProvider& data, const Start& start)
{
    static constexpr Name lengths[] = {{L"hh", L"hh"}, {L"h", L"h"}, {L"", L""},     {L"I32", L""},
                                       {L"l", L"l"},   {L"w", L"l"}, {L"ll", L"ll"}, {L"I64", L"ll"},
                                       {L"I", L"z"},   {L"j", L"j"}, {L"z", L"z"},   {L"t", L"t"}};
    const wchar_t conversion = data.PickValueInArray(L"diuoxX");
    const Name length = data.PickValueInArray(lengths);
    if (conversion == 0)
        return start.Check({L"p", L"llx"}, data.ConsumeIntegral<unsigned long long>());
    start.Check({(std::wstring(length.Ours) + conversion).c_str(),
                 (std::wstring(length.Standard) + conversion).c_str()},
                data.ConsumeIntegral<long long>());
}

void CheckText(FuzzedDataProvider& data, const Start& start)
{
    std::string narrow = data.ConsumeRandomLengthString(64);
    std::replace(narrow.begin(), narrow.end(), '\0', ' ');
    std::wstring wide = model::Widen<wchar_t>(narrow);
    for (wchar_t& c : wide)
        if (c >= 0xF0)
            c = data.ConsumeIntegral<wchar_t>();
    const auto* const character = narrow.c_str();
    start.Check({data.PickValueInArray({L"s", L"ls", L"ws", L"lS"}), L"ls"}, wide.c_str());
    start.CheckAs({data.PickValueInArray({L"hs", L"hhs", L"S"}), L"ls"}, narrow.c_str(),
                  FromUtf8(narrow).c_str());
    start.CheckAs({data.PickValueInArray({L"hc", L"hhc", L"C"}), L"lc"}, static_cast<int>(*character),
                  static_cast<unsigned>(static_cast<unsigned char>(*character)));
    start.Check({data.PickValueInArray({L"c", L"lc", L"wc"}), L"lc"}, static_cast<unsigned>(wide.c_str()[0]));
}

/// Whatever a directive takes, it gets the address of a text that is zero-ended as bytes and as characters.
void CheckAnyFormat(FuzzedDataProvider& data)
{
    const auto capacity = data.ConsumeIntegralInRange<std::size_t>(1, 100);
    std::wstring format = model::Widen<wchar_t>(data.ConsumeRemainingBytesAsString());
    std::size_t directives = 0;
    std::erase_if(format, [&](wchar_t c) { return (c == L'%' || c == L'*') && ++directives > 12; });
    const auto* const t = L"text";
    const std::unique_ptr<wchar_t[]> buffer(new wchar_t[capacity]);
    const std::ptrdiff_t result =
        platform::Print(buffer.get(), capacity, format.c_str(), t, t, t, t, t, t, t, t, t, t, t, t, t, t, t,
                        t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t);
    Require(result < 0 ? buffer[capacity - 1] == 0 : buffer[static_cast<std::size_t>(result)] == 0,
            "the text is ended");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    [[maybe_unused]] static const char* const locale = std::setlocale(LC_CTYPE, "C.UTF-8");
    FuzzedDataProvider data(bytes, size);
    const int kind = data.ConsumeIntegralInRange(0, 4);
    if (kind == 0) {
        CheckAnyFormat(data);
        return 0;
    }
    const Start start(data);
    static constexpr Name floating[] = {{L"e", L"e"}, {L"E", L"E"}, {L"f", L"f"}, {L"F", L"F"},
                                        {L"g", L"g"}, {L"G", L"G"}, {L"a", L"a"}, {L"A", L"A"}};
    static constexpr Name longFloating[] = {{L"Le", L"Le"}, {L"Lf", L"Lf"}, {L"Lg", L"Lg"}, {L"LA", L"LA"}};
    if (kind == 1)
        CheckInteger(data, start);
    else if (kind == 2)
        start.Check(data.PickValueInArray(floating), data.ConsumeFloatingPoint<double>());
    else if (kind == 3)
        start.Check(data.PickValueInArray(longFloating),
                    static_cast<long double>(data.ConsumeFloatingPoint<double>()) / 3);
    else
        CheckText(data, start);
    return 0;
}
