// The page at the end of a sign-in by a provider.
#include "oauthRefusals.h"
#include "secrets.h"
#include "signInPage.h"

#include <gmock/gmock.h>

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

namespace {

const std::string token = "AbC_-123456789012345678901234567890123456789";

std::string between(const std::string &text, const std::string &first, const std::string &last)
{
    const auto start = text.find(first) + first.size();
    return text.substr(start, text.find(last, start) - start);
}

} // namespace

TEST(SignInPage, handsTheSessionOverByItselfAndByALink)
{
    const auto page = signedInPage(Language::English, token, "a+b@example.org", "google");
    EXPECT_EQ(page.status, 200U);
    const auto link =
        "quorvel://auth?session=" + token + "&amp;email=a%2Bb%40example.org&amp;provider=google\"";
    EXPECT_THAT(page.body, HasSubstr("<meta http-equiv=\"refresh\" content=\"0;url=" + link + ">"));
    EXPECT_THAT(page.body, HasSubstr("<a href=\"" + link + ">"));
}

TEST(SignInPage, speaksBothLanguages)
{
    const auto english = signedInPage(Language::English, token, "a@b.c", "google").body;
    const auto russian = signedInPage(Language::Russian, token, "a@b.c", "google").body;
    EXPECT_THAT(english, HasSubstr("<html lang=\"en\">"));
    EXPECT_THAT(english, HasSubstr("You are signed in"));
    EXPECT_THAT(russian, HasSubstr("<html lang=\"ru\">"));
    EXPECT_THAT(russian, HasSubstr("Вход выполнен"));
}

TEST(SignInPage, showsAFaultWithItsStatusAndNoLink)
{
    const auto page = faultPage(Language::Russian, refusals::signInCancelled());
    EXPECT_EQ(page.status, 400U);
    EXPECT_THAT(page.body, HasSubstr("Вход отменён."));
    for (const auto *part : {"quorvel://", "http-equiv", "<a "})
        EXPECT_THAT(page.body, Not(HasSubstr(part)));
    EXPECT_THAT(faultPage(Language::English, refusals::tooMany(std::chrono::seconds(7))).headers,
                Contains(Pair("Retry-After", "7")));
}

TEST(SignInPage, letsNothingOfAnybodyElseIn)
{
    for (const auto &page : {signedInPage(Language::English, token, "a@b.c", "google"),
                             faultPage(Language::English, refusals::badCallback())}) {
        const auto style = between(page.body, "<style>", "</style>");
        EXPECT_THAT(page.headers,
                    Contains(Pair("Content-Security-Policy",
                                  "default-src 'none'; style-src 'sha256-" + base64(sha256(style)) +
                                      "'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'")));
        EXPECT_THAT(page.headers, Contains(Pair("Referrer-Policy", "no-referrer")));
        EXPECT_THAT(page.headers, Contains(Pair("Cache-Control", "no-store")));
        EXPECT_THAT(page.headers, Contains(Pair("X-Frame-Options", "DENY")));
        EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
        for (const auto *part : {"http://", "https://", "src=", "<script", "style=", "<img", "<link", "url("})
            EXPECT_THAT(page.body, Not(HasSubstr(part)));
    }
}

TEST(SignInPage, isNotBrokenByWhatStandsOnIt)
{
    const auto page = signedInPage(Language::English, "\"><script>", "\"><b>@x.y", "'>\r\n");
    EXPECT_THAT(page.body, Not(HasSubstr("<script>")));
    EXPECT_THAT(page.body, Not(HasSubstr("<b>")));
    EXPECT_THAT(
        page.body,
        HasSubstr("session=%22%3E%3Cscript%3E&amp;email=%22%3E%3Cb%3E%40x.y&amp;provider=%27%3E%0D%0A\""));
}
