// Sign-in by a provider as a browser and the desktop program see it, with a real database.
#include "OAuthRoutes.h"
#include "OAuthStage.h"
#include "databaseTest.h"
#include "pkce.h"
#include "urlText.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <gmock/gmock.h>
#include <map>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>
#include <sstream>

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::StartsWith;

namespace {

/// One instance of the service.
struct Instance
{
    Instance(const TestDatabase &files, TestClock &clock)
        : database(files.open())
        , states(*database, clock.source())
        , sessions(*database, clock.source())
        , limits(*database, clock.source())
    {}

    std::unique_ptr<Database> database;
    OAuthStates states;
    Sessions sessions;
    RateLimits limits;
    OAuthRoutes routes{"https://api.example/", states, sessions, limits};
};

HttpRequest requestOf(std::string query, Language language = Language::English)
{
    HttpRequest request;
    request.method = "GET";
    request.query = std::move(query);
    request.clientAddress = "203.0.113.7";
    request.language = language;
    return request;
}

struct OAuthRoutesTest : testing::TestWithParam<std::string>, OAuthStage
{
    /// What the address has that the browser is sent to.
    std::map<std::string, std::string> start(OAuthProvider &provider)
    {
        const auto response = await(first.routes.start(requestOf(""), provider));
        EXPECT_EQ(response.status, 200U) << response.body;
        const auto url = std::string(boost::json::parse(response.body).at("url").as_string());
        const auto fields = *queryFields(url.substr(url.find('?') + 1));
        std::map<std::string, std::string> asked(fields.begin(), fields.end());
        if (asked.contains("nonce"))
            answerToken(claims(asked["nonce"]));
        return asked;
    }
    HttpResponse callback(Instance &instance, OAuthProvider &provider, const std::string &query,
                          Language language = Language::English)
    {
        return await(instance.routes.callback(requestOf(query, language), provider));
    }
    HttpResponse callback(OAuthProvider &provider, const std::string &query)
    {
        return callback(first, provider, query);
    }
    /// What the page hands to the desktop program.
    std::map<std::string, std::string> handedOver(const HttpResponse &response)
    {
        const std::string mark = "<a href=\"quorvel://auth?";
        const auto place = response.body.find(mark);
        if (response.status != 200 || place == std::string::npos)
            return {};
        auto link = response.body.substr(place + mark.size());
        link.resize(link.find('"'));
        for (auto amp = link.find("&amp;"); amp != std::string::npos; amp = link.find("&amp;"))
            link.replace(amp, 5, "&");
        const auto fields = *queryFields(link);
        return {fields.begin(), fields.end()};
    }
    void expectPage(const HttpResponse &response, unsigned status, const std::string &words)
    {
        EXPECT_EQ(response.status, status) << words;
        EXPECT_EQ(response.contentType, "text/html; charset=utf-8");
        EXPECT_THAT(response.body, HasSubstr(words));
        EXPECT_THAT(response.body, Not(HasSubstr("quorvel://")));
    }

    TestDatabase files{GetParam()};
    Instance first{files, clock};
    Instance second{files, clock};
};

} // namespace

QUORVEL_ON_EVERY_ENGINE(OAuthRoutesTest);

TEST_P(OAuthRoutesTest, signInByGoogleAnywhere)
{
    auto asked = start(google);
    EXPECT_EQ(asked["redirect_uri"], "https://api.example/api/auth/google/callback");
    const auto page = callback(second, google, "state=" + asked["state"] + "&code=c", Language::Russian);
    EXPECT_THAT(page.body, HasSubstr("Вход выполнен"));
    auto handed = handedOver(page);
    EXPECT_EQ(handed["email"], "student@example.org");
    EXPECT_EQ(handed["provider"], "google");
    const auto account = await(first.sessions.find(handed["session"]));
    ASSERT_TRUE(account && *account);
    EXPECT_EQ((*account)->email, "student@example.org");
    const auto exchange = *queryFields(client.last(tokenUrl).body);
    const std::map<std::string, std::string> sent(exchange.begin(), exchange.end());
    EXPECT_EQ(sent.at("redirect_uri"), asked["redirect_uri"]);
    EXPECT_EQ(codeChallenge(sent.at("code_verifier")), asked["code_challenge"]);
    EXPECT_EQ(asked["nonce"].size(), 43U);
}

