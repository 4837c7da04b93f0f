#include "OAuthStage.h"

#include <boost/json/serialize.hpp>

namespace {

boost::json::string text(const std::string &plain)
{
    return boost::json::string(plain);
}

} // namespace

OAuthStage::OAuthStage()
    : google({"google-client", "google:secret", issuer}, client, clock.source())
    , yandex({"yandex-client", "yandex-secret", "https://yandex.example/authorize", yandexTokenUrl,
              "https://yandex.example/info"},
             client)
{
    answer(discoveryUrl, discovery());
    client.answer(keysUrl, 200, keySet({firstKey(), ellipticKey()}));
    answerToken(claims("nonce"));
    answer(yandexTokenUrl,
           {{"access_token", "y0_token"}, {"token_type", "bearer"}, {"expires_in", 31536000}});
    answer(yandexInfoUrl,
           {{"client_id", "yandex-client"}, {"id", "17"}, {"default_email", "Student@Yandex.example"}});
}

void OAuthStage::answer(const std::string &url, const boost::json::object &object, unsigned status)
{
    client.answer(url, status, boost::json::serialize(object));
}

void OAuthStage::answerToken(const boost::json::object &claims, const TestKey &key)
{
    answer(tokenUrl, {{"access_token", "x"}, {"token_type", "Bearer"}, {"id_token", text(key.sign(claims))}});
}

boost::json::object OAuthStage::discovery() const
{
    return {{"issuer", text(issuer)},
            {"authorization_endpoint", text(issuer + "/authorize")},
            {"token_endpoint", text(tokenUrl)},
            {"jwks_uri", text(keysUrl)},
            {"token_endpoint_auth_methods_supported", {"client_secret_post", "client_secret_basic"}}};
}

boost::json::object OAuthStage::claims(const std::string &nonce) const
{
    const auto seconds = clock.now().time_since_epoch().count();
    return {{"iss", text(issuer)},
            {"aud", "google-client"},
            {"exp", seconds + 3600},
            {"iat", seconds},
            {"nonce", text(nonce)},
            {"sub", "17"},
            {"email", "student@example.org"},
            {"email_verified", true}};
}
