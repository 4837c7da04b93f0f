#pragma once

#include "BeastHttpClient.h"
#include "CoachService.h"
#include "Configuration.h"
#include "Database.h"
#include "GoogleSignIn.h"
#include "HttpServer.h"
#include "Mailer.h"
#include "OAuthRoutes.h"
#include "OAuthStates.h"
#include "RateLimits.h"
#include "Sessions.h"
#include "SignInCodes.h"
#include "YandexSignIn.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <memory>
#include <prometheus/registry.h>
#include <string>
#include <vector>

/// All parts of the service, put together.
class Service
{
public:
    /// Opens the database, which blocks. Fails with a sentence for the operator. `context` must outlive it
    /// and runs on one thread.
    static Result<std::unique_ptr<Service>> create(boost::asio::io_context &context,
                                                   const Configuration &configuration);

    /// Begins to serve. Fails with a sentence that names what cannot be bound.
    Result<> start();

    /// The addresses that are served: "http://127.0.0.1:8080".
    std::vector<std::string> addresses() const;

    /// Ends what is under way, as HttpServer::stop().
    boost::asio::awaitable<void> stop();

private:
    struct Opened
    {
        std::unique_ptr<Database> database;
        std::unique_ptr<BeastHttpClient> client;
        std::string key;
    };

    static Result<Opened> open(const Configuration &configuration);
    Service(boost::asio::io_context &context, const Configuration &configuration, Opened opened);
    Router routes(const Configuration &configuration);
    boost::asio::awaitable<void> tidyUp();

    boost::asio::io_context &m_context;
    std::vector<std::string> m_listen;
    prometheus::Registry m_registry;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<BeastHttpClient> m_client;
    std::unique_ptr<Mailer> m_mailer;
    Sessions m_sessions;
    SignInCodes m_codes;
    OAuthStates m_states;
    RateLimits m_limits;
    GoogleSignIn m_google;
    YandexSignIn m_yandex;
    OAuthRoutes m_oauth;
    CoachService m_coach;
    HttpServer m_server; ///< last: what its handlers use is gone after it
};
