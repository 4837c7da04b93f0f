#include "GoogleSignIn.h"

#include "idToken.h"
#include "oauthRefusals.h"
#include "percentEncoded.h"
#include "providerAnswer.h"
#include "secrets.h"
#include "urlText.h"

#include <algorithm>
#include <boost/json/array.hpp>

namespace asio = boost::asio;

namespace {

constexpr std::size_t longestUrl = 2048; // bytes

bool hasMethod(const boost::json::value &methods, std::string_view name)
{
    return methods.is_array() && std::any_of(methods.as_array().begin(), methods.as_array().end(),
                                             [&](const boost::json::value &method) {
                                                 return method.is_string() &&
                                                        std::string_view(method.as_string()) == name;
                                             });
}

HttpCall fetching(const std::string &url)
{
    HttpCall call;
    call.url = url;
    call.headers = {{"Accept", "application/json"}};
    call.largestAnswer = largestProviderAnswer;
    return call;
}

} // namespace

GoogleSignIn::GoogleSignIn(GoogleSettings settings, HttpClient &client, TimeSource now)
    : m_settings(std::move(settings))
    , m_client(client)
    , m_now(std::move(now))
    , m_discovery([this] { return fetchDiscovery(); })
    , m_keys([this] { return fetchKeys(); })
{}

asio::awaitable<OAuthResult<std::string>> GoogleSignIn::authorizeUrl(OAuthRequest request)
{
    const auto found = co_await discovery();
    if (!found)
        co_return found.error();
    co_return withQuery((*found)->authorizeUrl, formText({{"response_type", "code"},
                                                          {"client_id", m_settings.clientId},
                                                          {"redirect_uri", request.redirectUrl},
                                                          {"scope", "openid email"},
                                                          {"state", request.state},
                                                          {"nonce", request.nonce},
                                                          {"code_challenge", request.challenge},
                                                          {"code_challenge_method", "S256"},
                                                          {"prompt", "select_account"}}));
}

asio::awaitable<OAuthResult<std::string>> GoogleSignIn::verifiedAddress(OAuthGrant grant)
{
    const auto found = co_await discovery();
    if (!found)
        co_return found.error();
    if (grant.issuer ? *grant.issuer != m_settings.issuer : (*found)->isIssuerInCallback)
        co_return OAuthFault{refusals::badCallback(), "callback: of another issuer"};
    const auto exchanged = co_await exchange(**found, grant);
    if (!exchanged)
        co_return exchanged.error();
    const auto token = IdToken::parse(*exchanged);
    if (!token)
        co_return token.error();
    const auto key = co_await keyFor(token->keyId(), token->algorithm());
    if (!key)
        co_return key.error();
    co_return token->verifiedAddress(*key, {m_settings.issuer, m_settings.clientId, grant.nonce, m_now()});
}

asio::awaitable<OAuthResult<CachedFetch<GoogleSignIn::Discovery>::Kept>> GoogleSignIn::discovery()
{
    if (const auto kept = m_discovery.kept(); kept && isYoung(kept->fetched, lifetime))
        co_return kept;
    co_return co_await m_discovery.renewed();
}

asio::awaitable<OAuthResult<GoogleSignIn::Discovery>> GoogleSignIn::fetchDiscovery()
{
    std::string_view issuer = m_settings.issuer;
    if (issuer.ends_with('/'))
        issuer.remove_suffix(1); // OpenID Connect Discovery, chapter 4.1
    const auto answer =
        co_await m_client.send(fetching(std::string(issuer) + "/.well-known/openid-configuration"));
    const auto document = providerObject(answer, "discovery");
    if (!document)
        co_return document.error();
    co_return discoveryOf(*document);
}

