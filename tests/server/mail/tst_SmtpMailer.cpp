// Messages to a real mail server, well-behaved or not.
#include "SmtpMailer.h"
#include "SmtpSink.h"
#include "awaited.h"
#include "codeMail.h"

#include <gmock/gmock.h>
#include <optional>

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

SmtpSettings settingsFor(const SmtpSink &sink, SmtpSecurity security)
{
    SmtpSettings settings;
    settings.host = "localhost";
    settings.port = sink.port();
    settings.security = security;
    settings.from = "Quorvel <no-reply@quorvel.example>";
    settings.certificateAuthorities = sink.certificate();
    return settings;
}

SmtpSettings withUser(SmtpSettings settings, const std::string &password)
{
    settings.user = "postman";
    settings.password = password;
    return settings;
}

Mail someMail()
{
    return codeMail("student@example.org", "012345", Language::Russian);
}

Result<> sent(const SmtpSettings &settings, const Mail &mail = someMail())
{
    SmtpMailer mailer(settings);
    return awaited(mailer.send(mail));
}

std::string textOf(const boost::json::value &object, const char *field)
{
    return std::string(object.at(field).as_string());
}

/// The names of the commands that a sink was given.
std::vector<std::string> commandsOf(SmtpSink &sink)
{
    std::vector<std::string> names;
    for (const auto &told : sink.finish())
        names.push_back(told.as_object().contains("command") ? textOf(told, "command") : "message");
    return names;
}

const std::vector<std::string> startTls{"--security", "starttls", "--user",    "postman",
                                        "--password", "s3cret",   "--commands"};

} // namespace

TEST(SmtpMailer, sendsAfterStartTlsAndAuthentication)
{
    SmtpSink sink({"--security", "starttls", "--user", "postman", "--password", "s3cret"});
    ASSERT_TRUE(sent(withUser(settingsFor(sink, SmtpSecurity::StartTls), "s3cret")));
    const auto told = sink.finish();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(textOf(told[0], "sender"), "no-reply@quorvel.example");
    EXPECT_EQ(told[0].at("recipients"), boost::json::array({"student@example.org"}));
    EXPECT_TRUE(told[0].at("tls").as_bool());
    EXPECT_EQ(textOf(told[0], "user"), "postman");
}

TEST(SmtpMailer, sendsThroughTls)
{
    SmtpSink sink({"--security", "tls", "--user", "postman", "--password", "s3cret"});
    ASSERT_TRUE(sent(withUser(settingsFor(sink, SmtpSecurity::Tls), "s3cret")));
    const auto told = sink.finish();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_TRUE(told[0].at("tls").as_bool());
}

TEST(SmtpMailer, sendsAWellMadeMessage)
{
    SmtpSink sink({});
    ASSERT_TRUE(sent(settingsFor(sink, SmtpSecurity::None)));
    const auto told = sink.finish();
    ASSERT_EQ(told.size(), 1U);
    const auto message = textOf(told[0], "message");
    EXPECT_THAT(message, HasSubstr("From: \"Quorvel\" <no-reply@quorvel.example>\r\n"));
    EXPECT_THAT(message, HasSubstr("To: student@example.org\r\n"));
    EXPECT_THAT(message, HasSubstr("Subject: =?UTF-8?B?"));
    EXPECT_THAT(message, HasSubstr("Auto-Submitted: auto-generated\r\n"));
    EXPECT_THAT(message, HasSubstr("Content-Type: multipart/alternative; boundary="));
    EXPECT_THAT(message, HasSubstr("Content-Type: text/plain; charset=utf-8\r\n"));
    EXPECT_THAT(message, HasSubstr("Content-Type: text/html; charset=utf-8\r\n"));
    EXPECT_THAT(message, HasSubstr("\r\n012345\r\n"));
    for (std::size_t start = 0; start < message.size();) { // what RFC 5322 and quoted-printable ask for
        const auto end = std::min(message.find("\r\n", start), message.size());
        const auto line = message.substr(start, end - start);
        EXPECT_LE(line.size(), line.starts_with("Content-Type: multipart/") ? 998U : 78U) << line;
        start = end + 2;
    }
    EXPECT_TRUE(std::all_of(message.begin(), message.end(), [](char byte) { return byte > 0; }))
        << "7 bits suffice";
}

