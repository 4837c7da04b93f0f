#include "YandexSignIn.h"

#include "oauthRefusals.h"
#include "providerAnswer.h"
#include "textChecks.h"
#include "urlText.h"

#include <algorithm>

namespace asio = boost::asio;

namespace {

constexpr std::size_t longestToken = 4096;   // bytes
constexpr std::size_t longestClientId = 256; // bytes
constexpr std::size_t longestAddress = 254;

/// Whether it can stand in a header: it comes from elsewhere.
bool isAccessToken(std::string_view token)
{
    return !token.empty() && std::all_of(token.begin(), token.end(), isVisible);
}

} // namespace

YandexSignIn::YandexSignIn(YandexSettings settings, HttpClient &client)
    : m_settings(std::move(settings))
    , m_client(client)
{}

asio::awaitable<OAuthResult<std::string>> YandexSignIn::authorizeUrl(OAuthRequest request)
{
    co_return withQuery(m_settings.authorizeUrl, formText({{"response_type", "code"},
                                                           {"client_id", m_settings.clientId},
                                                           {"redirect_uri", request.redirectUrl},
                                                           {"scope", "login:email"},
                                                           {"state", request.state},
                                                           {"code_challenge", request.challenge},
                                                           {"code_challenge_method", "S256"}}));
}

asio::awaitable<OAuthResult<std::string>> YandexSignIn::verifiedAddress(OAuthGrant grant)
{
    if (grant.issuer && !isOwnIssuer(*grant.issuer))
        co_return OAuthFault{refusals::badCallback(), "callback: of another issuer"};
    const auto token = co_await exchange(grant);
    if (!token)
        co_return token.error();
    HttpCall call;
    call.url = withQuery(m_settings.infoUrl, "format=json");
    call.headers = {{"Accept", "application/json"}, {"Authorization", "OAuth " + *token}};
    call.largestAnswer = largestProviderAnswer;
    const auto answer = co_await m_client.send(std::move(call));
    const auto info = providerObject(answer, "info");
    if (!info)
        co_return info.error();
    // A token that another application was given says who somebody is, too, but not that they sign in here.
    if (textField(*info, "client_id", longestClientId) != m_settings.clientId)
        co_return providerFault("info", "of another client");
    auto address = mailAddress(textField(*info, "default_email", longestAddress));
    if (!address)
        co_return OAuthFault{refusals::noVerifiedAddress(), "info: no mail address"};
    co_return *std::move(address);
}

/// Yandex sends none; if it ever does, it can only be its own.
bool YandexSignIn::isOwnIssuer(std::string_view issuer) const
{
    const std::string_view url = m_settings.authorizeUrl;
    return issuer == url.substr(0, url.find('/', url.find("://") + 3));
}

asio::awaitable<OAuthResult<std::string>> YandexSignIn::exchange(const OAuthGrant &grant)
{
    HttpCall call;
    call.method = "POST";
    call.url = m_settings.tokenUrl;
    call.headers = {{"Accept", "application/json"}, {"Content-Type", "application/x-www-form-urlencoded"}};
    call.body = formText({{"grant_type", "authorization_code"},
                          {"code", grant.code},
                          {"redirect_uri", grant.redirectUrl},
                          {"code_verifier", grant.verifier},
                          {"client_id", m_settings.clientId},
                          {"client_secret", m_settings.clientSecret}});
    call.largestAnswer = largestProviderAnswer;
    const auto answer = co_await m_client.send(std::move(call));
    const auto object = tokenObject(answer);
    if (!object)
        co_return object.error();
    auto token = textField(*object, "access_token", longestToken);
    if (!isAccessToken(token))
        co_return providerFault("token", "none in it");
    co_return token;
}
