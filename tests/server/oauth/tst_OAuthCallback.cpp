// What may stand behind the question mark when a provider sends the browser back.
#include "OAuthCallback.h"
#include "percentEncoded.h"
#include "pkce.h"
#include "urlText.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

const std::string state(43, 's');

} // namespace

TEST(OAuthCallback, hasAStateAndACode)
{
    const auto callback =
        OAuthCallback::parse("state=" + state + "&code=4%2F0AX4+b~c&scope=email%20openid&authuser=0");
    ASSERT_TRUE(callback);
    EXPECT_EQ(callback->state, state);
    EXPECT_EQ(callback->code, "4/0AX4 b~c");
    EXPECT_EQ(callback->error, "");
    EXPECT_EQ(callback->issuer, std::nullopt);
}

TEST(OAuthCallback, hasAnErrorInsteadOfACode)
{
    const auto callback = OAuthCallback::parse("error=access_denied&error_description=No&state=" + state +
                                               "&iss=https%3A%2F%2Fa.example");
    ASSERT_TRUE(callback);
    EXPECT_EQ(callback->error, "access_denied");
    EXPECT_EQ(callback->issuer, "https://a.example");
}

TEST(OAuthCallback, isNothingElse)
{
    const std::string good = "state=" + state + "&code=c";
    ASSERT_TRUE(OAuthCallback::parse(good));
    for (const auto &wrong : {std::string(),
                              std::string("&&&"),
                              std::string("code=c"),
                              "state=" + state,
                              "state=" + state + "&code=",
                              "state=" + state + "&code",
                              "state=" + state + "s&code=c",
                              "state=" + state.substr(1) + "&code=c",
                              "state=" + state.substr(1) + "%2B&code=c",
                              good + "&code=d",
                              good + "&state=" + state,
                              good + "&iss=a&iss=b",
                              good + "&%63ode=d",
                              good + "&x=1&x=2",
                              good + "&error=access_denied",
                              good + "&x=%",
                              good + "&x=%4",
                              good + "&x=%zz",
                              good + "&x=%-1",
                              good + "&x=%0A",
                              good + "&x=%00",
                              good + "&x=%FF",
                              good + "&iss=%C3%A9",
                              "state=" + state + "&code=%D0%BF",
                              "state=" + state + "&code=a%0d%0ab",
                              "state=" + state + "&code=" + std::string(OAuthCallback::longestCode + 1, 'c'),
                              good + "&iss=" + std::string(OAuthCallback::longestIssuer + 1, 'i'),
                              "state=" + state + "&error=" + std::string(257, 'e'),
                              good + "&x=" + std::string(OAuthCallback::longestQuery, 'x')})
        EXPECT_FALSE(OAuthCallback::parse(wrong)) << wrong.substr(0, 120);
    EXPECT_TRUE(
        OAuthCallback::parse("state=" + state + "&code=" + std::string(OAuthCallback::longestCode, 'c')));
}

TEST(UrlText, comesBackAsItWas)
{
    std::string text = "Привет, мир! a+b&c=d%/?#\"'<>\\~-._";
    EXPECT_EQ(percentEncoded("a b+c"), "a%20b%2Bc");
    EXPECT_EQ(percentEncoded("é"), "%C3%A9");
    const auto form = formText({{"a", text}, {"b&", ""}});
    EXPECT_THAT(*queryFields(form), ElementsAre(Pair("a", text), Pair("b&", "")));
    EXPECT_EQ(withQuery("https://a.example/x", "b=c"), "https://a.example/x?b=c");
    EXPECT_EQ(withQuery("https://a.example/x?y=z", "b=c"), "https://a.example/x?y=z&b=c");
}

// RFC 7636, appendix B.
TEST(CodeChallenge, isThatOfTheStandard)
{
    EXPECT_EQ(codeChallenge("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}