TEST_P(OAuthRoutesTest, signInByYandex)
{
    auto asked = start(yandex);
    auto handed = handedOver(callback(yandex, "state=" + asked["state"] + "&code=c&cid=x"));
    EXPECT_EQ(handed["email"], "student@yandex.example");
    EXPECT_EQ(handed["provider"], "yandex");
    EXPECT_TRUE(*await(first.sessions.find(handed["session"])));
}

TEST_P(OAuthRoutesTest, aStateCountsOnce)
{
    const auto query = "state=" + start(google)["state"] + "&code=c";
    EXPECT_EQ(callback(google, query).status, 200U);
    expectPage(callback(google, query), 400, "already been used");
    expectPage(callback(second, google, query), 400, "already been used");
    EXPECT_EQ(client.count(tokenUrl), 1U);
}

TEST_P(OAuthRoutesTest, aStateCountsOnceHoweverManyInstancesAreAsked)
{
    const auto query = "state=" + start(google)["state"] + "&code=c";
    const auto request = requestOf(query);
    std::vector<boost::asio::awaitable<HttpResponse>> all;
    for (int number = 0; number < 10; ++number) {
        auto &instance = number % 2 ? first : second;
        all.push_back(instance.routes.callback(request, google));
    }
    const auto pages = awaitAll(std::move(all));
    EXPECT_EQ(std::count_if(pages.begin(), pages.end(), [](const auto &page) { return page.status == 200; }),
              1);
    EXPECT_EQ(client.count(tokenUrl), 1U);
}

TEST_P(OAuthRoutesTest, aStateCountsForItsProviderOnly)
{
    const auto query = "state=" + start(google)["state"] + "&code=c";
    expectPage(callback(yandex, query), 400, "already been used");
    EXPECT_EQ(client.count(yandexTokenUrl), 0U) << "the code goes to nobody else";
    expectPage(callback(google, query), 400, "already been used");
    EXPECT_EQ(client.count(tokenUrl), 0U) << "and counts no more";
}

TEST_P(OAuthRoutesTest, aStateCountsForTenMinutes)
{
    const auto early = "state=" + start(yandex)["state"] + "&code=c";
    const auto late = "state=" + start(yandex)["state"] + "&code=c";
    clock.advance(599s);
    EXPECT_EQ(callback(yandex, early).status, 200U);
    clock.advance(1s);
    expectPage(callback(yandex, late), 400, "too long");
}

TEST_P(OAuthRoutesTest, aStateIsOnlyWhatWasGivenOut)
{
    start(google);
    expectPage(callback(google, "code=c&state=" + std::string(43, 'a')), 400, "already been used");
    for (const auto *query : {"", "code=c", "state=a&code=c", "code=c&code=c"})
        expectPage(callback(google, query), 400, "no answer to a sign-in");
    EXPECT_EQ(client.count(tokenUrl), 0U);
}

TEST_P(OAuthRoutesTest, aCallbackWithAFieldTwiceIsRefusedAndUsesNothingUp)
{
    const auto state = start(google)["state"];
    expectPage(callback(google, "state=" + state + "&code=c&code=d"), 400, "no answer");
    expectPage(callback(google, "state=" + state + "&state=" + state + "&code=c"), 400, "no answer");
    EXPECT_EQ(callback(google, "state=" + state + "&code=c").status, 200U);
}

TEST_P(OAuthRoutesTest, anErrorOfTheProviderEndsTheSignIn)
{
    const auto state = start(google)["state"];
    expectPage(callback(google, "error=access_denied&state=" + state), 400, "cancelled");
    expectPage(callback(google, "code=c&state=" + state), 400, "already been used");
    expectPage(callback(google, "error=server_error&state=" + start(google)["state"]), 502, "did not answer");
    expectPage(callback(google, "error=access_denied&state=" + std::string(43, 'a')), 400,
               "already been used");
}

