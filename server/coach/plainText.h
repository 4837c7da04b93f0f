#pragma once

#include <string>
#include <string_view>

/// The UTF-8 text without white space at its ends, a space in place of each control character. They are taken
/// out rather than refused: a tab in an answer is no reason to lose it, yet a window is no place for any.
std::string plainLine(std::string_view text);

/// As plainLine(), but line ends stay, as "\n".
std::string plainLines(std::string_view text);
