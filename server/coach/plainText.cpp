#include "plainText.h"

#include "textChecks.h"

namespace {

/// How many bytes the control character at that place has: 0 where there is none.
std::size_t controlCharacter(std::string_view text, std::size_t place)
{
    const auto byte = static_cast<unsigned char>(text[place]);
    if (byte < 0x20 || byte == 0x7F)
        return 1;
    if (byte != 0xC2 || place + 1 == text.size()) // U+0080 to U+009F
        return 0;
    return static_cast<unsigned char>(text[place + 1]) < 0xA0 ? 2 : 0;
}

std::string plain(std::string_view text, bool keepsLines)
{
    std::string kept;
    kept.reserve(text.size());
    for (std::size_t place = 0; place < text.size();) {
        const auto length = controlCharacter(text, place);
        if (length == 0)
            kept += text[place];
        else if (!keepsLines || (text[place] != '\n' && text.substr(place, 2) != "\r\n"))
            kept += ' ';
        else if (text[place] == '\n')
            kept += '\n';
        place += std::max<std::size_t>(length, 1);
    }
    return std::string(trimmed(kept));
}

} // namespace

std::string plainLine(std::string_view text)
{
    return plain(text, false);
}

std::string plainLines(std::string_view text)
{
    return plain(text, true);
}
