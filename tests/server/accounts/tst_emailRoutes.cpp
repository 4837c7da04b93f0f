// What sign-in by mail answers, on every database.
#include "FakeMailer.h"
#include "TestClock.h"
#include "databaseTest.h"
#include "emailRoutes.h"
#include "jsonBody.h"

#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

const std::string email = "student@example.org";

std::string headerOf(const HttpResponse &response, const std::string &name)
{
    for (const auto &[header, value] : response.headers) {
        if (header == name)
            return value;
    }
    return "";
}

std::string fieldOf(const HttpResponse &response, std::string_view name)
{
    const auto object = jsonObject(response.body);
    const auto text = object ? textOf(*object, name) : std::nullopt;
    return std::string(text.value_or(""));
}

class EmailRoutesTest : public DatabaseTest
{
protected:
    EmailRoutesTest() { addEmailRoutes(m_router, {m_codes, m_sessions, m_limits, m_mailer, {5, 3, 4, 2}}); }

    HttpResponse post(const std::string &path, const std::string &body, Language language = Language::English)
    {
        HttpRequest request;
        request.method = "POST";
        request.path = path;
        request.body = body;
        request.clientAddress = m_client;
        request.language = language;
        return await(m_router.answer(request));
    }
    HttpResponse start(const std::string &address = email)
    {
        return post("/api/auth/email/start", boost::json::serialize(boost::json::object{{"email", address}}));
    }
    HttpResponse verify(const std::string &code, const std::string &address = email)
    {
        return post("/api/auth/email/verify",
                    boost::json::serialize(boost::json::object{{"email", address}, {"code", code}}));
    }
    HttpResponse account(const std::string &token)
    {
        HttpRequest request;
        request.method = "GET";
        request.path = "/api/account";
        request.headers = {{"Authorization", "Bearer " + token}};
        return await(m_router.answer(request));
    }
    static std::string otherThan(const std::string &code) { return code == "000000" ? "000001" : "000000"; }

    std::string m_client = "203.0.113.7";
    TestClock m_clock;
    FakeMailer m_mailer;
    SignInCodes m_codes{*m_database, m_clock.source(), std::string(32, 'k')};
    Sessions m_sessions{*m_database, m_clock.source()};
    RateLimits m_limits{*m_database, m_clock.source()};
    Router m_router;
};

} // namespace

TEST_P(EmailRoutesTest, signInByACode)
{
    const auto started = start("  Student@Example.org ");
    EXPECT_EQ(started.status, 200U);
    EXPECT_EQ(started.body, R"({"sent":true})");
    ASSERT_EQ(m_mailer.sent.size(), 1U);
    EXPECT_EQ(m_mailer.sent[0].to, email);

    const auto verified = verify(" " + m_mailer.lastCode() + "\n", "Student@Example.org");
    EXPECT_EQ(verified.status, 200U);
    EXPECT_EQ(fieldOf(verified, "email"), email);
    const auto token = fieldOf(verified, "session");
    EXPECT_EQ(token.size(), 43U);
    const auto whose = account(token);
    EXPECT_EQ(whose.status, 200U);
    EXPECT_EQ(whose.body, R"({"email":"student@example.org"})");
}

TEST_P(EmailRoutesTest, areNotClosedToAnAddressByGuessesAtNoCode)
{
    for (int guess = 0; guess < 6; ++guess) { // twice what an address may guess wrongly, from other networks
        m_client = "198.51.100." + std::to_string(guess);
        EXPECT_EQ(verify("000000").status, 401U);
    }
    m_client = "203.0.113.7";
    start();
    EXPECT_EQ(verify(m_mailer.lastCode()).status, 200U);
}

TEST_P(EmailRoutesTest, tellNobodyElseWhoseSessionItIs)
{
    for (const auto &token : {std::string(), std::string("x"), std::string(43, 'A')}) {
        const auto whose = account(token);
        EXPECT_EQ(whose.status, 401U);
        EXPECT_EQ(whose.body, "Your sign-in is no longer valid. Sign out and sign in again.");
    }
}

