#pragma once

#include "L10nTable.h"

#include <span>

/// Texts that the table does not have: accessible names and what only this desktop needs to say.
std::span<const L10nRow> addedTexts();