TEST(SmtpMailer, linesThatBeginWithAFullStopStay)
{
    SmtpSink sink({});
    auto mail = someMail();
    mail.text = "first\n.\nQUIT\n..second\n";
    ASSERT_TRUE(sent(settingsFor(sink, SmtpSecurity::None), mail));
    const auto told = sink.finish();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(textOf(told[0], "message"), HasSubstr("first\r\n.\r\nQUIT\r\n..second\r\n"));
}

TEST(SmtpMailer, tellsNothingToAServerOfAnotherCertificate)
{
    SmtpSink sink(startTls);
    SmtpSink other({"--security", "tls"});
    auto settings = withUser(settingsFor(sink, SmtpSecurity::StartTls), "s3cret");
    settings.certificateAuthorities = other.certificate();
    const auto result = sent(settings);
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error().reason, HasSubstr("certificate"));
    EXPECT_THAT(commandsOf(sink), ElementsAre("EHLO", "STARTTLS"));
}

TEST(SmtpMailer, tellsNothingToAServerThatIsNotInTheSystemsList)
{
    SmtpSink sink(startTls);
    auto settings = withUser(settingsFor(sink, SmtpSecurity::StartTls), "s3cret");
    settings.certificateAuthorities.clear();
    EXPECT_FALSE(sent(settings));
    EXPECT_THAT(commandsOf(sink), ElementsAre("EHLO", "STARTTLS"));
}

TEST(SmtpMailer, tellsNothingToAServerOfAnotherName)
{
    for (const auto security : {SmtpSecurity::StartTls, SmtpSecurity::Tls}) {
        SmtpSink sink({"--security", security == SmtpSecurity::Tls ? "tls" : "starttls", "--commands",
                       "--host", "elsewhere.example"});
        EXPECT_FALSE(sent(withUser(settingsFor(sink, security), "s3cret")));
        EXPECT_THAT(commandsOf(sink), Not(Contains("AUTH")));
    }
}

TEST(SmtpMailer, tellsNothingWithoutTheTlsThatIsAskedFor)
{
    SmtpSink sink({"--user", "postman", "--password", "s3cret", "--commands"});
    EXPECT_FALSE(sent(withUser(settingsFor(sink, SmtpSecurity::StartTls), "s3cret")));
    EXPECT_THAT(commandsOf(sink), Contains("EHLO"));
    SmtpSink plain({"--commands"});
    EXPECT_FALSE(sent(withUser(settingsFor(plain, SmtpSecurity::Tls), "s3cret")));
    EXPECT_THAT(commandsOf(plain), IsEmpty());
}

TEST(SmtpMailer, saysMoreThanHelloOnlyWhereTlsIsNotAskedFor)
{
    SmtpSink sink({"--commands"});
    EXPECT_FALSE(sent(withUser(settingsFor(sink, SmtpSecurity::StartTls), "s3cret")));
    const auto commands = commandsOf(sink);
    for (const auto *command : {"AUTH", "MAIL", "RCPT", "DATA", "message"})
        EXPECT_THAT(commands, Not(Contains(command)));
}

TEST(SmtpMailer, failsWithAWrongPasswordAndDoesNotRepeatIt)
{
    SmtpSink sink(startTls);
    const auto result = sent(withUser(settingsFor(sink, SmtpSecurity::StartTls), "wr0ng"));
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error().reason, HasSubstr("535"));
    EXPECT_THAT(result.error().reason, Not(HasSubstr("wr0ng")));
    EXPECT_THAT(commandsOf(sink), Not(Contains("MAIL")));
}

struct RefusingSmtpServer : testing::TestWithParam<std::tuple<const char *, const char *>>
{};

