// SPDX-License-Identifier: MIT
#include "qmUtility/platform/WidePrint.h"

#include "qmUtility/platform/Utf8.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <string_view>
#include <type_traits>

namespace platform {
namespace {

enum class Length
{
    None,
    Char,
    Short,
    Long,
    LongLong,
    Size,
    LongDouble,
};

/// Upper bound of widths and of the precision of numbers: enough for all digits of any number, and too little for a
/// format to run for minutes or exhaust the memory.
constexpr int MaximumPadding = 65535;

struct Directive
{
    std::string Flags;
    int Width = 0;
    int Precision = -1; ///< negative if absent
    platform::Length Length = Length::None;
    wchar_t Conversion = 0;
};

/// Interprets a format and prints into a buffer of fixed size.
class Printer
{
public:
    Printer(wchar_t* buffer, std::size_t capacity, std::va_list arguments)
        : m_at(buffer), m_last(buffer + capacity - 1)
    {
        va_copy(m_arguments, arguments);
    }
    ~Printer() { va_end(m_arguments); }
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    /// @return whether the whole text fitted.
    bool Run(const wchar_t* format)
    {
        while (*format != 0) {
            if (*format != L'%') {
                Put({format++, 1});
                continue;
            }
            const wchar_t* const start = format++;
            const Directive directive = Parse(format);
            if (!Convert(directive)) {
                // Prints what was parsed; the character that is no conversion is interpreted next.
                Put({start, static_cast<std::size_t>(format - start)});
                continue;
            }
            ++format;
        }
        *m_at = 0;
        return m_fits;
    }

    const wchar_t* End() const { return m_at; }

private:
    void Put(std::wstring_view text)
    {
        const auto room = static_cast<std::size_t>(m_last - m_at);
        m_fits = m_fits && text.size() <= room;
        m_at = std::copy_n(text.data(), std::min(text.size(), room), m_at);
    }

    /// Parses a directive up to its conversion character, which `format` points to afterwards.
    Directive Parse(const wchar_t*& format)
    {
        Directive directive;
        for (; std::wstring_view(L"-+ #0").find(*format) != std::wstring_view::npos; ++format)
            directive.Flags += static_cast<char>(*format);

        directive.Width = ParseNumber(format);
        if (directive.Width < 0) { // from an argument, and left-aligns
            directive.Flags += '-';
            directive.Width = -std::max(directive.Width, -MaximumPadding);
        }
        directive.Width = std::min(directive.Width, MaximumPadding);
        if (*format == L'.')
            directive.Precision = ParseNumber(++format);

        struct Modifier
        {
            std::wstring_view Text;
            platform::Length Length;
        };
        static constexpr Modifier modifiers[] = {
            {L"I64", Length::LongLong}, {L"I32", Length::None}, {L"I", Length::Size},
            {L"hh", Length::Char},      {L"h", Length::Short},  {L"ll", Length::LongLong},
            {L"l", Length::Long},       {L"w", Length::Long},   {L"L", Length::LongDouble},
            {L"j", Length::LongLong},   {L"z", Length::Size},   {L"t", Length::Size},
        };
        for (const Modifier& modifier : modifiers)
            if (std::wcsncmp(format, modifier.Text.data(), modifier.Text.size()) == 0) {
                directive.Length = modifier.Length;
                format += modifier.Text.size();
                break;
            }
        directive.Conversion = *format;
        return directive;
    }

    /// @return the value of the digits, at most INT_MAX, or of the next argument for "*".
    int ParseNumber(const wchar_t*& format)
    {
        if (*format == L'*') {
            ++format;
            return va_arg(m_arguments, int);
        }
        long long number = 0;
        for (; *format >= L'0' && *format <= L'9'; ++format)
            number = std::min<long long>(number * 10 + (*format - L'0'), INT_MAX);
        return static_cast<int>(number);
    }

    /// @return false if there is no such conversion; no argument is consumed then.
    bool Convert(const Directive& directive)
    {
        switch (directive.Conversion) {
        case L'd':
        case L'i':
        case L'u':
        case L'o':
        case L'x':
        case L'X':
            PutInteger(directive);
            return true;
        case L'a':
        case L'A':
        case L'e':
        case L'E':
        case L'f':
        case L'F':
        case L'g':
        case L'G':
            if (directive.Length == Length::LongDouble)
                PutNumber(directive, "L", va_arg(m_arguments, long double));
            else
                PutNumber(directive, "", va_arg(m_arguments, double));
            return true;
        case L'p': {
            Directive number = directive;
            number.Flags += '#';
            number.Conversion = L'x';
            const auto address = reinterpret_cast<std::uintptr_t>(va_arg(m_arguments, void*));
            PutNumber(number, "ll", static_cast<unsigned long long>(address));
            return true;
        }
        case L'c':
        case L'C': {
            const int argument = va_arg(m_arguments, int);
            const auto character = static_cast<wchar_t>(
                IsNarrow(directive, L'C') ? static_cast<unsigned char>(argument) : argument);
            PutPadded(directive, {&character, 1});
            return true;
        }
        case L's':
        case L'S':
            if (IsNarrow(directive, L'S'))
                PutNarrowString(directive, va_arg(m_arguments, const char*));
            else
                PutWideString(directive, va_arg(m_arguments, const wchar_t*));
            return true;
        case L'n':
            (void)va_arg(m_arguments, void*);
            return true;
        case L'%':
            Put(L"%");
            return true;
        default:
            return false;
        }
    }