TEST_P(OAuthRoutesTest, aFaultOfTheProviderIsAPageOfItsOwn)
{
    auto asked = start(google);
    client.fail(tokenUrl, "cut off");
    expectPage(callback(google, "code=c&state=" + asked["state"]), 502, "did not answer");
    asked = start(google);
    auto said = claims(asked["nonce"]);
    said["email_verified"] = false;
    answerToken(said);
    expectPage(callback(google, "code=c&state=" + asked["state"]), 400, "no confirmed e-mail address");
    asked = start(google);
    answerToken(claims("of another sign-in"));
    expectPage(callback(google, "code=c&state=" + asked["state"]), 502, "did not answer");
    asked = start(google);
    expectPage(callback(google, "iss=https://evil.example&code=c&state=" + asked["state"]), 400, "no answer");
    EXPECT_EQ(files.number("SELECT COUNT(*) FROM sessions"), 0);
}

TEST_P(OAuthRoutesTest, aProviderThatIsNotConfiguredSaysSo)
{
    GoogleSignIn none({}, client, clock.source());
    auto request = requestOf("", Language::Russian);
    const auto answer = await(first.routes.start(request, none));
    EXPECT_EQ(answer.status, 503U);
    EXPECT_EQ(answer.body, "На этом сервере не настроен вход через Google. Войди по почте.");
    request.wantsJsonErrors = true;
    EXPECT_THAT(await(first.routes.start(request, none)).body, StartsWith("{\"error\":"));
    YandexSignIn nobody({}, client);
    expectPage(callback(nobody, "code=c&state=" + std::string(43, 'a')), 503, "Yandex is not set up");
    EXPECT_TRUE(client.calls.empty());
}

TEST_P(OAuthRoutesTest, aStartWithoutTheProviderIsRefusedAndStoresNothing)
{
    client.fail(discoveryUrl, "refused");
    const auto answer = await(first.routes.start(requestOf(""), google));
    EXPECT_EQ(answer.status, 502U);
    EXPECT_EQ(answer.contentType, "text/plain; charset=utf-8");
    EXPECT_EQ(files.number("SELECT COUNT(*) FROM oauth_states"), 0);
}

TEST_P(OAuthRoutesTest, oneClientStartsSoManyOnly)
{
    for (int number = 0; number < OAuthRoutes::mostInWindow; ++number)
        start(number % 2 ? static_cast<OAuthProvider &>(google) : yandex);
    auto request = requestOf("");
    const auto refused = await(second.routes.start(request, google));
    EXPECT_EQ(refused.status, 429U);
    EXPECT_THAT(refused.headers, Contains(Pair("Retry-After", "600")));
    request.clientAddress = "203.0.113.8";
    EXPECT_EQ(await(second.routes.start(request, google)).status, 200U);
    clock.advance(600s);
    start(google);
}

TEST_P(OAuthRoutesTest, oneClientEndsSoManyOnly)
{
    for (int number = 0; number < OAuthRoutes::mostInWindow; ++number)
        callback(google, "code=c&state=" + std::string(43, 'a'));
    expectPage(callback(second, google, "code=c&state=" + std::string(43, 'a')), 429, "Too many attempts");
}

TEST_P(OAuthRoutesTest, theLogHoldsNothingSecret)
{
    std::ostringstream written;
    const auto before = spdlog::default_logger();
    spdlog::set_default_logger(
        std::make_shared<spdlog::logger>("test", std::make_shared<spdlog::sinks::ostream_sink_mt>(written)));
    auto asked = start(google);
    const auto done = handedOver(callback(google, "code=s3cret-code&state=" + asked["state"]));
    callback(google, "code=s3cret-code&state=" + asked["state"]);
    asked = start(google);
    answer(tokenUrl, {{"error", "invalid_grant"}, {"error_description", "s3cret-code"}}, 400);
    callback(google, "code=s3cret-code&state=" + asked["state"]);
    spdlog::set_default_logger(before);
    EXPECT_THAT(written.str(), HasSubstr("sign-in by google: token"));
    for (const auto &secret : {asked["state"], asked["nonce"], std::string("s3cret-code"),
                               std::string("google:secret"), std::string("student@"), done.at("session")})
        EXPECT_THAT(written.str(), Not(HasSubstr(secret)));
}
