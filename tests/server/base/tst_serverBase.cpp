// Languages, secrets, and what may pass for a text or an address.
#include "Language.h"
#include "htmlText.h"
#include "secrets.h"
#include "textChecks.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

TEST(PreferredLanguage, isTheOneWithTheGreatestWeight)
{
    EXPECT_EQ(preferredLanguage("ru-RU, ru;q=0.9, en;q=0.8"), Language::Russian);
    EXPECT_EQ(preferredLanguage("de, ru;q=0.3, en-GB;q=0.7"), Language::English);
    EXPECT_EQ(preferredLanguage("en;q=0.1,RU;q=0.2"), Language::Russian);
}

TEST(PreferredLanguage, isEnglishWhereNothingIsSaid)
{
    for (const auto *header : {"", "*", "de", ",,;", "ru;q=2", "ru;q=x", "ru;q=0", "russian"})
        EXPECT_EQ(preferredLanguage(header), Language::English) << header;
}

// The vectors are those of FIPS 180-2, RFC 4231 (case 2) and RFC 4648.
TEST(Secrets, hashAsTheStandardsSay)
{
    EXPECT_EQ(hexOf(sha256("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hexOf(hmacSha256("Jefe", "what do ya want for nothing?")),
              "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    EXPECT_EQ(base64("foob"), "Zm9vYg==");
    EXPECT_EQ(base64("\xfb\xff"), "+/8=");
    EXPECT_EQ(base64url("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64url("fooba"), "Zm9vYmE");
    EXPECT_EQ(base64url("\xfb\xff"), "-_8");
    EXPECT_EQ(base64url(""), "");
}

TEST(Secrets, areNeverTheSameTwice)
{
    std::set<std::string> tokens;
    for (int number = 0; number < 1000; ++number)
        tokens.insert(newToken());
    EXPECT_EQ(tokens.size(), 1000U);
    EXPECT_EQ(tokens.begin()->size(), 43U);
}

TEST(Secrets, everyDigitOfACodeIsAsLikely)
{
    constexpr int codes = 12'000;
    std::array<int, 10> seen{};
    for (int number = 0; number < codes; ++number) {
        const auto code = newCode();
        ASSERT_EQ(code.size(), 6U);
        for (const char digit : code) {
            ASSERT_TRUE(digit >= '0' && digit <= '9') << code;
            ++seen[static_cast<std::size_t>(digit - '0')];
        }
    }
    // 7200 each on average; nine standard deviations (80.5) are not met by chance.
    for (const int count : seen)
        EXPECT_NEAR(count, 7200, 725);
}

TEST(Secrets, areComparedWhole)
{
    EXPECT_TRUE(isSameSecret("abc", "abc"));
    EXPECT_FALSE(isSameSecret("abc", "abd"));
    EXPECT_FALSE(isSameSecret("abc", "ab"));
    EXPECT_FALSE(isSameSecret("", "a"));
}

TEST(Texts, endNothingInHtml)
{
    EXPECT_EQ(htmlText("<a href=\"x\">'&amp;'</a>"),
              "&lt;a href=&quot;x&quot;&gt;&#39;&amp;amp;&#39;&lt;/a&gt;");
    EXPECT_EQ(htmlText("Привет"), "Привет");
}

TEST(Texts, areCountedInCharacters)
{
    EXPECT_EQ(characterCount("плюс"), 4U);
    EXPECT_EQ(characterCount("\U0001F600"), 1U);
    EXPECT_EQ(characterCount(""), 0U);
    for (const auto *wrong : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xD0", "a\xFF"})
        EXPECT_EQ(characterCount(wrong), std::nullopt);
    EXPECT_EQ(firstCharacters("плюс", 2), "пл");
    EXPECT_EQ(firstCharacters("пл", 9), "пл");
}

TEST(Texts, controlCharactersAreSeen)
{
    EXPECT_TRUE(hasControlCharacters("a\nb"));
    EXPECT_TRUE(hasControlCharacters("\x7F"));
    EXPECT_TRUE(hasControlCharacters("\u0085"));
    EXPECT_FALSE(hasControlCharacters("Привет, \u00A0мир"));
}

TEST(MailAddress, isTakenInLowerCaseWithoutWhiteSpaceAround)
{
    EXPECT_EQ(mailAddress("  Student@Example.ORG\n"), "student@example.org");
    EXPECT_EQ(mailAddress("a.b+c_d-e'f@x-1.example.co"), "a.b+c_d-e'f@x-1.example.co");
}

TEST(MailAddress, isNothingElse)
{
    const std::string long64(64, 'a');
    EXPECT_TRUE(mailAddress(long64 + "@example.org"));
    EXPECT_FALSE(mailAddress(long64 + "a@example.org"));
    EXPECT_FALSE(mailAddress("a@" + std::string(64, 'b') + ".org"));
    std::string longest = "a@";
    while (longest.size() < 250)
        longest += "bcd.";
    EXPECT_TRUE(mailAddress(longest + "arpa"));
    EXPECT_FALSE(mailAddress(longest + "earpa"));
    for (const auto *wrong : {"",
                              "@",
                              "a@",
                              "@b.c",
                              "a@b",
                              "a@@b.c",
                              "a@b@c.d",
                              ".a@b.c",
                              "a.@b.c",
                              "a..b@c.d",
                              "a@.b.c",
                              "a@b.c.",
                              "a@b..c",
                              "a@-b.c",
                              "a@b-.c",
                              "a b@c.d",
                              "a@b c.d",
                              "a,b@c.d",
                              "<a@b.c>",
                              "a@b.c>",
                              "a@b.c\r\nRCPT TO:<x@y.z>",
                              "a\n@b.c",
                              "\"a\"@b.c",
                              "a@[127.0.0.1]",
                              "почта@example.org",
                              "a@пример.рф",
                              "a@b_c.d",
                              "a:b@c.d",
                              "a;b@c.d",
                              "a\\b@c.d",
                              "(a)b@c.d"})
        EXPECT_FALSE(mailAddress(wrong)) << wrong;
    EXPECT_FALSE(mailAddress(std::string("a\0@b.c", 6)));
}
