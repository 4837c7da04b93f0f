#pragma once

#include "OAuthFault.h"

#include <boost/asio/awaitable.hpp>
#include <optional>
#include <string>
#include <string_view>

/// What the browser is sent to a provider with.
struct OAuthRequest
{
    std::string redirectUrl;
    std::string state;
    std::string challenge; ///< of PKCE, S256
    std::string nonce;
};

/// What came back, and what belongs to it.
struct OAuthGrant
{
    std::string redirectUrl;
    std::string code;
    std::string verifier;
    std::string nonce;
    std::optional<std::string> issuer; ///< as the browser brought it (RFC 9207)
};

/// A service that knows who somebody is.
class OAuthProvider
{
public:
    virtual ~OAuthProvider() = default;

    /// "google" or "yandex", as paths and the desktop program name it.
    virtual std::string_view name() const = 0;
    virtual bool isConfigured() const = 0;

    /// Where the browser goes.
    virtual boost::asio::awaitable<OAuthResult<std::string>> authorizeUrl(OAuthRequest request) = 0;

    /// The address that the provider vouches for; has passed mailAddress().
    virtual boost::asio::awaitable<OAuthResult<std::string>> verifiedAddress(OAuthGrant grant) = 0;
};
