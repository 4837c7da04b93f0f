// Sign-in by OpenID Connect, with a provider that answers rightly, wrongly or not at all.
#include "OAuthStage.h"
#include "awaited.h"
#include "secrets.h"
#include "urlText.h"

#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>
#include <map>

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

struct GoogleSignInTest : testing::Test, OAuthStage
{
    OAuthResult<std::string> authorize()
    {
        OAuthRequest request{"https://api.example/callback", "state", "challenge", "nonce"};
        return awaited(google.authorizeUrl(std::move(request)));
    }
    OAuthResult<std::string> exchange(std::optional<std::string> from = std::nullopt)
    {
        OAuthGrant grant{"https://api.example/callback", "c0de 17", "ver1f1er", "nonce", std::move(from)};
        return awaited(google.verifiedAddress(std::move(grant)));
    }
    /// Expects that it fails, for that reason, and that the person reads it with that status.
    void expectFault(const OAuthResult<std::string> &result, const std::string &reason, unsigned status = 502)
    {
        ASSERT_FALSE(result) << reason;
        EXPECT_THAT(result.error().reason, HasSubstr(reason));
        EXPECT_EQ(result.error().refusal.status, status) << reason;
        for (const auto *secret : {"c0de 17", "ver1f1er", "google:secret", "@"})
            EXPECT_THAT(result.error().reason, Not(HasSubstr(secret)));
    }
};

std::map<std::string, std::string> fieldsOf(std::string_view query)
{
    const auto fields = queryFields(query);
    return fields ? std::map<std::string, std::string>(fields->begin(), fields->end())
                  : std::map<std::string, std::string>();
}

std::string headerOf(const HttpCall &call, std::string_view name)
{
    for (const auto &[header, value] : call.headers) {
        if (header == name)
            return value;
    }
    return {};
}

} // namespace

TEST_F(GoogleSignInTest, sendsTheBrowserWithAllThatBelongsToIt)
{
    const auto url = authorize();
    ASSERT_TRUE(url);
    EXPECT_THAT(*url, StartsWith(issuer + "/authorize?"));
    const std::map<std::string, std::string> expected{{"response_type", "code"},
                                                      {"client_id", "google-client"},
                                                      {"redirect_uri", "https://api.example/callback"},
                                                      {"scope", "openid email"},
                                                      {"state", "state"},
                                                      {"nonce", "nonce"},
                                                      {"code_challenge", "challenge"},
                                                      {"code_challenge_method", "S256"},
                                                      {"prompt", "select_account"}};
    EXPECT_EQ(fieldsOf(url->substr(url->find('?') + 1)), expected);
}

