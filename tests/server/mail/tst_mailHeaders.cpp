// How the head of a message is written, and who may send one.
#include "mailHeaders.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

std::chrono::sys_seconds moment(std::chrono::year_month_day day, std::chrono::seconds clock)
{
    return std::chrono::sys_days(day) + clock;
}

} // namespace

TEST(HeaderText, staysAsItIsWhereItIsPlain)
{
    EXPECT_EQ(headerText("012345 is your Quorvel code"), "012345 is your Quorvel code");
    EXPECT_EQ(headerText(""), "");
}

// "Привет" in base64 by coreutils' base64.
TEST(HeaderText, isEncodedWhereItIsNot)
{
    EXPECT_EQ(headerText("Привет"), "=?UTF-8?B?0J/RgNC40LLQtdGC?=");
    EXPECT_EQ(headerText("=?x?"), "=?UTF-8?B?PT94Pw==?=") << "else it would be read as an encoded word";
}

TEST(HeaderText, isCutBetweenCharactersIntoWordsOfAtMost75)
{
    std::string text;
    for (int count = 0; count < 40; ++count)
        text += "\U0001F600";
    const auto words = headerText(text);
    std::size_t count = 0;
    for (std::size_t start = 0; start < words.size(); ++count) {
        const auto end = std::min(words.find("\r\n ", start), words.size());
        EXPECT_LE(end - start, 75U);
        EXPECT_THAT(words.substr(start, end - start), MatchesRegex("=\\?UTF-8\\?B\\?8J[A-Za-z0-9+/=]+\\?="))
            << "F0 9F: each word begins with a whole character";
        start = end + 3;
    }
    EXPECT_EQ(count, 4U) << "11 characters of 4 bytes fit into 45";
}

TEST(MailDate, isThatOfRfc5322)
{
    using namespace std::chrono;
    EXPECT_EQ(mailDate(moment(2026y / November / 21, 19h + 2min + 3s)), "Sat, 21 Nov 2026 19:02:03 +0000");
    EXPECT_EQ(mailDate(moment(2028y / February / 29, 23h + 59min + 59s)), "Tue, 29 Feb 2028 23:59:59 +0000");
    EXPECT_EQ(mailDate(moment(2027y / January / 1, 0s)), "Fri, 01 Jan 2027 00:00:00 +0000");
}

TEST(MailHeaders, areAllThatAMessageNeeds)
{
    const Mail mail{"student@example.org", "Hello", "", ""};
    EXPECT_THAT(mailHeaders({"Quorvel", "no-reply@quorvel.example"}, mail,
                            moment(std::chrono::year(2026) / 11 / 21, 0s)),
                ElementsAre("From: \"Quorvel\" <no-reply@quorvel.example>", "To: student@example.org",
                            "Subject: Hello", "Date: Sat, 21 Nov 2026 00:00:00 +0000",
                            MatchesRegex("Message-ID: <[A-Za-z0-9_-]{43}@quorvel\\.example>"),
                            "Auto-Submitted: auto-generated"));
    EXPECT_EQ(mailHeaders({"", "a@b.c"}, mail, {})[0], "From: a@b.c");
    EXPECT_EQ(mailHeaders({"A \"B\" \\", "a@b.c"}, mail, {})[0], "From: \"A \\\"B\\\" \\\\\" <a@b.c>");
    EXPECT_EQ(mailHeaders({"Привет", "a@b.c"}, mail, {})[0], "From: =?UTF-8?B?0J/RgNC40LLQtdGC?= <a@b.c>");
}

TEST(MailSender, isANameAndAnAddressOrAnAddress)
{
    EXPECT_EQ(MailSender::parse("Quorvel <no-reply@quorvel.example>"),
              (MailSender{"Quorvel", "no-reply@quorvel.example"}));
    EXPECT_EQ(MailSender::parse("Учись <a@b.c>"), (MailSender{"Учись", "a@b.c"}));
    EXPECT_EQ(MailSender::parse(" a@b.c "), (MailSender{"", "a@b.c"}));
    EXPECT_EQ(MailSender::parse("<a@b.c>"), (MailSender{"", "a@b.c"}));
    EXPECT_EQ(MailSender::parse("Quorvel <no-reply@localhost>"),
              (MailSender{"Quorvel", "no-reply@localhost"}));
}

TEST(MailSender, isNothingElse)
{
    for (const auto *wrong :
         {"", "Quorvel", "a@b.c, d@e.f", "A <a@b.c> <d@e.f>", "A <a@b.c", "A a@b.c>", "A\r\nB <a@b.c>",
          "A <a@b.c\r\nBcc: x@y.z>", "\xFF <a@b.c>", "<>", "A <a@b.>", "a@"})
        EXPECT_EQ(MailSender::parse(wrong), std::nullopt) << wrong;
}
