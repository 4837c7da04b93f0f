#include "SigningKeys.h"

#include "jsonBody.h"
#include "providerAnswer.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <cjose/cjose.h>
#include <cstddef>

namespace {

constexpr std::size_t mostKeys = 32;
constexpr std::size_t longestKeyId = 256; // bytes

/// What the key checks; empty where that is none of ours.
std::string_view algorithmOf(const boost::json::object &key)
{
    const auto type = textOf(key, "kty");
    const auto purpose = textOf(key, "use").value_or("sig");
    std::string_view algorithm;
    if (type == "RSA")
        algorithm = "RS256";
    else if (type == "EC" && textOf(key, "crv") == "P-256")
        algorithm = "ES256";
    return purpose == "sig" && textOf(key, "alg").value_or(algorithm) == algorithm ? algorithm : "";
}

SigningKey imported(const boost::json::object &key)
{
    const auto text = boost::json::serialize(key);
    cjose_err error{};
    SigningKey imported(cjose_jwk_import(text.data(), text.size(), &error), [](cjose_jwk_t *owned) {
        if (owned)
            cjose_jwk_release(owned);
    });
    constexpr std::size_t leastBits = 2048;
    if (imported && cjose_jwk_get_kty(imported.get(), &error) == CJOSE_JWK_KTY_RSA &&
        cjose_jwk_get_keysize(imported.get(), &error) < leastBits)
        return nullptr;
    return imported;
}

} // namespace

OAuthResult<SigningKeys> SigningKeys::parse(const boost::json::object &set)
{
    const auto *const keys = set.if_contains("keys");
    if (!keys || !keys->is_array() || keys->as_array().size() > mostKeys)
        return providerFault("keys", "no list of keys, or too long a one");
    SigningKeys parsed;
    for (const auto &value : keys->as_array()) {
        if (!value.is_object())
            continue;
        const auto &object = value.as_object();
        const auto algorithm = algorithmOf(object);
        if (algorithm.empty())
            continue;
        if (const auto key = imported(object))
            parsed.m_keys.emplace(textField(object, "kid", longestKeyId), Entry{std::string(algorithm), key});
    }
    if (parsed.m_keys.empty())
        return providerFault("keys", "none that can be used");
    return parsed;
}

SigningKey SigningKeys::find(std::string_view id, std::string_view algorithm) const
{
    if (id.empty())
        return m_keys.size() == 1 && m_keys.begin()->second.algorithm == algorithm
                   ? m_keys.begin()->second.key
                   : nullptr;
    const auto [first, last] = m_keys.equal_range(id);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second.algorithm == algorithm)
            return entry->second.key;
    }
    return nullptr;
}
