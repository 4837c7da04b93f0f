#pragma once

#include "Configuration.h"

#include <boost/program_options/options_description.hpp>

/// The settings as text, before they are checked and turned into a Configuration.
struct RawSettings
{
    std::string listen;
    std::string trustedProxies;
    std::string metricsFrom;
    std::string publicUrl;
    std::string database;
    int databaseConnections = 0;
    std::string secretKey;
    std::string logLevel;
    std::string authorities;
    int codesForClientAnHour = 0;
    int wrongCodesFromClientAnHour = 0;
    std::string smtpHost;
    int smtpPort = 0;
    std::string smtpSecurity;
    std::string smtpUser;
    std::string smtpPassword;
    std::string smtpFrom;
    std::string smtpAuthorities;
    std::string googleClientId;
    std::string googleClientSecret;
    std::string googleIssuer;
    std::string yandexClientId;
    std::string yandexClientSecret;
    std::string yandexAuthorizeUrl;
    std::string yandexTokenUrl;
    std::string yandexInfoUrl;
    std::string coachUrl;
    std::string coachKey;
    std::string coachModel;
    int coachPerHour = 0;
    int coachPerDay = 0;
    int coachTimeout = 0;
};

/// The names of the settings, with their values as they are without an operator, which are those of
/// Configuration. What is parsed goes to `raw`.
boost::program_options::options_description settingsInto(RawSettings &raw);

/// Settings that are secrets; each can also be the first line of a file, whose path is the setting of that
/// name with
/// "-file" behind it.
const std::vector<std::string> &secretSettings();
