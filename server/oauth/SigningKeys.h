#pragma once

#include "OAuthFault.h"

#include <boost/json/object.hpp>
#include <map>
#include <memory>
#include <string>
#include <string_view>

/// A key as cjose holds it.
using SigningKey = std::shared_ptr<struct _cjose_jwk_int>; // NOLINT(bugprone-reserved-identifier): cjose's

/// The keys that a provider signs with, of a JSON Web Key Set.
class SigningKeys
{
public:
    /// Takes the keys that can check RS256 (of 2048 bits or more) or ES256 and are not meant for anything
    /// else; others do not matter. A fault where there is none.
    static OAuthResult<SigningKeys> parse(const boost::json::object &set);

    /// The key of that id for that algorithm, "RS256" or "ES256"; null where there is none. Without an id:
    /// the only key there is.
    SigningKey find(std::string_view id, std::string_view algorithm) const;

private:
    struct Entry
    {
        std::string algorithm;
        SigningKey key;
    };
    std::multimap<std::string, Entry, std::less<>> m_keys; ///< by id, empty where it has none
};