TEST_F(GoogleSignInTest, exchangesTheCodeWithItsVerifierAndSecret)
{
    EXPECT_EQ(*exchange(), "student@example.org");
    const auto &call = client.last(tokenUrl);
    EXPECT_EQ(call.method, "POST");
    EXPECT_EQ(headerOf(call, "Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(headerOf(call, "Authorization"), "");
    const std::map<std::string, std::string> expected{{"grant_type", "authorization_code"},
                                                      {"code", "c0de 17"},
                                                      {"redirect_uri", "https://api.example/callback"},
                                                      {"code_verifier", "ver1f1er"},
                                                      {"client_id", "google-client"},
                                                      {"client_secret", "google:secret"}};
    EXPECT_EQ(fieldsOf(call.body), expected);
    for (const auto &sent : client.calls)
        EXPECT_LE(sent.largestAnswer, 128U * 1024);
}

TEST_F(GoogleSignInTest, sendsTheSecretInTheHeaderWhereThatIsWhatIsTaken)
{
    for (const bool isSaid : {true, false}) {
        OAuthStage other;
        auto document = discovery();
        document["token_endpoint_auth_methods_supported"] = {"client_secret_basic"};
        if (!isSaid)
            document.erase("token_endpoint_auth_methods_supported");
        other.answer(discoveryUrl, document);
        OAuthGrant grant{"r", "c", "v", "nonce", std::nullopt};
        EXPECT_TRUE(awaited(other.google.verifiedAddress(std::move(grant))));
        const auto &call = other.client.last(tokenUrl);
        EXPECT_EQ(headerOf(call, "Authorization"), "Basic " + base64("google-client:google%3Asecret"));
        EXPECT_THAT(call.body, Not(HasSubstr("secret")));
    }
}

TEST_F(GoogleSignInTest, takesNoDiscoveryThatIsNotTheIssuersOwn)
{
    for (const auto &[name, value] : std::vector<std::pair<const char *, boost::json::value>>{
             {"issuer", nullptr},
             {"issuer", "https://issuer.example/"},
             {"issuer", "https://evil.example"},
             {"authorization_endpoint", nullptr},
             {"authorization_endpoint", "http://issuer.example/authorize"},
             {"authorization_endpoint", "javascript:alert(1)"},
             {"token_endpoint", nullptr},
             {"token_endpoint", 1},
             {"token_endpoint", "http://issuer.example/token"},
             {"token_endpoint", "https://issuer.example/to ken"},
             {"token_endpoint", "https://issuer.example/\r\nX: y"},
             {"jwks_uri", nullptr},
             {"jwks_uri", "file:///keys"},
             {"token_endpoint_auth_methods_supported", {"private_key_jwt"}},
             {"token_endpoint_auth_methods_supported", "client_secret_post"}}) {
        auto document = discovery();
        document[name] = value;
        answer(discoveryUrl, document);
        expectFault(authorize(), "discovery");
    }
    EXPECT_EQ(client.count(tokenUrl), 0U);
}

TEST_F(GoogleSignInTest, takesNoOtherAnswerToDiscovery)
{
    for (const auto &[status, body] :
         std::vector<std::pair<unsigned, std::string>>{{404, "{}"},
                                                       {500, ""},
                                                       {302, boost::json::serialize(discovery())},
                                                       {200, ""},
                                                       {200, "no JSON"},
                                                       {200, "[]"},
                                                       {200, boost::json::serialize(discovery()) + "x"},
                                                       {200, "{\"a\":\"\xFF\"}"},
                                                       {200, "{\"a\":\"" + std::string(200'000, 'x') + "\"}"},
                                                       {200, std::string(60'000, '[')}}) {
        client.answer(discoveryUrl, status, body);
        expectFault(authorize(), "discovery");
    }
    client.fail(discoveryUrl, "cut off");
    expectFault(authorize(), "discovery: cut off");
    answer(discoveryUrl, discovery());
    EXPECT_TRUE(authorize()) << "no failure is kept";
}

TEST_F(GoogleSignInTest, keepsDiscoveryForAnHour)
{
    EXPECT_TRUE(authorize());
    clock.advance(3599s);
    EXPECT_TRUE(authorize());
    EXPECT_EQ(client.count(discoveryUrl), 1U);
    clock.advance(1s);
    EXPECT_TRUE(authorize());
    EXPECT_EQ(client.count(discoveryUrl), 2U);
}

TEST_F(GoogleSignInTest, tellsACodeThatIsNotTakenFromAProviderInTrouble)
{
    answer(tokenUrl, {{"error", "invalid_grant"}}, 400);
    expectFault(exchange(), "not taken", 400);
    answer(tokenUrl, {{"error", "invalid_client"}}, 400);
    expectFault(exchange(), "token: status 400");
    answer(tokenUrl, {{"error", "invalid_client"}}, 401);
    expectFault(exchange(), "token: status 401");
}

TEST_F(GoogleSignInTest, takesNoOtherAnswerForAToken)
{
    for (const auto &[status, body] : std::vector<std::pair<unsigned, std::string>>{
             {500, "{}"},
             {503, ""},
             {429, "{}"},
             {302, "{}"},
             {201, "{\"id_token\":\"x\"}"},
             {200, ""},
             {200, "<html>"},
             {200, "[]"},
             {200, "{}"},
             {200, "{\"id_token\":1}"},
             {200, "{\"id_token\":\"\"}"},
             {200, "{\"id_token\":\"a.b.c\"}"},
             {200, "{\"id_token\":\"" + std::string(20'000, 'x') + "\"}"},
             {200, std::string(200'000, ' ') + "{}"}}) {
        client.answer(tokenUrl, status, body);
        expectFault(exchange(), "token");
    }
    client.fail(tokenUrl, "too late");
    expectFault(exchange(), "token: too late");
}

TEST_F(GoogleSignInTest, takesATokenOnlyForThisSignInAndThisClient)
{
    for (const auto &[name, value] : std::vector<std::pair<const char *, boost::json::value>>{
             {"iss", "https://evil.example"},
             {"aud", "another"},
             {"nonce", "another"},
             {"exp", clock.now().time_since_epoch().count() - 60}}) {
        auto said = claims("nonce");
        said[name] = value;
        answerToken(said);
        expectFault(exchange(), "ID token: is");
    }
    auto said = claims("nonce");
    said["email_verified"] = false;
    answerToken(said);
    expectFault(exchange(), "no verified", 400);
    answerToken(claims("nonce"), ellipticKey());
    EXPECT_TRUE(exchange());
}

TEST_F(GoogleSignInTest, takesNoKeysButGoodOnes)
{
    for (const auto &[status, body] : std::vector<std::pair<unsigned, std::string>>{
             {500, ""},
             {404, "{}"},
             {200, "no JSON"},
             {200, "{}"},
             {200, "{\"keys\":[]}"},
             {200, "{\"keys\":[{\"kty\":\"oct\",\"kid\":\"first\",\"k\":\"AAAA\"}]}"},
             {200, "{\"keys\":[{\"kty\":\"RSA\",\"kid\":\"first\",\"n\":\"!!\",\"e\":\"AQAB\"}]}"}}) {
        client.answer(keysUrl, status, body);
        expectFault(exchange(), "keys");
    }
    client.answer(keysUrl, 200, keySet({firstKey()}));
    EXPECT_TRUE(exchange()) << "no failure is kept";
}

TEST_F(GoogleSignInTest, looksForANewKeyOnceAMinute)
{
    EXPECT_TRUE(exchange());
    EXPECT_TRUE(exchange());
    EXPECT_EQ(client.count(keysUrl), 1U);

    client.answer(keysUrl, 200, keySet({firstKey(), secondKey()}));
    answerToken(claims("nonce"), secondKey());
    clock.advance(59s);
    expectFault(exchange(), "unknown key");
    EXPECT_EQ(client.count(keysUrl), 1U);
    clock.advance(1s);
    EXPECT_TRUE(exchange());
    EXPECT_EQ(client.count(keysUrl), 2U);

    answerToken(claims("nonce"), TestKey::elliptic("third"));
    clock.advance(60s);
    expectFault(exchange(), "unknown key");
    EXPECT_EQ(client.count(keysUrl), 3U);
}

TEST_F(GoogleSignInTest, forgetsKeysThatTheProviderHasTakenBack)
{
    EXPECT_TRUE(exchange());
    client.answer(keysUrl, 200, keySet({ellipticKey()}));
    clock.advance(3600s);
    answerToken(claims("nonce"), firstKey());
    expectFault(exchange(), "unknown key");
}

TEST_F(GoogleSignInTest, takesACallbackOfItsOwnIssuerOnly)
{
    EXPECT_TRUE(exchange(issuer));
    expectFault(exchange("https://evil.example"), "another issuer", 400);
    EXPECT_EQ(client.count(tokenUrl), 1U) << "the code goes to nobody then";
    auto document = discovery();
    document["authorization_response_iss_parameter_supported"] = true;
    answer(discoveryUrl, document);
    clock.advance(1h);
    expectFault(exchange(), "another issuer", 400);
    answerToken(claims("nonce"));
    EXPECT_TRUE(exchange(issuer));
}

TEST_F(GoogleSignInTest, fetchesOnceHoweverManyWait)
{
    boost::asio::io_context context;
    std::vector<bool> found;
    for (int number = 0; number < 20; ++number) {
        OAuthRequest request{"r", "s", "c", "n"};
        boost::asio::co_spawn(context, google.authorizeUrl(std::move(request)),
                              [&](const std::exception_ptr &, const OAuthResult<std::string> &url) {
                                  found.push_back(url.has_value());
                              });
    }
    context.run();
    EXPECT_EQ(found, std::vector<bool>(20, true));
    EXPECT_EQ(client.count(discoveryUrl), 1U);
}
