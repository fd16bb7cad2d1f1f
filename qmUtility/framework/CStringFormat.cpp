// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CString.h"
#include "qmUtility/platform/Utf8.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string_view>
#include <utility>

namespace {

/// Upper bound of widths and of the precision of numbers: enough for all digits of any number, and too little
/// for a format to run for minutes or exhaust the memory.
constexpr int MaximumPadding = 65535;

/// The length modifiers, longer ones first, and those of the C library for them.
constexpr std::pair<std::wstring_view, std::string_view> LengthModifiers[] = {
    {L"hh", "hh"}, {L"h", "h"}, {L"ll", "ll"}, {L"l", "l"},    {L"w", "l"},  {L"L", "L"},
    {L"j", "ll"},  {L"z", "t"}, {L"t", "t"},   {L"I64", "ll"}, {L"I32", ""}, {L"I", "t"}};

struct Directive {
    std::string Flags;
    int Width = 0;
    int Precision = -1;       ///< negative if absent
    std::string_view Length;  ///< the C library's modifier
    wchar_t Conversion = 0;

    bool IsAnyOf(std::wstring_view conversions) const {
        return conversions.find(Conversion) != std::wstring_view::npos;
    }
    bool IsNarrow() const { return Length.starts_with('h') || (IsAnyOf(L"SC") && Length != "l"); }
};

/// Interprets a format and appends to a text.
class Printer {
public:
    Printer(std::wstring& text, std::va_list arguments) : m_text(text) { va_copy(m_arguments, arguments); }
    ~Printer() { va_end(m_arguments); }
    Printer(const Printer&) = delete;

    void Run(const wchar_t* format) {
        while (const wchar_t* const start = std::wcschr(format, L'%')) {
            m_text.append(format, start);
            format = start + 1;
            const Directive directive = Parse(format);
            if (Convert(directive))
                ++format;
            else  // prints what was parsed; the character that is no conversion is interpreted next
                m_text.append(start, format);
        }
        m_text += format;
    }

private:
    template <class Argument>
    Argument Next() {
        return va_arg(m_arguments, Argument);  // NOLINT(clang-analyzer-valist.Uninitialized): it is copied
    }

    /// Parses a directive up to its conversion character, which `format` points to afterwards.
    Directive Parse(const wchar_t*& format) {
        Directive directive;
        for (; std::wstring_view(L"-+ #0").find(*format) != std::wstring_view::npos; ++format)
            directive.Flags += static_cast<char>(*format);
        const int width = std::clamp(ParseNumber(format), -MaximumPadding, MaximumPadding);
        if (width < 0) directive.Flags += '-';  // from an argument, and left-aligns
        directive.Width = std::abs(width);
        if (*format == L'.') directive.Precision = ParseNumber(++format);
        for (const auto& [modifier, length] : LengthModifiers)
            if (*format == modifier[0] && std::wcsncmp(format, modifier.data(), modifier.size()) == 0) {
                directive.Length = length;
                format += modifier.size();
                break;
            }
        directive.Conversion = *format;
        return directive;
    }

    /// @return the value of the digits, at most INT_MAX, or of the next argument for "*".
    int ParseNumber(const wchar_t*& format) {
        if (*format == L'*') {
            ++format;
            return Next<int>();
        }
        long long number = 0;
        for (; *format >= L'0' && *format <= L'9'; ++format)
            number = std::min<long long>(number * 10 + (*format - L'0'), INT_MAX);
        return static_cast<int>(number);
    }

    /// @return false if there is no such conversion; no argument is consumed then.
    bool Convert(const Directive& directive) {
        if (directive.IsAnyOf(L"cCsS"))
            AppendText(directive);
        else if (directive.IsAnyOf(L"diuxXo"))
            AppendInteger(directive);
        else if (directive.IsAnyOf(L"fFeEgGaA")) {
            if (directive.Length == "L")
                AppendNumber(directive, "L", Next<long double>());
            else
                AppendNumber(directive, "", Next<double>());
        } else if (directive.Conversion == L'p') {
            Directive number = directive;
            number.Flags += '#';
            number.Conversion = L'x';
            const auto address = reinterpret_cast<std::uintptr_t>(Next<void*>());
            AppendNumber(number, "ll", static_cast<unsigned long long>(address));
        } else if (directive.Conversion == L'n')
            (void)Next<void*>();
        else if (directive.Conversion == L'%')
            m_text += L'%';
        else
            return false;
        return true;
    }

    void AppendInteger(const Directive& directive) {
        const std::string_view length = directive.Length;
        if (length.empty() || length.starts_with('h'))
            AppendNumber(directive, length, Next<int>());
        else if (length == "l")
            AppendNumber(directive, length, Next<long>());
        else if (length == "t")
            AppendNumber(directive, "t", Next<std::ptrdiff_t>());
        else
            AppendNumber(directive, "ll", Next<long long>());
    }

    /// Prints a number as narrow text: the wide printing of the C library does not report the size it needs.
    template <class Number>
    void AppendNumber(const Directive& directive, std::string_view length, Number number) {
        std::string narrow = '%' + directive.Flags;
        narrow.append("*.*").append(length) += static_cast<char>(directive.Conversion);
        const int precision = std::min(directive.Precision, MaximumPadding);
        std::array<char, 128> local;  // holds all but long numbers
        const int size =
            std::snprintf(local.data(), local.size(), narrow.c_str(), directive.Width, precision, number);
        if (size < 0) return;  // the C library ran out of memory
        if (static_cast<std::size_t>(size) < local.size()) return AppendNarrow(local.data());
        std::string large(static_cast<std::size_t>(size) + 1, '\0');
        (void)std::snprintf(large.data(), large.size(), narrow.c_str(), directive.Width, precision, number);
        AppendNarrow(large.c_str());
    }

    /// Appends a character or a string, and pads it.
    void AppendText(const Directive& directive) {
        const std::size_t start = m_text.size();
        const auto limit = static_cast<std::size_t>(directive.Precision);  // a negative one is none
        if (directive.IsAnyOf(L"cC")) {
            const int argument = Next<int>();
            m_text +=
                static_cast<wchar_t>(directive.IsNarrow() ? static_cast<unsigned char>(argument) : argument);
        } else if (directive.IsNarrow()) {
            const char* const text = Next<const char*>();
            AppendNarrow(text != nullptr ? text : "(null)", limit);
        } else {
            const wchar_t* text = Next<const wchar_t*>();
            if (text == nullptr) text = L"(null)";
            std::size_t length = 0;
            while (length < limit && text[length] != 0) ++length;
            m_text.append(text, length);
        }
        const std::size_t length = m_text.size() - start;
        const auto width = static_cast<std::size_t>(directive.Width);
        if (length < width)
            m_text.insert(directive.Flags.find('-') != std::string::npos ? m_text.size() : start,
                          width - length, L' ');
    }

    /// @param limit the most characters to append; nothing after them is read.
    void AppendNarrow(const char* text, std::size_t limit = SIZE_MAX) {
        const std::size_t start = m_text.size();
        while (m_text.size() - start < limit && *text != 0)
            platform::AppendCharacter(m_text, platform::DecodeUtf8(text));
        if (m_text.size() - start > limit) m_text.pop_back();  // half of a surrogate pair
    }

    std::wstring& m_text;
    std::va_list m_arguments;
};

}  // namespace

void CString::Format(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CString::FormatV(const wchar_t* format, std::va_list arguments) {
    std::wstring text;  // the arguments may point into this string
    text.reserve(128);  // a usual line
    if (format != nullptr) Printer(text, arguments).Run(format);
    m_text = std::move(text);
}
