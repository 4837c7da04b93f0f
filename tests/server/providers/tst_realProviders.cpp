// Sign-in over real HTTP, by a real OpenID provider and by one that asks for what Yandex asks for.
#include "BeastHttpClient.h"
#include "GoogleSignIn.h"
#include "LineProgram.h"
#include "OAuthRoutes.h"
#include "YandexSignIn.h"
#include "databaseTest.h"

#include <boost/json/parse.hpp>
#include <filesystem>
#include <gmock/gmock.h>
#include <map>

using testing::HasSubstr;

namespace {

const std::string publicUrl = "https://api.example";

/// A program that tells where it listens in its first line.
class ProviderProgram
{
public:
    ProviderProgram(std::vector<std::string> program, const std::string &provider,
                    const std::vector<std::string> &options)
        : m_program(withOptions(std::move(program), provider, options))
    {
        const auto line = m_program.line();
        if (!line)
            throw std::runtime_error("the provider does not start");
        m_told = boost::json::parse(*line).as_object();
    }

    std::string told(std::string_view name) const { return std::string(m_told.at(name).as_string()); }

private:
    static std::vector<std::string> withOptions(std::vector<std::string> words, const std::string &provider,
                                                const std::vector<std::string> &options)
    {
        for (const auto &word : {std::string("--client"), std::string("our-client"), std::string("--secret"),
                                 std::string("our:s3cret+"), std::string("--redirect"),
                                 publicUrl + "/api/auth/" + provider + "/callback"})
            words.push_back(word);
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    LineProgram m_program;
    boost::json::object m_told;
};

/// Follows redirects and keeps cookies until it is sent back to our own service.
class Browser
{
public:
    explicit Browser(HttpClient &client)
        : m_client(client)
    {}

    /// The query that it comes back with; empty where it does not.
    std::string visit(std::string url, const std::string &home)
    {
        const auto origin = url.substr(0, url.find('/', url.find("://") + 3));
        for (int step = 0; step < 10; ++step) {
            if (url.starts_with(home + '?'))
                return url.substr(home.size() + 1);
            HttpCall call;
            call.url = url;
            call.headers.emplace_back("Cookie", cookies());
            const auto answer = await(m_client.send(std::move(call)));
            if (!answer || answer->status < 300 || answer->status >= 400) {
                ADD_FAILURE() << (answer ? std::to_string(answer->status) + ' ' + answer->body
                                         : answer.error().reason);
                return {};
            }
            keepCookies(*answer);
            const std::string location(answer->header("Location"));
            url = location.starts_with('/') ? origin + location : location;
        }
        return {};
    }

private:
    std::string cookies() const
    {
        std::string text;
        for (const auto &[name, value] : m_cookies)
            text += (text.empty() ? "" : "; ") + name + '=' + value;
        return text;
    }
    void keepCookies(const HttpAnswer &answer)
    {
        for (const auto &[name, value] : answer.headers) {
            const auto pair = value.substr(0, value.find(';'));
            const auto equals = pair.find('=');
            if ((name == "Set-Cookie" || name == "set-cookie") && equals != std::string::npos)
                m_cookies[pair.substr(0, equals)] = pair.substr(equals + 1);
        }
    }

    HttpClient &m_client;
    std::map<std::string, std::string> m_cookies;
};

struct RealProviders : testing::Test
{
    std::string startUrl(OAuthProvider &provider)
    {
        const auto answer = await(routes.start(HttpRequest{}, provider));
        EXPECT_EQ(answer.status, 200U) << answer.body;
        return answer.status == 200 ? std::string(boost::json::parse(answer.body).at("url").as_string())
                                    : std::string();
    }
    HttpResponse callback(OAuthProvider &provider, const std::string &query)
    {
        HttpRequest request;
        request.query = query;
        return await(routes.callback(request, provider));
    }
    HttpResponse signIn(OAuthProvider &provider)
    {
        const auto home = publicUrl + "/api/auth/" + std::string(provider.name()) + "/callback";
        broughtBack = Browser(*client).visit(startUrl(provider), home);
        return callback(provider, broughtBack);
    }
    GoogleSettings googleSettings(const ProviderProgram &program)
    {
        return {"our-client", "our:s3cret+", program.told("issuer")};
    }
    YandexSettings yandexSettings(const ProviderProgram &program)
    {
        const auto url = program.told("url");
        return {"our-client", "our:s3cret+", url + "/authorize", url + "/token", url + "/info"};
    }