TEST_P(EmailRoutesTest, refuseWhatIsNoRequest)
{
    for (const auto *path : {"/api/auth/email/start", "/api/auth/email/verify"}) {
        for (const auto *body :
             {"", "{", "[]", "null", "\"email\"", "{}", R"({"email":1,"code":"1"})", R"({"email":null})",
              R"({"email":["a@b.c"]})", R"({"email":"a@b.c"} x)", "{\"email\":\"\xff@b.c\",\"code\":\"1\"}",
              R"({"email":"a@b.c",})", R"({"email":"\ud800@b.c","code":"1"})", R"({"Email":"a@b.c"})"})
            EXPECT_EQ(post(path, body).status, 400U) << path << ' ' << body;
    }
    EXPECT_EQ(post("/api/auth/email/verify", R"({"email":"a@b.c"})").status, 400U);
    EXPECT_EQ(post("/api/auth/email/verify", R"({"email":"a@b.c","code":123456})").status, 400U);
    EXPECT_TRUE(m_mailer.sent.empty());
}

TEST_P(EmailRoutesTest, takeNoNoticeOfFieldsTheyDoNotKnow)
{
    EXPECT_EQ(post("/api/auth/email/start", R"({"email":"a@b.cd","more":[{"deep":1}]})").status, 200U);
}

TEST_P(EmailRoutesTest, sendMailToAnAddressOnly)
{
    for (const auto *address : {"", "a@b", "a@b.c, d@e.f", "<a@b.c>", "a@b.c\r\nBcc: d@e.f", "a b@c.d"}) {
        const auto refused = start(address);
        EXPECT_EQ(refused.status, 400U);
        EXPECT_EQ(refused.body, "Enter a valid email.");
    }
    const auto russian = post("/api/auth/email/start", R"({"email":"@"})", Language::Russian);
    EXPECT_EQ(russian.body, "Введи корректную почту.");
    EXPECT_TRUE(m_mailer.sent.empty());
}

TEST_P(EmailRoutesTest, sendTheMailInTheLanguageOfTheRequest)
{
    EXPECT_EQ(post("/api/auth/email/start", R"({"email":"a@b.cd"})", Language::Russian).status, 200U);
    EXPECT_THAT(m_mailer.sent.at(0).subject, HasSubstr("код"));
}

TEST_P(EmailRoutesTest, sayHowLongToWaitForAnotherCode)
{
    start();
    m_clock.advance(18s);
    const auto refused = start();
    EXPECT_EQ(refused.status, 429U);
    EXPECT_EQ(headerOf(refused, "Retry-After"), "42");
    EXPECT_EQ(refused.body, "A code was sent a moment ago. Ask for a new one in 42 seconds.");
    m_clock.advance(41s);
    EXPECT_THAT(start().body, HasSubstr(" in 1 second."));
    EXPECT_THAT(post("/api/auth/email/start", R"({"email":"student@example.org"})", Language::Russian).body,
                HasSubstr("через 1 секунду."));
    m_clock.advance(1s);
    EXPECT_EQ(start().status, 200U);
    EXPECT_EQ(m_mailer.sent.size(), 2U);
}

TEST_P(EmailRoutesTest, answerTheSameForEveryCodeThatIsNotRight)
{
    start();
    const auto code = m_mailer.lastCode();
    const auto wrong = verify(otherThan(code));
    EXPECT_EQ(wrong.status, 401U);
    EXPECT_EQ(wrong.body, "The code is wrong or too old. Ask for a new one.");
    m_client = "203.0.113.8";
    const auto unknown = verify(code, "nobody@example.org");
    const auto noAddress = verify(code, "nobody");
    EXPECT_EQ(verify(code).status, 200U);
    m_client = "203.0.113.9";
    const auto spent = verify(code);
    for (const auto &other : {unknown, noAddress, spent}) {
        EXPECT_EQ(other.status, wrong.status);
        EXPECT_EQ(other.body, wrong.body);
        EXPECT_EQ(other.headers, wrong.headers);
    }
    EXPECT_EQ(post("/api/auth/email/verify", R"({"email":"a@b.cd","code":""})", Language::Russian).body,
              "Код неверный или устарел. Запроси новый.");
}

