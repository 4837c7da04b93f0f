// How long another service asks to wait.
#include "retryAfter.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

// 1994-11-06 08:49:37 UTC, the instant of RFC 9110's example.
constexpr std::chrono::sys_seconds instant{784'111'777s};

} // namespace

TEST(RetryAfter, isANumberOfSeconds)
{
    EXPECT_EQ(retryAfter("0", instant), 0s);
    EXPECT_EQ(retryAfter("120", instant), 120s);
    EXPECT_EQ(retryAfter(" 7 ", instant), 7s);
}

TEST(RetryAfter, isADate)
{
    EXPECT_EQ(retryAfter("Sun, 06 Nov 1994 08:49:37 GMT", instant), 0s);
    EXPECT_EQ(retryAfter("Sun, 06 Nov 1994 08:49:37 GMT", instant - 90s), 90s);
    EXPECT_EQ(retryAfter("Mon, 07 Nov 1994 00:00:00 GMT", instant), 15h + 10min + 23s);
}

TEST(RetryAfter, isNothingForADateThatIsOver)
{
    EXPECT_EQ(retryAfter("Sun, 06 Nov 1994 08:49:37 GMT", instant + 1h), 0s);
}

TEST(RetryAfter, isADayAtMost)
{
    EXPECT_EQ(retryAfter("86401", instant), 24h);
    EXPECT_EQ(retryAfter("99999999999999999999999999", instant), 24h);
    EXPECT_EQ(retryAfter("Fri, 31 Dec 2999 23:59:59 GMT", instant), 24h);
}

TEST(RetryAfter, isUnknownWhereItMakesNoSense)
{
    for (const auto *nonsense :
         {"", "soon", "-5", "1.5", "1e3", "5 s", "Sun, 06 Nov 1994 08:49:37", "Sun, 06 Nov 1994 08:49:37 MSK",
          "Sun, 31 Feb 1994 08:49:37 GMT", "Sun, 06 Nov 1994 08:49:37 GMT and more", "1994-11-06T08:49:37Z"})
        EXPECT_EQ(retryAfter(nonsense, instant), std::nullopt) << nonsense;
}
