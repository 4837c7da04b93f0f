#include "percentEncoded.h"

#include "textChecks.h"

#include <spdlog/fmt/fmt.h>

std::string percentEncoded(std::string_view text)
{
    std::string encoded;
    for (const char character : text) {
        if (isLetterOrDigit(character) || std::string_view("-._~").find(character) != std::string_view::npos)
            encoded += character;
        else
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(character));
    }
    return encoded;
}
