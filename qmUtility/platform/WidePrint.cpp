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

/// Upper bound of widths and of the precision of numbers: enough for all digits of any number, and too little
/// for a format to run for minutes or exhaust the memory.
constexpr int MaximumPadding = 65535;

struct Directive
{
    std::string Flags;
    int Width = 0;
    int Precision = -1; ///< negative if absent
    platform::Length Length = Length::None;
    wchar_t Conversion = 0;
};

/// Interprets a format and appends to a text.
class Printer
{
public:
    Printer(std::wstring& text, std::va_list arguments) : m_text(text) { va_copy(m_arguments, arguments); }
    ~Printer() { va_end(m_arguments); }
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    void Run(const wchar_t* format)
    {
        while (const wchar_t* const start = std::wcschr(format, L'%')) {
            m_text.append(format, start);
            format = start + 1;
            const Directive directive = Parse(format);
            if (Convert(directive))
                ++format;
            else // prints what was parsed; the character that is no conversion is interpreted next
                m_text.append(start, format);
        }
        m_text += format;
    }

private:
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

        const auto accept = [&format](wchar_t character) {
            const bool isNext = *format == character;
            format += isNext ? 1 : 0;
            return isNext;
        };
        if (accept(L'h'))
            directive.Length = accept(L'h') ? Length::Char : Length::Short;
        else if (accept(L'l'))
            directive.Length = accept(L'l') ? Length::LongLong : Length::Long;
        else if (accept(L'w'))
            directive.Length = Length::Long;
        else if (accept(L'L'))
            directive.Length = Length::LongDouble;
        else if (accept(L'j'))
            directive.Length = Length::LongLong;
        else if (accept(L'z') || accept(L't'))
            directive.Length = Length::Size;
        else if (accept(L'I')) {
            const bool is64 = format[0] == L'6' && format[1] == L'4';
            const bool is32 = format[0] == L'3' && format[1] == L'2';
            directive.Length = is64 ? Length::LongLong : is32 ? Length::None : Length::Size;
            format += is64 || is32 ? 2 : 0;
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
            AppendInteger(directive);
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
                AppendNumber(directive, "L", va_arg(m_arguments, long double));
            else
                AppendNumber(directive, "", va_arg(m_arguments, double));
            return true;
        case L'p': {
            Directive number = directive;
            number.Flags += '#';
            number.Conversion = L'x';
            const auto address = reinterpret_cast<std::uintptr_t>(va_arg(m_arguments, void*));
            AppendNumber(number, "ll", static_cast<unsigned long long>(address));
            return true;
        }
        case L'c':
        case L'C': {
            const int argument = va_arg(m_arguments, int);
            const std::size_t start = m_text.size();
            m_text += static_cast<wchar_t>(IsNarrow(directive, L'C') ? static_cast<unsigned char>(argument)
                                                                     : argument);
            Pad(directive, start);
            return true;
        }
        case L's':
        case L'S':
            AppendString(directive);
            return true;
        case L'n':
            (void)va_arg(m_arguments, void*);
            return true;
        case L'%':
            m_text += L'%';
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

    void AppendInteger(const Directive& directive)
    {
        switch (directive.Length) {
        case Length::Char:
            return AppendNumber(directive, "hh", va_arg(m_arguments, int));
        case Length::Short:
            return AppendNumber(directive, "h", va_arg(m_arguments, int));
        case Length::None:
            return AppendNumber(directive, "", va_arg(m_arguments, int));
        case Length::Long:
            return AppendNumber(directive, "l", va_arg(m_arguments, long));
        case Length::Size:
            return AppendNumber(directive, "t", va_arg(m_arguments, std::ptrdiff_t));
        default:
            return AppendNumber(directive, "ll", va_arg(m_arguments, long long));
        }
    }

    /// Prints a number through the narrow printing of the C library, because the wide one does not report the
    /// size that it needs.
    template <class Number>
    void AppendNumber(const Directive& directive, const char* length, Number number)
    {
        std::string narrow = '%' + directive.Flags;
        narrow.append("*.*").append(length) += static_cast<char>(directive.Conversion);
        const int precision = std::min(directive.Precision, MaximumPadding);
        std::array<char, 128> local; // holds all but long numbers
        const int size =
            std::snprintf(local.data(), local.size(), narrow.c_str(), directive.Width, precision, number);
        if (size < 0) // the C library ran out of memory
            return;
        if (static_cast<std::size_t>(size) < local.size())
            return AppendNarrow(local.data(), SIZE_MAX);
        std::string large(static_cast<std::size_t>(size) + 1, '\0');
        (void)std::snprintf(large.data(), large.size(), narrow.c_str(), directive.Width, precision, number);
        AppendNarrow(large.c_str(), SIZE_MAX);
    }

    void AppendString(const Directive& directive)
    {
        const std::size_t start = m_text.size();
        const std::size_t limit =
            directive.Precision < 0 ? SIZE_MAX : static_cast<std::size_t>(directive.Precision);
        if (IsNarrow(directive, L'S')) {
            const char* const text = va_arg(m_arguments, const char*);
            AppendNarrow(text != nullptr ? text : "(null)", limit);
        } else {
            const wchar_t* text = va_arg(m_arguments, const wchar_t*);
            if (text == nullptr)
                text = L"(null)";
            std::size_t length = 0;
            while (length < limit && text[length] != 0)
                ++length;
            m_text.append(text, length);
        }
        Pad(directive, start);
    }

    /// @param limit the most characters to append; nothing after them is read.
    void AppendNarrow(const char* text, std::size_t limit)
    {
        const std::size_t start = m_text.size();
        while (m_text.size() - start < limit && *text != 0)
            AppendCharacter(m_text, DecodeUtf8(text));
        if (m_text.size() - start > limit)
            m_text.pop_back(); // half of a surrogate pair
    }

    /// Pads the text from `start` on to the width of its directive.
    void Pad(const Directive& directive, std::size_t start)
    {
        const std::size_t length = m_text.size() - start;
        const auto width = static_cast<std::size_t>(directive.Width);
        if (length < width)
            m_text.insert(directive.Flags.find('-') != std::string::npos ? m_text.size() : start,
                          width - length, L' ');
    }

    std::wstring& m_text;
    std::va_list m_arguments;
};

} // namespace

std::wstring VFormat(const wchar_t* format, std::va_list arguments)
{
    std::wstring text;
    text.reserve(128); // a usual line
    if (format != nullptr)
        Printer(text, arguments).Run(format);
    return text;
}

} // namespace platform