TEST_P(EmailRoutesTest, forgetACodeThatWasNotSent)
{
    m_mailer.problem = Failure{"no mail server"};
    const auto failed = start();
    EXPECT_EQ(failed.status, 503U);
    EXPECT_EQ(failed.body, "The mail with the code could not be sent. Try again in a minute.");
    m_mailer.problem.reset();
    EXPECT_EQ(start().status, 200U); // at once
}

TEST_P(EmailRoutesTest, limitTheCodesForOneClient)
{
    for (int number = 0; number < 5; ++number)
        EXPECT_EQ(start("a" + std::to_string(number) + "@example.org").status, 200U);
    const auto refused = start("b@example.org");
    EXPECT_EQ(refused.status, 429U);
    EXPECT_EQ(headerOf(refused, "Retry-After"), "3600");
    m_client = "203.0.113.8";
    EXPECT_EQ(start("b@example.org").status, 200U);
    EXPECT_EQ(m_mailer.sent.size(), 6U);
}

TEST_P(EmailRoutesTest, limitTheCodesForOneAddressFromAnywhere)
{
    for (int number = 0; number < 4; ++number) {
        m_client = "203.0.113." + std::to_string(number);
        EXPECT_EQ(start().status, 200U);
        EXPECT_EQ(start().status, 429U); // too soon, which does not count
        m_clock.advance(60s);
    }
    m_client = "203.0.113.99";
    EXPECT_EQ(start().status, 429U);
    EXPECT_EQ(m_mailer.sent.size(), 4U);
    m_clock.advance(24h);
    EXPECT_EQ(start().status, 200U);
}

TEST_P(EmailRoutesTest, limitTheGuessesOfOneClient)
{
    for (int number = 0; number < 3; ++number)
        EXPECT_EQ(verify("000000", "a" + std::to_string(number) + "@example.org").status, 401U);
    EXPECT_EQ(verify("000000", "b@example.org").status, 429U);
    start();
    EXPECT_EQ(verify(m_mailer.lastCode()).status, 429U);
    m_clock.advance(1h);
    start();
    EXPECT_EQ(verify(m_mailer.lastCode()).status, 200U);
}

TEST_P(EmailRoutesTest, limitTheGuessesForOneAddressFromAnywhere)
{
    start();
    const auto code = m_mailer.lastCode();
    for (int number = 0; number < 2; ++number) {
        m_client = "203.0.113." + std::to_string(number);
        EXPECT_EQ(verify(otherThan(code)).status, 401U);
    }
    m_client = "203.0.113.99";
    EXPECT_EQ(verify(code).status, 429U);
}

TEST_P(EmailRoutesTest, countRightCodesAsNoGuesses)
{
    for (int number = 0; number < 4; ++number) {
        const auto address = "a" + std::to_string(number) + "@example.org";
        EXPECT_EQ(start(address).status, 200U);
        EXPECT_EQ(verify(m_mailer.lastCode(), address).status, 200U);
    }
}

TEST_P(EmailRoutesTest, failPlainlyWithoutTheirDatabase)
{
    m_files.direct("DROP TABLE rate_limits");
    m_files.direct("DROP TABLE sessions");
    for (const auto &answer : {start(), verify("000000"), account(std::string(43, 'A'))}) {
        EXPECT_EQ(answer.status, 503U);
        EXPECT_EQ(answer.body, "The service has a problem right now. Try again in a minute.");
    }
}

QUORVEL_ON_EVERY_ENGINE(EmailRoutesTest);
