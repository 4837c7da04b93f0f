#include "textChecks.h"

#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/locale/utf.hpp>

namespace {

namespace utf = boost::locale::utf;
using Utf8 = utf::utf_traits<char>;

constexpr std::string_view whiteSpace = " \t\n\v\f\r";
constexpr std::string_view noBreakSpace = "\u00A0";

/// What RFC 5322 calls atext: a local part of such characters and full stops needs no quotes.
bool isAtomCharacter(char character)
{
    return isLetterOrDigit(character) ||
           std::string_view("!#$%&'*+-/=?^_`{|}~").find(character) != std::string_view::npos;
}

bool isLocalPart(std::string_view local)
{
    constexpr std::size_t longest = 64; // RFC 5321, chapter 4.5.3.1.1
    if (local.empty() || local.size() > longest || local.front() == '.' || local.back() == '.' ||
        local.find("..") != std::string_view::npos)
        return false;
    return std::all_of(local.begin(), local.end(),
                       [](char character) { return character == '.' || isAtomCharacter(character); });
}

bool isLabel(std::string_view label)
{
    constexpr std::size_t longest = 63; // RFC 1035, chapter 2.3.4
    if (label.empty() || label.size() > longest || label.front() == '-' || label.back() == '-')
        return false;
    return std::all_of(label.begin(), label.end(),
                       [](char character) { return character == '-' || isLetterOrDigit(character); });
}

bool isDomain(std::string_view domain)
{
    bool hasStop = false;
    for (;;) {
        const auto stop = domain.find('.');
        if (!isLabel(domain.substr(0, stop)))
            return false;
        if (stop == std::string_view::npos)
            return hasStop;
        hasStop = true;
        domain.remove_prefix(stop + 1);
    }
}

} // namespace

std::optional<std::size_t> characterCount(std::string_view text)
{
    std::size_t count = 0;
    for (const auto *place = text.data(), *const end = place + text.size(); place != end; ++count) {
        const auto character = Utf8::decode(place, end);
        if (character == utf::illegal || character == utf::incomplete)
            return std::nullopt;
    }
    return count;
}

bool hasControlCharacters(std::string_view text)
{
    for (const auto *place = text.data(), *const end = place + text.size(); place != end;) {
        const auto character = Utf8::decode(place, end);
        if (character < 0x20 || (character >= 0x7F && character <= 0x9F))
            return true;
        if (character == utf::illegal || character == utf::incomplete)
            return true;
    }
    return false;
}

std::string_view firstCharacters(std::string_view text, std::size_t most)
{
    const auto *place = text.data();
    const auto *const end = place + text.size();
    while (most-- > 0 && place != end)
        Utf8::decode(place, end);
    return text.substr(0, static_cast<std::size_t>(place - text.data()));
}

bool isHttpToken(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return isVisible(character) &&
               std::string_view("\"(),/:;<=>?@[\\]{}").find(character) == std::string_view::npos;
    });
}

bool isHeaderValue(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char character) {
        return (character >= 0 && character < ' ' && character != '\t') || character == '\x7f';
    });
}

std::string_view trimmed(std::string_view text)
{
    for (;;) {
        if (text.starts_with(noBreakSpace))
            text.remove_prefix(noBreakSpace.size());
        else if (text.ends_with(noBreakSpace))
            text.remove_suffix(noBreakSpace.size());
        else if (!text.empty() && whiteSpace.find(text.front()) != std::string_view::npos)
            text.remove_prefix(1);
        else if (!text.empty() && whiteSpace.find(text.back()) != std::string_view::npos)
            text.remove_suffix(1);
        else
            return text;
    }
}

std::optional<std::string> mailAddress(std::string_view typed)
{
    constexpr std::size_t longest = 254; // RFC 5321, chapter 4.5.3.1.3, without the angle brackets
    auto address = std::string(trimmed(typed));
    if (address.size() > longest)
        return std::nullopt;
    boost::algorithm::to_lower(address, std::locale::classic());
    const auto at = address.find('@');
    if (at == std::string::npos)
        return std::nullopt;
    const std::string_view view = address;
    if (!isLocalPart(view.substr(0, at)) || !isDomain(view.substr(at + 1)))
        return std::nullopt;
    return address;
}
