// SPDX-License-Identifier: MIT
#include "qmUtility/ini/INIRecord.h"

INIFormatError::INIFormatError(std::size_t line)
    : std::out_of_range("invalid string position"), m_line(line) {}

INIFormatError::~INIFormatError() = default;
