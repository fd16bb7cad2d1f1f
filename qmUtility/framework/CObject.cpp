// SPDX-License-Identifier: MIT
#include "qmUtility/framework/CObject.h"

#include <cstdint>
#include <streambuf>

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

}  // namespace

CRuntimeClass* CObject::GetRuntimeClass() const {
    static CRuntimeClass runtimeClass = {"CObject", sizeof(CObject)};
    return &runtimeClass;
}

CObject::~CObject() = default;
void CObject::Serialize(CArchive&) {}
void CObject::AssertValid() const {}
void CObject::Dump(CDumpContext&) const {}

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
    if (count < UINT16_MAX) return WriteNumber<std::uint16_t>(*this, count);
    WriteNumber<std::uint16_t>(*this, UINT16_MAX);  // announces a wider count
    if (count < UINT32_MAX) return WriteNumber<std::uint32_t>(*this, count);
    WriteNumber<std::uint32_t>(*this, UINT32_MAX);
    WriteNumber<std::uint64_t>(*this, count);
}

std::size_t CArchive::ReadCount() {
    const auto word = ReadNumber<std::uint16_t>(*this);
    if (word != UINT16_MAX) return word;
    const auto dword = ReadNumber<std::uint32_t>(*this);
    return dword != UINT32_MAX ? dword : ReadNumber<std::uint64_t>(*this);
}

void CException::Delete() { delete this; }

void qmFramework::AfxThrowInvalidArgException() {
    throw new CInvalidArgException;  // NOLINT(*-throw-by-value*,cert-err*): the framework throws pointers
}

void qmFramework::AfxThrowArchiveException(int cause) {
    throw new CArchiveException(cause);  // NOLINT(*-throw-by-value*,cert-err*): the framework throws pointers
}
