#pragma once

#include "CoachSettings.h"
#include "Database.h"
#include "HttpServer.h"
#include "OAuthSettings.h"
#include "SmtpMailer.h"
#include "emailRoutes.h"

#include <string>
#include <vector>

/// All that an operator decides.
struct Configuration
{
    HttpServerSettings http;
    std::vector<std::string> metricsFrom; ///< networks that may read /metrics besides this machine
    std::string publicUrl =
        "http://127.0.0.1:8080"; ///< by which browsers reach the service, without a slash at its end
    DatabaseSettings database;
    std::string secretKey; ///< bytes, at least 32; empty: a file beside the SQLite database holds it
    EmailSignInLimits limits;
    SmtpSettings smtp;
    GoogleSettings google;
    YandexSettings yandex;
    CoachSettings coach;
    std::string authorities;       ///< a PEM file in place of the system's certificate authorities
    std::string logLevel = "info"; ///< of spdlog
};
