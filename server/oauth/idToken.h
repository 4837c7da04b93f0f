#pragma once

#include "OAuthFault.h"
#include "SigningKeys.h"

#include <boost/json/object.hpp>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

/// What an ID token must say (OpenID Connect Core, chapter 3.1.3.7).
struct IdTokenWanted
{
    std::string issuer;
    std::string clientId;
    std::string nonce;
    std::chrono::sys_seconds now;
};

/// An ID token whose signature nobody has checked yet.
class IdToken
{
public:
    static constexpr std::size_t longest = 16 * 1024; ///< bytes
    static constexpr std::chrono::seconds leeway{60}; ///< between the clocks

    /// A fault where it is no signed token, or the algorithm is neither RS256 nor ES256.
    static OAuthResult<IdToken> parse(std::string_view token);

    const std::string &keyId() const { return m_keyId; } ///< may be empty
    const std::string &algorithm() const { return m_algorithm; }

    /// The verified address in it. `key` is one for its algorithm.
    OAuthResult<std::string> verifiedAddress(const SigningKey &key, const IdTokenWanted &wanted) const;

private:
    OAuthResult<boost::json::object> claims(const SigningKey &key) const;

    std::shared_ptr<struct _cjose_jws_int> m_token; // NOLINT(bugprone-reserved-identifier): cjose's
    std::string m_keyId;
    std::string m_algorithm;
};