    std::unique_ptr<BeastHttpClient> client = *BeastHttpClient::create();
    TestDatabase files{"Sqlite"};
    std::unique_ptr<Database> database = files.open();
    OAuthStates states{*database, systemTime};
    Sessions sessions{*database, systemTime};
    RateLimits limits{*database, systemTime};
    OAuthRoutes routes{publicUrl, states, sessions, limits};
    std::string broughtBack; ///< the query of the last callback
};

struct RealOpenId : RealProviders
{
    void SetUp() override
    {
        if (!std::filesystem::exists(OPENID_PROVIDER "/node_modules/oidc-provider"))
            GTEST_SKIP() << "not run: there is no oidc-provider; scripts/providers.sh brings it";
    }
    static ProviderProgram program(const std::vector<std::string> &options = {})
    {
        return {{"node", OPENID_PROVIDER "/openIdProvider.js"}, "google", options};
    }
};

struct RealYandex : RealProviders
{
    static ProviderProgram program(const std::vector<std::string> &options = {})
    {
        return {{"/usr/bin/python3", "-B", SERVER_PROVIDERS "/yandexProvider.py"}, "yandex", options};
    }
};

} // namespace

TEST_F(RealOpenId, signsIn)
{
    const auto provider = program();
    GoogleSignIn google(googleSettings(provider), *client, systemTime);
    EXPECT_THAT(signIn(google).body, HasSubstr("email=student%40example.org&amp;provider=google\""));
    EXPECT_THAT(broughtBack, HasSubstr("iss=")) << "it tells who it is, and that is checked";
}

TEST_F(RealOpenId, signsInWithTheSecretInTheHeader)
{
    const auto provider = program({"--basic"});
    GoogleSignIn google(googleSettings(provider), *client, systemTime);
    EXPECT_THAT(signIn(google).body, HasSubstr("provider=google"));
}

TEST_F(RealOpenId, takesACodeOnceAndWithItsOwnVerifierOnly)
{
    const auto provider = program();
    GoogleSignIn google(googleSettings(provider), *client, systemTime);
    const auto home = publicUrl + "/api/auth/google/callback";
    const auto one = Browser(*client).visit(startUrl(google), home);
    const auto other = Browser(*client).visit(startUrl(google), home);
    // The code of one sign-in under the state of the other, as an attacker would mix them.
    const auto codeOf = [](const std::string &text) { return text.substr(0, text.find('&')); };
    ASSERT_TRUE(codeOf(one).starts_with("code="));
    const auto mixed = codeOf(one) + other.substr(other.find('&'));
    EXPECT_THAT(callback(google, mixed).body, HasSubstr("already been used"));
    EXPECT_EQ(files.number("SELECT COUNT(*) FROM sessions"), 0);
}

TEST_F(RealOpenId, signsNobodyInWhoseAddressIsNotVerified)
{
    const auto provider = program({"--unverified"});
    GoogleSignIn google(googleSettings(provider), *client, systemTime);
    const auto page = signIn(google);
    EXPECT_EQ(page.status, 400U);
    EXPECT_THAT(page.body, HasSubstr("no confirmed e-mail address"));
}

TEST_F(RealOpenId, saysSoWhereThePersonHasSaidNo)
{
    const auto provider = program({"--deny"});
    GoogleSignIn google(googleSettings(provider), *client, systemTime);
    EXPECT_THAT(signIn(google).body, HasSubstr("You have cancelled the sign-in."));
}

TEST_F(RealOpenId, takesNoOtherIssuerAtItsAddress)
{
    const auto provider = program();
    auto settings = googleSettings(provider);
    settings.issuer += '/';
    GoogleSignIn google(settings, *client, systemTime);
    EXPECT_EQ(await(routes.start(HttpRequest{}, google)).status, 502U);
}

TEST_F(RealYandex, signsIn)
{
    const auto provider = program();
    YandexSignIn yandex(yandexSettings(provider), *client);
    EXPECT_THAT(signIn(yandex).body, HasSubstr("email=student%40yandex.example&amp;provider=yandex\""));
}

TEST_F(RealYandex, takesNoTokenOfAnotherClient)
{
    const auto provider = program({"--info-client", "another"});
    YandexSignIn yandex(yandexSettings(provider), *client);
    EXPECT_EQ(signIn(yandex).status, 502U);
    EXPECT_EQ(files.number("SELECT COUNT(*) FROM sessions"), 0);
}

TEST_F(RealYandex, saysSoWhereThePersonHasSaidNo)
{
    const auto provider = program({"--deny"});
    YandexSignIn yandex(yandexSettings(provider), *client);
    EXPECT_THAT(signIn(yandex).body, HasSubstr("You have cancelled the sign-in."));
}

TEST_F(RealYandex, isOfflineWhereItIsGone)
{
    auto settings = [&] {
        const auto provider = program();
        return yandexSettings(provider);
    }();
    YandexSignIn yandex(settings, *client);
    const auto url = startUrl(yandex);
    const auto state = url.substr(url.find("state=") + 6, 43);
    EXPECT_EQ(callback(yandex, "code=c&state=" + state).status, 502U);
}