OAuthResult<GoogleSignIn::Discovery> GoogleSignIn::discoveryOf(const boost::json::object &document) const
{
    if (textField(document, "issuer", longestUrl) != m_settings.issuer)
        return providerFault("discovery", "of another issuer");
    Discovery found{textField(document, "authorization_endpoint", longestUrl),
                    textField(document, "token_endpoint", longestUrl),
                    textField(document, "jwks_uri", longestUrl)};
    for (const auto &url : {found.authorizeUrl, found.tokenUrl, found.keysUrl}) {
        if (!mayBeAsked(url))
            return providerFault("discovery", "an address is missing or not by https");
    }
    if (const auto *const methods = document.if_contains("token_endpoint_auth_methods_supported");
        !methods || !hasMethod(*methods, "client_secret_post")) {
        found.isSecretInHeader = true; // what holds where nothing is said
        if (methods && !hasMethod(*methods, "client_secret_basic"))
            return providerFault("discovery", "takes no client secret");
    }
    const auto *const issuerSent = document.if_contains("authorization_response_iss_parameter_supported");
    found.isIssuerInCallback = issuerSent && *issuerSent == boost::json::value(true);
    found.fetched = m_now();
    return found;
}

/// What an issuer by https names is by https too.
bool GoogleSignIn::mayBeAsked(std::string_view url) const
{
    const bool isPrintable = std::all_of(url.begin(), url.end(),
                                         [](char character) { return character > ' ' && character <= '~'; });
    return isPrintable && (url.starts_with("https://") ||
                           (url.starts_with("http://") && m_settings.issuer.starts_with("http://")));
}

bool GoogleSignIn::isYoung(std::chrono::sys_seconds fetched, std::chrono::seconds lifetimeOfIt) const
{
    const auto now = m_now();
    return fetched <= now && now < fetched + lifetimeOfIt;
}

asio::awaitable<OAuthResult<std::string>> GoogleSignIn::exchange(const Discovery &discovery,
                                                                 const OAuthGrant &grant)
{
    auto call = fetching(discovery.tokenUrl);
    call.method = "POST";
    call.headers.emplace_back("Content-Type", "application/x-www-form-urlencoded");
    call.body = formText({{"grant_type", "authorization_code"},
                          {"code", grant.code},
                          {"redirect_uri", grant.redirectUrl},
                          {"code_verifier", grant.verifier}});
    if (discovery.isSecretInHeader) {
        // Both are encoded as in a form before they are joined (RFC 6749, chapter 2.3.1).
        const auto both = percentEncoded(m_settings.clientId) + ':' + percentEncoded(m_settings.clientSecret);
        call.headers.emplace_back("Authorization", "Basic " + base64(both));
    } else {
        call.body +=
            '&' + formText({{"client_id", m_settings.clientId}, {"client_secret", m_settings.clientSecret}});
    }
    const auto answer = co_await m_client.send(std::move(call));
    const auto object = tokenObject(answer);
    if (!object)
        co_return object.error();
    co_return textField(*object, "id_token", IdToken::longest);
}

asio::awaitable<OAuthResult<SigningKey>> GoogleSignIn::keyFor(std::string keyId, std::string algorithm)
{
    auto kept = m_keys.kept();
    if (kept && isYoung(kept->fetched, lifetime)) {
        if (auto key = kept->keys.find(keyId, algorithm))
            co_return key;
        // A new key may be there already, but whoever makes ids up shall not have us ask each time.
        if (isYoung(kept->fetched, betweenKeys))
            co_return providerFault("ID token", "is signed by an unknown key");
    }
    const auto renewed = co_await m_keys.renewed();
    if (!renewed)
        co_return renewed.error();
    auto key = (*renewed)->keys.find(keyId, algorithm);
    if (!key)
        co_return providerFault("ID token", "is signed by an unknown key");
    co_return key;
}

asio::awaitable<OAuthResult<GoogleSignIn::KeysAtTime>> GoogleSignIn::fetchKeys()
{
    const auto found = co_await discovery();
    if (!found)
        co_return found.error();
    const auto answer = co_await m_client.send(fetching((*found)->keysUrl));
    const auto set = providerObject(answer, "keys");
    if (!set)
        co_return set.error();
    auto keys = SigningKeys::parse(*set);
    if (!keys)
        co_return keys.error();
    co_return KeysAtTime{*std::move(keys), m_now()};
}
