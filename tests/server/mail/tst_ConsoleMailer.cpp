// The code on standard output, where there is no mail server.
#include "ConsoleMailer.h"
#include "awaited.h"
#include "codeMail.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

TEST(ConsoleMailer, showsTheAddressAndTheText)
{
    ConsoleMailer mailer;
    testing::internal::CaptureStdout();
    const auto sent = awaited(mailer.send(codeMail("student@example.org", "012345", Language::English)));
    const auto shown = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(sent);
    EXPECT_THAT(shown, HasSubstr("\nTo: student@example.org\n"));
    EXPECT_THAT(shown, HasSubstr("\n012345\n"));
}

TEST(ConsoleMailer, showsNothingToWhatIsNoAddress)
{
    ConsoleMailer mailer;
    testing::internal::CaptureStdout();
    const auto sent = awaited(mailer.send(codeMail("a@b.c\x1b[2J", "012345", Language::English)));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_FALSE(sent);
}
