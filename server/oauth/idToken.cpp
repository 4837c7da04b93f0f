#include "idToken.h"

#include "jsonBody.h"
#include "oauthRefusals.h"
#include "providerAnswer.h"
#include "secrets.h"
#include "textChecks.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <cjose/cjose.h>
#include <cstdlib>
#include <optional>

namespace {

OAuthFault tokenFault(std::string_view reason)
{
    return providerFault("ID token", reason);
}

std::string headerField(cjose_header_t *header, const char *name)
{
    cjose_err error{};
    const char *const value = cjose_header_get(header, name, &error);
    return value ? value : "";
}

bool hasHeaderField(cjose_header_t *header, const char *name)
{
    cjose_err error{};
    const std::unique_ptr<char, decltype(&std::free)> value(cjose_header_get_raw(header, name, &error),
                                                            &std::free);
    return value != nullptr;
}

bool isFor(const boost::json::object &claims, std::string_view clientId)
{
    const auto *const audience = claims.if_contains("aud");
    if (const auto party = textOf(claims, "azp"); claims.contains("azp") && party != clientId)
        return false;
    if (!audience)
        return false;
    if (audience->is_string())
        return std::string_view(audience->as_string()) == clientId;
    if (!audience->is_array())
        return false;
    const auto &parties = audience->as_array();
    return (parties.size() < 2 || claims.contains("azp")) &&
           std::any_of(parties.begin(), parties.end(), [&](const boost::json::value &party) {
               return party.is_string() && std::string_view(party.as_string()) == clientId;
           });
}

/// Seconds since 1970, which may have a fraction; none where it is no number that a clock can show.
std::optional<double> momentOf(const boost::json::object &claims, std::string_view name)
{
    const auto *const value = claims.if_contains(name);
    if (!value || !value->is_number())
        return std::nullopt;
    return value->to_number<double>();
}

/// What is wrong with its times; empty where nothing is.
std::string_view faultOfTimes(const boost::json::object &claims, std::chrono::sys_seconds now)
{
    const auto seconds = static_cast<double>(now.time_since_epoch().count());
    const auto leeway = static_cast<double>(IdToken::leeway.count());
    const auto expires = momentOf(claims, "exp");
    const auto issued = momentOf(claims, "iat");
    if (!expires || !issued)
        return "says not when it was issued and when it ends";
    if (seconds >= *expires + leeway)
        return "is over";
    if (*issued > seconds + leeway || momentOf(claims, "nbf").value_or(0) > seconds + leeway)
        return "is of the future";
    return "";
}

/// What is wrong with the claims; empty where nothing is.
std::string_view faultOf(const boost::json::object &claims, const IdTokenWanted &wanted)
{
    if (textOf(claims, "iss") != wanted.issuer)
        return "is of another issuer";
    if (!isFor(claims, wanted.clientId))
        return "is for another client";
    const auto nonce = textOf(claims, "nonce");
    if (!nonce || wanted.nonce.empty() || !isSameSecret(*nonce, wanted.nonce))
        return "is of another sign-in";
    if (textOf(claims, "sub").value_or("").empty())
        return "is about nobody";
    return faultOfTimes(claims, wanted.now);
}

bool isVerified(const boost::json::object &claims)
{
    const auto *const verified = claims.if_contains("email_verified");
    return verified && (*verified == boost::json::value(true) || textOf(claims, "email_verified") == "true");
}

} // namespace

OAuthResult<IdToken> IdToken::parse(std::string_view token)
{
    if (token.empty() || token.size() > longest)
        return tokenFault("none, or too long a one");
    cjose_err error{};
    IdToken parsed;
    parsed.m_token.reset(cjose_jws_import(token.data(), token.size(), &error), [](cjose_jws_t *owned) {
        if (owned)
            cjose_jws_release(owned);
    });
    if (!parsed.m_token)
        return tokenFault("is no signed token");
    auto *const header = cjose_jws_get_protected(parsed.m_token.get());
    parsed.m_algorithm = headerField(header, CJOSE_HDR_ALG);
    parsed.m_keyId = headerField(header, CJOSE_HDR_KID);
    if (parsed.m_algorithm != "RS256" && parsed.m_algorithm != "ES256")
        return tokenFault("is signed in a way that is not taken");
    if (hasHeaderField(header, "crit"))
        return tokenFault("has extensions that must be understood");
    return parsed;
}

OAuthResult<boost::json::object> IdToken::claims(const SigningKey &key) const
{
    cjose_err error{};
    if (!cjose_jws_verify(m_token.get(), key.get(), &error))
        return tokenFault("has a signature that does not hold");
    std::uint8_t *bytes = nullptr; // the token's own
    std::size_t length = 0;
    if (!cjose_jws_get_plaintext(m_token.get(), &bytes, &length, &error))
        return tokenFault("has no content");
    auto claims = jsonObject({reinterpret_cast<const char *>(bytes), length}, longest);
    if (!claims)
        return tokenFault("has a content that is no JSON object");
    return *std::move(claims);
}

OAuthResult<std::string> IdToken::verifiedAddress(const SigningKey &key, const IdTokenWanted &wanted) const
{
    const auto said = claims(key);
    if (!said)
        return said.error();
    if (const auto fault = faultOf(*said, wanted); !fault.empty())
        return tokenFault(fault);
    auto address = mailAddress(textOf(*said, "email").value_or(""));
    if (!address || !isVerified(*said))
        return OAuthFault{refusals::noVerifiedAddress(), "ID token: no verified mail address"};
    return *std::move(address);
}