    static bool IsNarrow(const Directive& directive, wchar_t narrowConversion)
    {
        return directive.Length == Length::Short || directive.Length == Length::Char ||
               (directive.Conversion == narrowConversion && directive.Length != Length::Long);
    }

    void PutInteger(const Directive& directive)
    {
        switch (directive.Length) {
        case Length::Size:
            return PutInteger<std::ptrdiff_t>(directive);
        case Length::Char:
            return PutInteger<signed char, int>(directive);
        case Length::Short:
            return PutInteger<short, int>(directive);
        case Length::None:
            return PutInteger<int>(directive);
        case Length::Long:
            return PutInteger<long>(directive);
        default:
            return PutInteger<long long>(directive);
        }
    }

    /// Prints an integer that is passed as `Passed`.
    template <class Integer, class Passed = Integer>
    void PutInteger(const Directive& directive)
    {
        const auto number = static_cast<Integer>(va_arg(m_arguments, Passed));
        if (directive.Conversion == L'd' || directive.Conversion == L'i')
            PutNumber(directive, "ll", static_cast<long long>(number));
        else
            PutNumber(directive, "ll",
                      static_cast<unsigned long long>(static_cast<std::make_unsigned_t<Integer>>(number)));
    }

    /// Prints a number through the narrow printing of the C library, because the wide one does not report the
    /// size that it needs.
    template <class Number>
    void PutNumber(const Directive& directive, const char* length, Number number)
    {
        const std::string narrow =
            '%' + directive.Flags + "*.*" + length + static_cast<char>(directive.Conversion);
        const int precision = std::min(directive.Precision, MaximumPadding);
        std::array<char, 128> local; // holds all but long numbers
        const int size =
            std::snprintf(local.data(), local.size(), narrow.c_str(), directive.Width, precision, number);
        if (size < 0) // the C library ran out of memory
            return;
        if (static_cast<std::size_t>(size) < local.size()) {
            Put(Widen(local.data(), SIZE_MAX));
            return;
        }
        std::string large(static_cast<std::size_t>(size) + 1, '\0');
        (void)std::snprintf(large.data(), large.size(), narrow.c_str(), directive.Width, precision, number);
        Put(Widen(large.data(), SIZE_MAX));
    }

    static std::size_t Limit(const Directive& directive)
    {
        return directive.Precision < 0 ? SIZE_MAX : static_cast<std::size_t>(directive.Precision);
    }

    void PutWideString(const Directive& directive, const wchar_t* text)
    {
        if (text == nullptr)
            text = L"(null)";
        std::size_t length = 0;
        while (length < Limit(directive) && text[length] != 0)
            ++length;
        PutPadded(directive, {text, length});
    }

    void PutNarrowString(const Directive& directive, const char* text)
    {
        // One character more than fits shows that the text is truncated; the rest is not converted.
        const auto room = static_cast<std::size_t>(m_last - m_at);
        const std::size_t enough = std::max(room, static_cast<std::size_t>(directive.Width)) + 1;
        PutPadded(directive, Widen(text != nullptr ? text : "(null)", std::min(enough, Limit(directive))));
    }

    static std::wstring Widen(const char* text, std::size_t limit)
    {
        std::wstring wide;
        while (wide.size() < limit && *text != 0)
            AppendCharacter(wide, DecodeUtf8(text));
        wide.resize(std::min(wide.size(), limit));
        return wide;
    }

    void PutPadded(const Directive& directive, std::wstring_view text)
    {
        const auto width = static_cast<std::size_t>(directive.Width);
        const std::wstring padding(width > text.size() ? width - text.size() : 0, L' ');
        const bool left = directive.Flags.find('-') != std::string::npos;
        if (!left)
            Put(padding);
        Put(text);
        if (left)
            Put(padding);
    }

    wchar_t* m_at;
    wchar_t* const m_last; ///< last position, which only the terminating null may take
    bool m_fits = true;
    std::va_list m_arguments;
};

} // namespace

std::ptrdiff_t VPrint(wchar_t* buffer, std::size_t capacity, const wchar_t* format, std::va_list arguments)
{
    if (capacity == 0)
        return -1;
    Printer printer(buffer, capacity, arguments);
    return printer.Run(format != nullptr ? format : L"") ? printer.End() - buffer : -1;
}

std::ptrdiff_t Print(wchar_t* buffer, std::size_t capacity, const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const std::ptrdiff_t result = VPrint(buffer, capacity, format, arguments);
    va_end(arguments);
    return result;
}

void Append(wchar_t* buffer, std::size_t capacity, const wchar_t* text)
{
    const std::size_t length = std::wcslen(buffer);
    Print(buffer + length, capacity - length, L"%s", text);
}

std::wstring VFormat(const wchar_t* format, std::va_list arguments)
{
    std::array<wchar_t, 1024> local;
    const std::ptrdiff_t size = VPrint(local.data(), local.size(), format, arguments);
    if (size >= 0)
        return {local.data(), static_cast<std::size_t>(size)};
    for (std::wstring text;;) {
        text.resize(std::max(text.size(), local.size()) * 2);
        const std::ptrdiff_t longer = VPrint(text.data(), text.size(), format, arguments);
        if (longer >= 0) {
            text.resize(static_cast<std::size_t>(longer));
            return text;
        }
    }
}

} // namespace platform
