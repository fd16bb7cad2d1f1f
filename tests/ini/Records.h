// SPDX-License-Identifier: MIT
#pragma once

#include "qmUtility/ini/INIDocument.h"

#include <string>
#include <vector>

constexpr auto Common = INISyntax::Common;
constexpr auto Parser = INISyntax::Parser;
#define BOM "\xEF\xBB\xBF"

/// @return records, or views of them, each as "comments|Commented|Section|Key|Value" and a newline.
std::string Flat(const auto& records)
{
    std::string all;
    const auto add = [&](const auto& field, char end) { all.append(field.begin(), field.end()) += end; };
    for (const auto& record : records) {
        if constexpr (requires { record.Comments(); })
            add(record.Comments(), '|');
        else
            add(record.Comments, '|');
        add(std::vector{record.Commented}, '|'), add(record.Section, '|');
        add(record.Key, '|'), add(record.Value, '\n');
    }
    return all;
}
