#pragma once

#include "secrets.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// What a provider sends the browser back with (RFC 6749, chapter 4.1.2): a code or an error, never both.
struct OAuthCallback
{
    static constexpr std::size_t longestQuery = 8 * 1024; ///< bytes
    static constexpr std::size_t longestCode = 4 * 1024;  ///< bytes, decoded; printable ASCII
    static constexpr std::size_t longestIssuer = 512;     ///< bytes, decoded
    static constexpr std::size_t lengthOfState = tokenLength;

    std::string state;                 ///< of the form of newToken()
    std::string code;                  ///< empty where there is an error
    std::string error;                 ///< "access_denied"; empty where there is a code
    std::optional<std::string> issuer; ///< RFC 9207

    /// None where anything of it is missing, stands there twice, is too long or not what it may be. Further
    /// fields do not matter.
    static std::optional<OAuthCallback> parse(std::string_view query);
};
