// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CArchive.h"

#include <cstdint>
#include <limits>

namespace {

template <class Number>
void WriteNumber(CArchive& archive, std::size_t number) {
    const auto value = static_cast<Number>(number);
    archive.Write(&value, sizeof value);
}

template <class Number>
Number ReadNumber(CArchive& archive) {
    Number value{};
    if (archive.Read(&value, sizeof value) != sizeof value)
        AfxThrowArchiveException(CArchiveException::endOfFile);
    return value;
}

// Values that announce a wider count.
constexpr auto NoWord = std::numeric_limits<std::uint16_t>::max();
constexpr auto NoDword = std::numeric_limits<std::uint32_t>::max();

}  // namespace

std::size_t CArchive::Read(void* bytes, std::size_t count) {
    const auto size = static_cast<std::streamsize>(count);
    return static_cast<std::size_t>(m_file.sgetn(static_cast<char*>(bytes), size));
}

void CArchive::Write(const void* bytes, std::size_t count) {
    const auto size = static_cast<std::streamsize>(count);
    if (m_file.sputn(static_cast<const char*>(bytes), size) != size)
        AfxThrowArchiveException(CArchiveException::genericException);
}

void CArchive::WriteCount(std::size_t count) {
    if (count < NoWord) return WriteNumber<std::uint16_t>(*this, count);
    WriteNumber<std::uint16_t>(*this, NoWord);
    if (count < NoDword) return WriteNumber<std::uint32_t>(*this, count);
    WriteNumber<std::uint32_t>(*this, NoDword);
    WriteNumber<std::uint64_t>(*this, count);
}

std::size_t CArchive::ReadCount() {
    const auto word = ReadNumber<std::uint16_t>(*this);
    if (word != NoWord) return word;
    const auto dword = ReadNumber<std::uint32_t>(*this);
    return dword != NoDword ? dword : ReadNumber<std::uint64_t>(*this);
}

void qmFramework::AfxThrowArchiveException(int cause) {
    throw new CArchiveException(cause);  // NOLINT(*-throw-by-value*,cert-err*): the framework throws pointers
}
