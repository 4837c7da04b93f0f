// What an ID token must be before anything in it counts.
#include "TestKeys.h"
#include "idToken.h"
#include "secrets.h"

#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

const std::chrono::sys_seconds now{std::chrono::seconds(1'800'000'000)};

IdTokenWanted wanted()
{
    return {"https://issuer.example", "our-client", "nonce", now};
}

boost::json::object goodClaims()
{
    const auto seconds = now.time_since_epoch().count();
    return {{"iss", "https://issuer.example"},
            {"aud", "our-client"},
            {"exp", seconds + 3600},
            {"iat", seconds},
            {"nonce", "nonce"},
            {"sub", "17"},
            {"email", "Student@Example.ORG"},
            {"email_verified", true}};
}

OAuthResult<std::string> read(const std::string &token, const SigningKeys &keys)
{
    const auto parsed = IdToken::parse(token);
    if (!parsed)
        return parsed.error();
    const auto key = keys.find(parsed->keyId(), parsed->algorithm());
    if (!key)
        return OAuthFault{{}, "unknown key"};
    return parsed->verifiedAddress(key, wanted());
}

SigningKeys keysOf(const boost::json::array &list)
{
    return *SigningKeys::parse({{"keys", list}});
}

const SigningKeys &knownKeys()
{
    static const auto keys = keysOf({firstKey().publicPart(), ellipticKey().publicPart()});
    return keys;
}

OAuthResult<std::string> readClaims(const boost::json::object &claims)
{
    return read(firstKey().sign(claims), knownKeys());
}

struct Change
{
    const char *name;
    boost::json::value value; ///< null: the claim is left out
    const char *reason;
    unsigned status = 502;
};

} // namespace

TEST(IdToken, tellsTheVerifiedAddress)
{
    EXPECT_EQ(*read(firstKey().sign(goodClaims()), knownKeys()), "student@example.org");
    EXPECT_EQ(*read(ellipticKey().sign(goodClaims()), knownKeys()), "student@example.org");
}

TEST(IdToken, mayWriteTheSameInOtherWays)
{
    const auto seconds = now.time_since_epoch().count();
    for (const auto &[name, value] :
         std::vector<std::pair<const char *, boost::json::value>>{{"email_verified", "true"},
                                                                  {"aud", boost::json::array{"our-client"}},
                                                                  {"azp", "our-client"},
                                                                  {"exp", seconds - 59},
                                                                  {"exp", double(seconds) + 0.5},
                                                                  {"iat", seconds + 60},
                                                                  {"nbf", seconds + 60}}) {
        auto claims = goodClaims();
        claims[name] = value;
        EXPECT_TRUE(readClaims(claims)) << name << ' ' << value;
    }
    auto claims = goodClaims();
    claims["aud"] = {"another", "our-client"};
    claims["azp"] = "our-client";
    EXPECT_TRUE(readClaims(claims));
}

TEST(IdToken, isNotTakenWithAnyOtherClaim)
{
    const auto seconds = now.time_since_epoch().count();
    const std::vector<Change> changes{
        {"iss", nullptr, "issuer"},
        {"iss", "https://issuer.example/", "issuer"},
        {"iss", "https://evil.example", "issuer"},
        {"aud", nullptr, "client"},
        {"aud", "another", "client"},
        {"aud", boost::json::array{"another"}, "client"},
        {"aud", boost::json::array{}, "client"},
        {"aud", boost::json::array{"our-client", "another"}, "client"},
        {"azp", "another", "client"},
        {"azp", 1, "client"},
        {"nonce", nullptr, "another sign-in"},
        {"nonce", "nonce2", "another sign-in"},
        {"nonce", "", "another sign-in"},
        {"sub", nullptr, "nobody"},
        {"sub", "", "nobody"},
        {"exp", nullptr, "when"},
        {"exp", std::to_string(seconds + 3600).c_str(), "when"},
        {"exp", seconds - 60, "over"},
        {"iat", nullptr, "when"},
        {"iat", seconds + 61, "future"},
        {"nbf", seconds + 61, "future"},
        {"email_verified", nullptr, "verified", 400},
        {"email_verified", false, "verified", 400},
        {"email_verified", "false", "verified", 400},
        {"email_verified", 1, "verified", 400},
        {"email", nullptr, "verified", 400},
        {"email", "no address", "verified", 400},
        {"email", boost::json::array{"student@example.org"}, "verified", 400},
        {"email", "a@b.c\r\nBcc: x@y.z", "verified", 400},
    };
    for (const auto &change : changes) {
        auto claims = goodClaims();
        if (change.value.is_null())
            claims.erase(change.name);
        else
            claims[change.name] = change.value;
        const auto result = readClaims(claims);
        ASSERT_FALSE(result) << change.name << ' ' << change.value;
        EXPECT_THAT(result.error().reason, HasSubstr(change.reason)) << change.name << ' ' << change.value;
        EXPECT_EQ(result.error().refusal.status, change.status) << change.name << ' ' << change.value;
    }
}

TEST(IdToken, isNotTakenWithoutASignature)
{
    const auto header = base64url(R"({"alg":"none","kid":"first"})");
    const auto content = base64url(boost::json::serialize(goodClaims()));
    for (const auto &token :
         {header + '.' + content + '.', header + '.' + content, header + '.' + content + ".AAAA"})
        EXPECT_FALSE(IdToken::parse(token)) << token;
}

TEST(IdToken, isNotTakenSignedWithThePublicKeyAsASecret)
{
    const auto secret = boost::json::serialize(firstKey().publicPart());
    const auto modulus = std::string(firstKey().publicPart().at("n").as_string());
    for (const auto &bytes : {secret, modulus}) {
        const auto token =
            TestKey::shared("first", bytes)
                .sign({{"alg", "HS256"}, {"kid", "first"}}, boost::json::serialize(goodClaims()));
        const auto parsed = IdToken::parse(token);
        ASSERT_FALSE(parsed);
        EXPECT_THAT(parsed.error().reason, HasSubstr("signed in a way"));
    }
}

TEST(IdToken, isNotTakenWithAnotherAlgorithmOfTheSameKey)
{
    for (const auto *algorithm : {"RS512", "PS256"})
        EXPECT_FALSE(IdToken::parse(
            firstKey().sign({{"alg", algorithm}, {"kid", "first"}}, boost::json::serialize(goodClaims()))));
}

TEST(IdToken, isNotTakenSignedByAnyoneElse)
{
    const auto forged = TestKey::rsa("first").sign(goodClaims());
    const auto result = read(forged, knownKeys());
    ASSERT_FALSE(result);
    EXPECT_THAT(result.error().reason, HasSubstr("signature"));
}

TEST(IdToken, isNotTakenWithAnythingChanged)
{
    const auto token = firstKey().sign(goodClaims());
    auto other = goodClaims();
    other["email"] = "victim@example.org";
    const auto first = token.find('.');
    const auto second = token.find('.', first + 1);
    const auto swapped =
        token.substr(0, first + 1) + base64url(boost::json::serialize(other)) + token.substr(second);
    EXPECT_THAT(read(swapped, knownKeys()).error().reason, HasSubstr("signature"));
    // Its own key cannot be brought along either.
    const auto stranger = TestKey::rsa("first");
    const auto carried = stranger.sign({{"alg", "RS256"}, {"kid", "first"}, {"jwk", stranger.publicPart()}},
                                       boost::json::serialize(goodClaims()));
    EXPECT_THAT(read(carried, knownKeys()).error().reason, HasSubstr("signature"));
}

TEST(IdToken, isNotTakenWithExtensionsThatMustBeUnderstood)
{
    const auto token = firstKey().sign({{"alg", "RS256"}, {"kid", "first"}, {"crit", {"x"}}, {"x", "y"}},
                                       boost::json::serialize(goodClaims()));
    EXPECT_FALSE(IdToken::parse(token));
}

TEST(IdToken, isNothingElse)
{
    for (const auto &text :
         {std::string(), std::string("a"), std::string("a.b.c"), std::string(".."), std::string("...."),
          std::string(IdToken::longest + 1, 'a'), base64url("{}") + ".e30.e30",
          base64url(R"({"alg":"RS256"})") + ".e30." + std::string("\0", 1)})
        EXPECT_FALSE(IdToken::parse(text)) << text.substr(0, 50);
    const auto text = firstKey().sign({{"alg", "RS256"}, {"kid", "first"}}, "no JSON");
    EXPECT_THAT(read(text, knownKeys()).error().reason, HasSubstr("no JSON object"));
    const auto array = firstKey().sign({{"alg", "RS256"}, {"kid", "first"}}, "[]");
    EXPECT_THAT(read(array, knownKeys()).error().reason, HasSubstr("no JSON object"));
}

TEST(SigningKeys, areFoundByIdAndAlgorithm)
{
    EXPECT_TRUE(knownKeys().find("first", "RS256"));
    EXPECT_TRUE(knownKeys().find("elliptic", "ES256"));
    EXPECT_FALSE(knownKeys().find("first", "ES256"));
    EXPECT_FALSE(knownKeys().find("third", "RS256"));
    EXPECT_FALSE(knownKeys().find("", "RS256")) << "there are two";
    EXPECT_TRUE(keysOf({firstKey().publicPart()}).find("", "RS256")) << "there is one only";
    EXPECT_FALSE(keysOf({firstKey().publicPart()}).find("", "ES256"));
}

TEST(SigningKeys, areOnlyThoseThatAreMeantForIt)
{
    const auto with = [](const char *name, const char *value) {
        auto key = firstKey().publicPart();
        key[name] = value;
        return key;
    };
    for (const auto &key : {with("use", "enc"), with("alg", "RS512"), with("alg", "HS256"),
                            with("kty", "oct"), with("n", "AQAB"), TestKey::rsa("weak", 1024).publicPart()}) {
        EXPECT_FALSE(SigningKeys::parse({{"keys", {key}}})) << boost::json::object(key);
        const auto keys = keysOf({key, 1, nullptr, ellipticKey().publicPart()});
        EXPECT_FALSE(keys.find("first", "RS256"));
        EXPECT_TRUE(keys.find("elliptic", "ES256"));
    }
    EXPECT_TRUE(SigningKeys::parse({{"keys", {with("use", "sig")}}}));
    EXPECT_TRUE(SigningKeys::parse({{"keys", {with("alg", "RS256")}}}));
}

TEST(SigningKeys, areNoneInAnythingElse)
{
    for (const auto &set : {boost::json::object{}, boost::json::object{{"keys", boost::json::object{}}},
                            boost::json::object{{"keys", boost::json::array{}}},
                            boost::json::object{{"keys", boost::json::array(33, firstKey().publicPart())}}})
        EXPECT_FALSE(SigningKeys::parse(set));
}
