#include "OAuthRoutes.h"

#include "oauthRefusals.h"
#include "pkce.h"
#include "secrets.h"
#include "signInPage.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <spdlog/spdlog.h>

namespace asio = boost::asio;

namespace {

OAuthFault ownFault(const Failure &failure)
{
    return {refusals::unavailable(), failure.reason};
}

void log(const OAuthProvider &provider, const OAuthFault &fault)
{
    // What anybody can bring about is no warning.
    const auto level = fault.refusal.status < 500 ? spdlog::level::info : spdlog::level::warn;
    spdlog::log(level, "sign-in by {}: {}", provider.name(), fault.reason);
}

} // namespace

OAuthRoutes::OAuthRoutes(std::string publicUrl, OAuthStates &states, Sessions &sessions, RateLimits &limits)
    : m_publicUrl(std::move(publicUrl))
    , m_states(states)
    , m_sessions(sessions)
    , m_limits(limits)
{
    while (m_publicUrl.ends_with('/'))
        m_publicUrl.pop_back();
}

void OAuthRoutes::add(Router &router, OAuthProvider &provider)
{
    const auto base = "/api/auth/" + std::string(provider.name());
    router.add("GET", base + "/start",
               [this, &provider](const HttpRequest &request) { return start(request, provider); });
    router.add("GET", base + "/callback",
               [this, &provider](const HttpRequest &request) { return callback(request, provider); });
}

asio::awaitable<HttpResponse> OAuthRoutes::start(const HttpRequest &request, OAuthProvider &provider)
{
    const auto url = co_await begin(request, provider);
    if (!url) {
        log(provider, url.error());
        co_return refuse(request, url.error().refusal);
    }
    HttpResponse response;
    response.body = boost::json::serialize(boost::json::object{{"url", *url}});
    co_return response;
}

asio::awaitable<HttpResponse> OAuthRoutes::callback(const HttpRequest &request, OAuthProvider &provider)
{
    const auto signedIn = co_await end(request, provider);
    if (!signedIn) {
        log(provider, signedIn.error());
        co_return faultPage(request.language, signedIn.error().refusal);
    }
    co_return signedInPage(request.language, signedIn->session, signedIn->email, provider.name());
}

asio::awaitable<OAuthResult<std::string>> OAuthRoutes::begin(const HttpRequest &request,
                                                             OAuthProvider &provider)
{
    if (!provider.isConfigured())
        co_return OAuthFault{refusals::providerNotConfigured(provider.name()), "not configured"};
    if (const auto counted = co_await count(request, "start"); !counted)
        co_return counted.error();
    const auto state = newToken();
    OAuthAttempt attempt{std::string(provider.name()), newToken(), newToken()};
    OAuthRequest asked{callbackUrl(provider), state, codeChallenge(attempt.verifier), attempt.nonce};
    auto url = co_await provider.authorizeUrl(std::move(asked));
    if (!url)
        co_return url.error();
    if (const auto stored = co_await m_states.put(state, std::move(attempt)); !stored)
        co_return ownFault(stored.error());
    co_return *std::move(url);
}

asio::awaitable<OAuthResult<OAuthRoutes::SignedIn>> OAuthRoutes::end(const HttpRequest &request,
                                                                     OAuthProvider &provider)
{
    if (!provider.isConfigured())
        co_return OAuthFault{refusals::providerNotConfigured(provider.name()), "not configured"};
    auto answer = OAuthCallback::parse(request.query);
    if (!answer)
        co_return OAuthFault{refusals::badCallback(), "callback: not to be understood"};
    if (const auto counted = co_await count(request, "callback"); !counted)
        co_return counted.error();
    auto attempt = co_await attemptOf(*answer, provider);
    if (!attempt)
        co_return attempt.error();
    OAuthGrant grant{callbackUrl(provider), std::move(answer->code), std::move(attempt->verifier),
                     std::move(attempt->nonce), std::move(answer->issuer)};
    const auto email = co_await provider.verifiedAddress(std::move(grant));
    if (!email)
        co_return email.error();
    std::string name(provider.name());
    const auto session = co_await m_sessions.begin(*email, std::move(name));
    if (!session)
        co_return ownFault(session.error());
    co_return SignedIn{*session, *email};
}

asio::awaitable<OAuthResult<OAuthAttempt>> OAuthRoutes::attemptOf(const OAuthCallback &answer,
                                                                  const OAuthProvider &provider)
{
    std::string name(provider.name());
    const auto taken = co_await m_states.take(answer.state, std::move(name));
    if (!taken)
        co_return ownFault(taken.error());
    if (!*taken)
        co_return OAuthFault{refusals::signInOver(),
                             "callback: an unknown state, a used one or one that is over"};
    if (answer.error == "access_denied")
        co_return OAuthFault{refusals::signInCancelled(), "cancelled"};
    if (!answer.error.empty())
        co_return OAuthFault{refusals::providerUnavailable(), "callback: an error of the provider"};
    co_return **taken;
}

asio::awaitable<OAuthResult<void>> OAuthRoutes::count(const HttpRequest &request, std::string what)
{
    auto key = "oauth-" + what + ':' + request.clientNetwork();
    const auto wait = co_await m_limits.use(std::move(key), mostInWindow, window);
    if (!wait)
        co_return ownFault(wait.error());
    if (*wait)
        co_return OAuthFault{refusals::tooMany(**wait), "too many from one client"};
    co_return OAuthResult<void>();
}

std::string OAuthRoutes::callbackUrl(const OAuthProvider &provider) const
{
    return m_publicUrl + "/api/auth/" + std::string(provider.name()) + "/callback";
}
