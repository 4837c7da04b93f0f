// What the message with a sign-in code says.
#include "codeMail.h"
#include "textChecks.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::Not;

TEST(CodeMail, saysTheCodeInTheSubjectAndInBothTexts)
{
    for (const auto language : {Language::English, Language::Russian}) {
        const auto mail = codeMail("student@example.org", "012345", language);
        EXPECT_EQ(mail.to, "student@example.org");
        for (const auto &text : {mail.subject, mail.text, mail.html})
            EXPECT_THAT(text, HasSubstr("012345"));
        EXPECT_FALSE(hasControlCharacters(mail.subject));
        EXPECT_THAT(mail.text, HasSubstr("\n012345\n")) << "alone on its line, to be copied";
    }
}

TEST(CodeMail, saysHowLongItHoldsAndWhatToDoWithoutHavingAsked)
{
    const auto english = codeMail("a@b.c", "012345", Language::English);
    EXPECT_EQ(english.subject, "012345 is your Quorvel code");
    for (const auto &text : {english.text, english.html}) {
        EXPECT_THAT(text, HasSubstr("within 10 minutes"));
        EXPECT_THAT(text, HasSubstr("ignore this message"));
    }
    const auto russian = codeMail("a@b.c", "012345", Language::Russian);
    EXPECT_EQ(russian.subject, "012345 — твой код для Quorvel");
    for (const auto &text : {russian.text, russian.html}) {
        EXPECT_THAT(text, HasSubstr("в течение 10 минут"));
        EXPECT_THAT(text, HasSubstr("не обращай внимания на письмо"));
    }
    EXPECT_THAT(english.html, HasSubstr("<html lang=\"en\">"));
    EXPECT_THAT(russian.html, HasSubstr("<html lang=\"ru\">"));
}

TEST(CodeMail, fetchesNothingAndIsEscaped)
{
    const auto mail = codeMail("a@b.c", "<i>\"&'", Language::English);
    for (const auto *part : {"http:", "https:", "src=", "url(", "<script", "<img", "<link", "@import", "<i>"})
        EXPECT_THAT(mail.html, Not(HasSubstr(part)));
    EXPECT_THAT(mail.html, HasSubstr("&lt;i&gt;&quot;&amp;&#39;"));
    EXPECT_THAT(mail.html, Not(HasSubstr("{"))) << "a place that was not filled";
}
