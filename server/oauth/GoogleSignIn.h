#pragma once

#include "CachedFetch.h"
#include "HttpClient.h"
#include "OAuthProvider.h"
#include "OAuthSettings.h"
#include "SigningKeys.h"
#include "TimeSource.h"

#include <string>

/// Sign-in by OpenID Connect, as Google has it: all addresses come from the issuer's discovery document.
class GoogleSignIn : public OAuthProvider
{
public:
    static constexpr std::chrono::hours lifetime{1};       ///< of the discovery document and of the keys
    static constexpr std::chrono::seconds betweenKeys{60}; ///< from one fetch of the keys to the next

    GoogleSignIn(GoogleSettings settings, HttpClient &client, TimeSource now);

    std::string_view name() const override { return "google"; }
    bool isConfigured() const override { return !m_settings.clientId.empty(); }
    boost::asio::awaitable<OAuthResult<std::string>> authorizeUrl(OAuthRequest request) override;
    boost::asio::awaitable<OAuthResult<std::string>> verifiedAddress(OAuthGrant grant) override;

private:
    struct Discovery
    {
        std::string authorizeUrl;
        std::string tokenUrl;
        std::string keysUrl;
        bool isSecretInHeader = false;   ///< client_secret_basic, else client_secret_post
        bool isIssuerInCallback = false; ///< always, so that it may not be missing
        std::chrono::sys_seconds fetched{};
    };
    struct KeysAtTime
    {
        SigningKeys keys;
        std::chrono::sys_seconds fetched;
    };

    boost::asio::awaitable<OAuthResult<Discovery>> fetchDiscovery();
    boost::asio::awaitable<OAuthResult<KeysAtTime>> fetchKeys();
    boost::asio::awaitable<OAuthResult<CachedFetch<Discovery>::Kept>> discovery();
    boost::asio::awaitable<OAuthResult<SigningKey>> keyFor(std::string keyId, std::string algorithm);
    boost::asio::awaitable<OAuthResult<std::string>> exchange(const Discovery &discovery,
                                                              const OAuthGrant &grant);
    OAuthResult<Discovery> discoveryOf(const boost::json::object &document) const;
    bool mayBeAsked(std::string_view url) const;
    bool isYoung(std::chrono::sys_seconds fetched, std::chrono::seconds lifetimeOfIt) const;

    GoogleSettings m_settings;
    HttpClient &m_client;
    TimeSource m_now;
    CachedFetch<Discovery> m_discovery;
    CachedFetch<KeysAtTime> m_keys;
};
