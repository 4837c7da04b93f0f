#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The number of characters of a UTF-8 text; none where it is not UTF-8 (overlong forms, halves of pairs and
/// what lies beyond U+10FFFF are not).
std::optional<std::size_t> characterCount(std::string_view text);

/// Whether a character below U+0020, U+007F or one of U+0080 to U+009F is in it. The text is UTF-8.
bool hasControlCharacters(std::string_view text);

/// The first `most` characters of a UTF-8 text.
std::string_view firstCharacters(std::string_view text, std::size_t most);

/// Whether it is a letter or digit of ASCII.
constexpr bool isLetterOrDigit(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

/// Whether it is of ASCII and can be seen: neither a space nor a control character.
constexpr bool isVisible(char character)
{
    return character > ' ' && character <= '~';
}

/// Whether it is what RFC 9110 calls a token, such as a method or the name of a header: one character or
/// more, all of ASCII, without spaces and separators.
bool isHttpToken(std::string_view text);

/// Whether it can stand as the value of a header: no control character of ASCII but the tab.
bool isHeaderValue(std::string_view text);

/// Without white space (ASCII's and U+00A0) at its ends.
std::string_view trimmed(std::string_view text);

/// An address that mail can go to, in lower case: ASCII, one at-sign, a local part of up to 64 characters of
/// those that need no quotes, a domain of labels with at least one full stop, 254 characters in all. A domain
/// in other letters is not taken. None where it is no such address: nothing else may reach a mail server.
std::optional<std::string> mailAddress(std::string_view typed);
