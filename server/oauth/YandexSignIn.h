#pragma once

#include "HttpClient.h"
#include "OAuthProvider.h"
#include "OAuthSettings.h"

#include <string>

/// Sign-in by Yandex, which has no OpenID Connect: who it is says its own address for that, by the token.
class YandexSignIn : public OAuthProvider
{
public:
    YandexSignIn(YandexSettings settings, HttpClient &client);

    std::string_view name() const override { return "yandex"; }
    bool isConfigured() const override { return !m_settings.clientId.empty(); }
    boost::asio::awaitable<OAuthResult<std::string>> authorizeUrl(OAuthRequest request) override;
    boost::asio::awaitable<OAuthResult<std::string>> verifiedAddress(OAuthGrant grant) override;

private:
    boost::asio::awaitable<OAuthResult<std::string>> exchange(const OAuthGrant &grant);
    bool isOwnIssuer(std::string_view issuer) const;

    YandexSettings m_settings;
    HttpClient &m_client;
};
