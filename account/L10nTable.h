#pragma once

#include <QStringView>

#include <array>

/// One text of the table: its key and its two languages.
struct L10nRow
{
    QStringView key;
    QStringView english;
    QStringView russian;
};

/// How many texts the table has; texts that came later live in addedTexts.cpp.
inline constexpr std::size_t l10nRowCount = 176;

extern const std::array<L10nRow, l10nRowCount> l10nTable;
