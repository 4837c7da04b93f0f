#pragma once

#include <cstddef>
#include <string>

/// A text of that many characters, twice as many bytes.
inline std::string letters(std::size_t count)
{
    std::string text;
    for (std::size_t number = 0; number < count; ++number)
        text += "ж";
    return text;
}
