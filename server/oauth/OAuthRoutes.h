#pragma once

#include "Http.h"
#include "OAuthCallback.h"
#include "OAuthProvider.h"
#include "OAuthStates.h"
#include "RateLimits.h"
#include "Router.h"
#include "Sessions.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <string>

/// Sign-in by a provider, from the address that the browser is sent to until the page that hands the session
/// to the desktop program.
class OAuthRoutes
{
public:
    /// Starts and ends, each for one client, in `window`. Students of one dormitory share an address.
    static constexpr int mostInWindow = 60;
    static constexpr std::chrono::minutes window{10};

    /// `publicUrl` is where browsers reach this service, "https://api.quorvel.example".
    OAuthRoutes(std::string publicUrl, OAuthStates &states, Sessions &sessions, RateLimits &limits);

    /// GET /api/auth/NAME/start and /api/auth/NAME/callback. This and `provider` outlive the router.
    void add(Router &router, OAuthProvider &provider);

    /// Answers {"url": ...}.
    boost::asio::awaitable<HttpResponse> start(const HttpRequest &request, OAuthProvider &provider);
    /// Answers a page, since a person's browser asks.
    boost::asio::awaitable<HttpResponse> callback(const HttpRequest &request, OAuthProvider &provider);

private:
    struct SignedIn
    {
        std::string session;
        std::string email;
    };

    boost::asio::awaitable<OAuthResult<std::string>> begin(const HttpRequest &request,
                                                           OAuthProvider &provider);
    boost::asio::awaitable<OAuthResult<SignedIn>> end(const HttpRequest &request, OAuthProvider &provider);
    /// What was kept for that state, which counts once.
    boost::asio::awaitable<OAuthResult<OAuthAttempt>> attemptOf(const OAuthCallback &answer,
                                                                const OAuthProvider &provider);
    boost::asio::awaitable<OAuthResult<void>> count(const HttpRequest &request, std::string what);
    std::string callbackUrl(const OAuthProvider &provider) const;

    std::string m_publicUrl;
    OAuthStates &m_states;
    Sessions &m_sessions;
    RateLimits &m_limits;
};
