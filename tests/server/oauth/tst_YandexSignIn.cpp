// Sign-in by Yandex, with a provider that answers rightly, wrongly or not at all.
#include "OAuthStage.h"
#include "awaited.h"
#include "urlText.h"

#include <gmock/gmock.h>

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

struct YandexSignInTest : testing::Test, OAuthStage
{
    OAuthResult<std::string> exchange(std::optional<std::string> from = std::nullopt)
    {
        OAuthGrant grant{"https://api.example/callback", "c0de 17", "ver1f1er", "nonce", std::move(from)};
        return awaited(yandex.verifiedAddress(std::move(grant)));
    }
    void expectFault(const OAuthResult<std::string> &result, const std::string &reason, unsigned status = 502)
    {
        ASSERT_FALSE(result) << reason;
        EXPECT_THAT(result.error().reason, HasSubstr(reason));
        EXPECT_EQ(result.error().refusal.status, status) << reason;
        for (const auto *secret : {"c0de 17", "ver1f1er", "yandex-secret", "y0_token", "@"})
            EXPECT_THAT(result.error().reason, Not(HasSubstr(secret)));
    }
};

} // namespace

TEST_F(YandexSignInTest, sendsTheBrowserWithAllThatBelongsToIt)
{
    OAuthRequest request{"https://api.example/callback", "state", "challenge", "nonce"};
    const auto url = awaited(yandex.authorizeUrl(std::move(request)));
    ASSERT_TRUE(url);
    const auto query = url->find('?');
    EXPECT_EQ(url->substr(0, query), "https://yandex.example/authorize");
    EXPECT_THAT(*queryFields(url->substr(query + 1)),
                UnorderedElementsAre(Pair("response_type", "code"), Pair("client_id", "yandex-client"),
                                     Pair("redirect_uri", "https://api.example/callback"),
                                     Pair("scope", "login:email"), Pair("state", "state"),
                                     Pair("code_challenge", "challenge"),
                                     Pair("code_challenge_method", "S256")));
}

TEST_F(YandexSignInTest, asksWhoItIsByTheToken)
{
    EXPECT_EQ(*exchange(), "student@yandex.example");
    EXPECT_THAT(*queryFields(client.last(yandexTokenUrl).body),
                UnorderedElementsAre(Pair("grant_type", "authorization_code"), Pair("code", "c0de 17"),
                                     Pair("redirect_uri", "https://api.example/callback"),
                                     Pair("code_verifier", "ver1f1er"), Pair("client_id", "yandex-client"),
                                     Pair("client_secret", "yandex-secret")));
    EXPECT_EQ(client.last(yandexInfoUrl).method, "GET");
    EXPECT_THAT(client.last(yandexInfoUrl).headers, Contains(Pair("Authorization", "OAuth y0_token")));
}

TEST_F(YandexSignInTest, takesNoTokenOfAnotherClient)
{
    for (const auto &other : std::vector<boost::json::value>{"another", "", nullptr, 1, "yandex-client2"}) {
        answer(yandexInfoUrl, {{"client_id", other}, {"default_email", "student@yandex.example"}});
        expectFault(exchange(), "another client");
    }
    answer(yandexInfoUrl, {{"default_email", "student@yandex.example"}});
    expectFault(exchange(), "another client");
}

TEST_F(YandexSignInTest, takesNothingButAnAddress)
{
    for (const auto &address :
         std::vector<boost::json::value>{"", "no address", nullptr, 1, boost::json::array{"a@b.c"},
                                         "a@b.c\r\nBcc: x@y.z", "a@b.c,x@y.z"}) {
        answer(yandexInfoUrl,
               {{"client_id", "yandex-client"}, {"default_email", address}, {"emails", {"a@b.c"}}});
        expectFault(exchange(), "no mail address", 400);
    }
}

TEST_F(YandexSignInTest, takesNoOtherAnswerForAToken)
{
    answer(yandexTokenUrl, {{"error", "invalid_grant"}}, 400);
    expectFault(exchange(), "not taken", 400);
    for (const auto &[status, body] : std::vector<std::pair<unsigned, std::string>>{
             {400, "{\"error\":\"invalid_client\"}"},
             {400, "no JSON"},
             {500, "{}"},
             {302, "{}"},
             {200, ""},
             {200, "<html>"},
             {200, "[]"},
             {200, "{}"},
             {200, "{\"access_token\":1}"},
             {200, "{\"access_token\":\"\"}"},
             {200, "{\"access_token\":\"a b\"}"},
             {200, "{\"access_token\":\"a\\r\\nX: y\"}"},
             {200, "{\"access_token\":\"\\u043f\"}"},
             {200, "{\"access_token\":\"" + std::string(5'000, 'x') + "\"}"},
             {200, "{\"access_token\":\"x\",\"a\":\"" + std::string(200'000, 'x') + "\"}"}}) {
        client.answer(yandexTokenUrl, status, body);
        expectFault(exchange(), "token");
    }
    client.fail(yandexTokenUrl, "no valid certificate");
    expectFault(exchange(), "token: no valid certificate");
    EXPECT_EQ(client.count(yandexInfoUrl), 0U);
}

TEST_F(YandexSignInTest, takesNoOtherAnswerAboutWhoItIs)
{
    for (const auto &[status, body] :
         std::vector<std::pair<unsigned, std::string>>{{401, "{}"},
                                                       {500, ""},
                                                       {302, "{}"},
                                                       {200, ""},
                                                       {200, "<html>"},
                                                       {200, "[]"},
                                                       {200, "\xFF"},
                                                       {200, std::string(200'000, ' ') + "{}"}}) {
        client.answer(yandexInfoUrl, status, body);
        expectFault(exchange(), "info");
    }
    client.fail(yandexInfoUrl, "too large");
    expectFault(exchange(), "info: too large");
}

TEST_F(YandexSignInTest, takesACallbackOfItsOwnOnly)
{
    EXPECT_TRUE(exchange("https://yandex.example"));
    expectFault(exchange("https://yandex.example.evil"), "another issuer", 400);
    expectFault(exchange(issuer), "another issuer", 400);
    expectFault(exchange(""), "another issuer", 400);
    EXPECT_EQ(client.count(yandexTokenUrl), 1U);
}