TEST_P(RefusingSmtpServer, isAFailureWithoutTheAddress)
{
    const auto [stage, reply] = GetParam();
    SmtpSink sink({"--fault", std::string(stage) + '=' + reply + " no, not to student@example.org"});
    const auto result = sent(settingsFor(sink, SmtpSecurity::None));
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error().reason, HasSubstr(reply));
    EXPECT_THAT(result.error().reason, Not(HasSubstr("@")));
    EXPECT_THAT(sink.finish(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(AtEachStage, RefusingSmtpServer,
                         testing::Combine(testing::Values("greeting", "ehlo", "mail", "rcpt", "data", "end"),
                                          testing::Values("451", "554")));

TEST(SmtpMailer, failsWhereTheServerHangs)
{
    for (const auto *stage : {"greeting", "ehlo", "mail", "rcpt", "data", "end"}) {
        SmtpSink sink({"--hang", stage});
        auto settings = settingsFor(sink, SmtpSecurity::None);
        settings.timeout = 150ms;
        const auto result = sent(settings);
        ASSERT_FALSE(result) << stage;
        EXPECT_THAT(result.error().reason, HasSubstr("in time")) << stage;
    }
}

TEST(SmtpMailer, hasSentWhatAServerHasTakenThatHangsAfterwards)
{
    SmtpSink sink({"--hang", "quit"});
    auto settings = settingsFor(sink, SmtpSecurity::None);
    settings.timeout = 400ms;
    EXPECT_TRUE(sent(settings));
    EXPECT_EQ(sink.finish().size(), 1U);
}

TEST(SmtpMailer, failsWhereNobodyListens)
{
    SmtpSettings settings;
    {
        SmtpSink sink({});
        settings = settingsFor(sink, SmtpSecurity::None);
    }
    EXPECT_FALSE(sent(settings));
}

TEST(SmtpMailer, letsNoOtherAddressReachTheServer)
{
    SmtpSink sink({"--commands"});
    SmtpMailer mailer(settingsFor(sink, SmtpSecurity::None));
    for (const auto *address :
         {"", "a@b.c\r\nRCPT TO:<x@y.z>", "a@b.c>\r\nDATA", "a@b.c,x@y.z", "<a@b.c>", "a@b.c> SIZE=1",
          "a@b.c\n", " a@b.c", "A@b.c", "\"a b\"@b.c", "a@b.c\r\nBcc: x@y.z", "почта@example.org"}) {
        auto mail = someMail();
        mail.to = address;
        EXPECT_FALSE(awaited(mailer.send(mail))) << address;
    }
    EXPECT_THAT(commandsOf(sink), IsEmpty());
}

TEST(SmtpMailer, letsNoFurtherHeaderIntoASubjectOrSender)
{
    SmtpSink sink({"--commands"});
    auto mail = someMail();
    mail.subject = "Code\r\nBcc: x@y.z";
    EXPECT_FALSE(sent(settingsFor(sink, SmtpSecurity::None), mail));
    auto settings = settingsFor(sink, SmtpSecurity::None);
    settings.from = "A\r\nBcc: x@y.z <a@b.c>";
    EXPECT_FALSE(sent(settings));
    EXPECT_THAT(commandsOf(sink), IsEmpty());
}

TEST(SmtpMailer, takesNoMoreThanItsQueueHolds)
{
    SmtpSink sink({"--hang", "greeting"});
    auto settings = settingsFor(sink, SmtpSecurity::None);
    settings.timeout = 1s;
    SmtpMailer mailer(settings);
    boost::asio::io_context context;
    std::vector<std::string> reasons;
    for (int number = 0; number < SmtpMailer::mostWaiting + 2; ++number) {
        boost::asio::co_spawn(context, mailer.send(someMail()),
                              [&](const std::exception_ptr &, const Result<> &result) {
                                  reasons.push_back(result ? "" : result.error().reason);
                              });
    }
    while (reasons.size() < 2)
        context.run_one();
    EXPECT_THAT(reasons, ElementsAre(HasSubstr("too many"), HasSubstr("too many")));
    context.run();
    EXPECT_EQ(reasons.size(), std::size_t(SmtpMailer::mostWaiting) + 2);
    EXPECT_THAT(reasons, Not(Contains("")));
    EXPECT_EQ(std::count_if(reasons.begin(), reasons.end(),
                            [](const auto &reason) { return reason.find("too many") != std::string::npos; }),
              2);
}

TEST(SmtpMailer, doesNotWaitForAHangingServerWhereItGoes)
{
    SmtpSink sink({"--hang", "ehlo", "--commands"});
    auto settings = settingsFor(sink, SmtpSecurity::None);
    settings.timeout = 1h;
    boost::asio::io_context context;
    std::optional<Result<>> sent;
    {
        SmtpMailer mailer(settings);
        boost::asio::co_spawn(context, mailer.send(someMail()),
                              [&](const std::exception_ptr &, const Result<> &result) { sent = result; });
        context.poll();
        EXPECT_EQ(textOf(sink.next(), "command"), "EHLO");
    }
    context.run();
    ASSERT_TRUE(sent);
    EXPECT_FALSE(*sent);
}
