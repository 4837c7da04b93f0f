#pragma once

#include <string>

/// Sign-in by one provider; off while clientId is empty.
struct GoogleSettings
{
    std::string clientId;
    std::string clientSecret;
    std::string issuer = "https://accounts.google.com"; ///< its discovery document tells the rest
};

struct YandexSettings
{
    std::string clientId;
    std::string clientSecret;
    std::string authorizeUrl = "https://oauth.yandex.ru/authorize";
    std::string tokenUrl = "https://oauth.yandex.ru/token";
    std::string infoUrl = "https://login.yandex.ru/info";
};
