#pragma once

#include "FakeHttpClient.h"
#include "GoogleSignIn.h"
#include "TestClock.h"
#include "TestKeys.h"
#include "YandexSignIn.h"

#include <boost/json/object.hpp>
#include <string>

/// Two providers that are not there: their clients, and what would answer them, well-behaved until a test
/// changes it.
struct OAuthStage
{
    static inline const std::string issuer = "https://issuer.example";
    static inline const std::string discoveryUrl = issuer + "/.well-known/openid-configuration";
    static inline const std::string tokenUrl = issuer + "/token";
    static inline const std::string keysUrl = issuer + "/keys";
    static inline const std::string yandexTokenUrl = "https://yandex.example/token";
    static inline const std::string yandexInfoUrl = "https://yandex.example/info?format=json";

    OAuthStage();

    /// Answers with that object.
    void answer(const std::string &url, const boost::json::object &object, unsigned status = 200);
    /// Answers an exchange of a code with a token of these claims, signed with that key.
    void answerToken(const boost::json::object &claims, const TestKey &key = firstKey());

    boost::json::object discovery() const;
    /// What is right now, for that nonce.
    boost::json::object claims(const std::string &nonce) const;

    TestClock clock;
    FakeHttpClient client;
    GoogleSignIn google;
    YandexSignIn yandex;
};
