// Sessions, codes, states and limits, each on every database, one instance and two at once.
#include "OAuthStates.h"
#include "RateLimits.h"
#include "Sessions.h"
#include "SignInCodes.h"
#include "TestClock.h"
#include "databaseTest.h"
#include "removeExpired.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using namespace std::chrono_literals;
using testing::Optional;

const std::string student = "student@example.org";
const std::string key(32, 'k');

/// What every store is tested with: one database, and a second instance of the service on it.
class StoreTest : public DatabaseTest
{
protected:
    TestClock m_clock;
    std::unique_ptr<Database> m_other = m_files.open();
};

class SessionsTest : public StoreTest
{
protected:
    std::string begin(const std::string &address = student)
    {
        return *await(m_sessions.begin(address, "email"));
    }
    std::optional<Account> find(const std::string &token) { return *await(m_sessions.find(token)); }

    Sessions m_sessions{*m_database, m_clock.source()};
};

class SignInCodesTest : public StoreTest
{
protected:
    std::string create() { return std::get<std::string>(*await(m_codes.create(student))); }
    SignInCodes::Verdict verify(const std::string &code)
    {
        return await(m_codes.verify(student, code))->verdict;
    }
    static std::string otherThan(const std::string &code) { return code == "000000" ? "000001" : "000000"; }

    SignInCodes m_codes{*m_database, m_clock.source(), key};
    SignInCodes m_otherCodes{*m_other, m_clock.source(), key};
};

class OAuthStatesTest : public StoreTest
{
protected:
    const OAuthAttempt m_attempt{"google", "verifier", "nonce"};
    OAuthStates m_states{*m_database, m_clock.source()};
    OAuthStates m_otherStates{*m_other, m_clock.source()};
};

class RateLimitsTest : public StoreTest
{
protected:
    std::optional<std::chrono::seconds> use(const std::string &name, int limit, std::chrono::seconds length)
    {
        return *await(m_limits.use(name, limit, length));
    }

    RateLimits m_limits{*m_database, m_clock.source()};
    RateLimits m_otherLimits{*m_other, m_clock.source()};
};

} // namespace

TEST_P(SessionsTest, areFoundByTheirTokenAlone)
{
    const auto token = begin();
    const auto account = find(token);
    ASSERT_TRUE(account);
    EXPECT_EQ(account->email, student);
    EXPECT_EQ(*await(Sessions(*m_other, m_clock.source()).find(token)), account);
    auto wrong = token;
    wrong[20] = wrong[20] == 'A' ? 'B' : 'A';
    for (const auto &other : {wrong, std::string(), token + 'A', token.substr(1), std::string(43, '%')})
        EXPECT_FALSE(find(other));
}

TEST_P(SessionsTest, areStoredAsHashesOnly)
{
    const auto token = begin();
    EXPECT_EQ(m_files.number("SELECT count(*) FROM sessions WHERE token_hash = '" + token + "'"), 0);
    EXPECT_EQ(m_files.number("SELECT count(*) FROM sessions WHERE length(token_hash) = 43"), 1);
}

TEST_P(SessionsTest, ofOneAddressBelongToOneAccount)
{
    const auto first = find(begin());
    const auto second = find(begin());
    const auto other = find(begin("other@example.org"));
    EXPECT_EQ(first, second);
    EXPECT_NE(first->id, other->id);
}

TEST_P(SessionsTest, areOverAfterTheirLifetime)
{
    const auto token = begin();
    m_clock.advance(Sessions::lifetime - 1s);
    EXPECT_TRUE(find(token));
    const auto unused = begin();
    m_clock.advance(Sessions::lifetime);
    EXPECT_FALSE(find(unused));
}

TEST_P(SessionsTest, areProlongedByUseOnceADay)
{
    const auto expiry = [this] { return m_files.number("SELECT max(expires_at) FROM sessions"); };
    const auto token = begin();
    const auto first = expiry();
    m_clock.advance(24h - 1s);
    find(token);
    EXPECT_EQ(expiry(), first);
    m_clock.advance(1s);
    find(token);
    EXPECT_EQ(expiry(), first + 24 * 60 * 60);
    m_clock.advance(1h);
    find(token);
    EXPECT_EQ(expiry(), first + 24 * 60 * 60);
}

TEST_P(SessionsTest, areRevokedByAddressOrAllAtOnce)
{
    const auto first = begin();
    const auto second = begin();
    const auto other = begin("other@example.org");
    EXPECT_EQ(*await(m_sessions.revoke(student)), 2);
    EXPECT_EQ(*await(m_sessions.revoke(student)), 0);
    EXPECT_FALSE(find(first));
    EXPECT_FALSE(find(second));
    EXPECT_TRUE(find(other));
    EXPECT_EQ(*await(m_sessions.revokeAll()), 1);
    EXPECT_FALSE(find(other));
}

TEST_P(SessionsTest, ofANewAddressBegunAtOnceMakeOneAccount)
{
    Sessions others(*m_other, m_clock.source());
    std::vector<boost::asio::awaitable<Result<std::string>>> tasks;
    for (int number = 0; number < 10; ++number) {
        tasks.push_back(m_sessions.begin(student, "email"));
        tasks.push_back(others.begin(student, "google"));
    }
    for (const auto &token : awaitAll(std::move(tasks)))
        EXPECT_TRUE(token.has_value());
    EXPECT_EQ(m_files.number("SELECT count(*) FROM accounts"), 1);
    EXPECT_EQ(m_files.number("SELECT count(*) FROM sessions"), 20);
}

TEST_P(SignInCodesTest, areRightOnce)
{
    const auto code = create();
    EXPECT_EQ(verify(code), SignInCodes::Verdict::Right);
    EXPECT_EQ(verify(code), SignInCodes::Verdict::Wrong);
}

TEST_P(SignInCodesTest, areWrongForAnotherAddressOrUnderAnotherKey)
{
    const auto code = create();
    EXPECT_EQ(await(m_codes.verify("other@example.org", code))->verdict, SignInCodes::Verdict::Wrong);
    SignInCodes foreign(*m_database, m_clock.source(), std::string(32, 'x'));
    EXPECT_EQ(await(foreign.verify(student, code))->verdict, SignInCodes::Verdict::Wrong);
    EXPECT_EQ(await(m_otherCodes.verify(student, code))->verdict, SignInCodes::Verdict::Right);
}

TEST_P(SignInCodesTest, areStoredNeitherPlainNorAsAPlainHash)
{
    const auto code = create();
    EXPECT_EQ(m_files.number("SELECT count(*) FROM sign_in_codes WHERE length(code_hash) = 43"), 1);
    EXPECT_EQ(m_files.number("SELECT count(*) FROM sign_in_codes WHERE code_hash LIKE '%" + code + "%'"), 0);
}

TEST_P(SignInCodesTest, areOverAfterTenMinutes)
{
    const auto first = create();
    m_clock.advance(SignInCodes::lifetime - 1s);
    EXPECT_EQ(verify(first), SignInCodes::Verdict::Right);
    const auto second = create();
    m_clock.advance(SignInCodes::lifetime);
    EXPECT_EQ(verify(second), SignInCodes::Verdict::Wrong);
}

TEST_P(SignInCodesTest, endAfterFiveWrongOnes)
{
    const auto first = create();
    for (int attempt = 0; attempt < 4; ++attempt)
        EXPECT_EQ(verify(otherThan(first)), SignInCodes::Verdict::Wrong);
    EXPECT_EQ(verify(first), SignInCodes::Verdict::Right);

    m_clock.advance(60s);
    const auto second = create();
    for (int attempt = 0; attempt < 5; ++attempt)
        EXPECT_EQ(verify(otherThan(second)), SignInCodes::Verdict::Wrong);
    EXPECT_EQ(verify(second), SignInCodes::Verdict::Wrong);
}

TEST_P(SignInCodesTest, areReplacedByANewOneAfterAMinute)
{
    const auto first = create();
    m_clock.advance(18s);
    const auto refused = *await(m_otherCodes.create(student));
    ASSERT_TRUE(std::holds_alternative<SignInCodes::TooSoon>(refused));
    EXPECT_EQ(std::get<SignInCodes::TooSoon>(refused).wait, 42s);
    m_clock.advance(42s);
    auto second = create();
    if (first != second) { // one in a million
        EXPECT_EQ(verify(first), SignInCodes::Verdict::Wrong);
    }
    EXPECT_EQ(verify(second), SignInCodes::Verdict::Right);
}

TEST_P(SignInCodesTest, waitAMinuteAfterARightOneToo)
{
    EXPECT_EQ(verify(create()), SignInCodes::Verdict::Right);
    EXPECT_TRUE(std::holds_alternative<SignInCodes::TooSoon>(*await(m_codes.create(student))));
}

TEST_P(SignInCodesTest, thatCouldNotBeSentAreForgotten)
{
    const auto code = create();
    EXPECT_TRUE(await(m_codes.discard(student)));
    EXPECT_EQ(verify(code), SignInCodes::Verdict::Wrong);
    create();
}

TEST_P(SignInCodesTest, mayBeAskedForAgainWhereTheClockWasSetBack)
{
    create();
    m_clock.advance(-10h);
    create();
}

TEST_P(SignInCodesTest, askedForAtOnceFromTwoInstancesAreOne)
{
    using Answer = Result<std::variant<std::string, SignInCodes::TooSoon>>;
    std::vector<boost::asio::awaitable<Answer>> tasks;
    for (int number = 0; number < 10; ++number) {
        tasks.push_back(m_codes.create(student));
        tasks.push_back(m_otherCodes.create(student));
    }
    const auto answers = awaitAll(std::move(tasks));
    EXPECT_EQ(std::count_if(
                  answers.begin(), answers.end(),
                  [](const Answer &answer) { return std::holds_alternative<std::string>(answer.value()); }),
              1);
}

TEST_P(SignInCodesTest, givenAtOnceToTwoInstancesAreRightOnce)
{
    const auto code = create();
    std::vector<boost::asio::awaitable<Result<SignInCodes::Verification>>> tasks;
    for (int number = 0; number < 2; ++number) {
        tasks.push_back(m_codes.verify(student, code));
        tasks.push_back(m_otherCodes.verify(student, code));
    }
    const auto verified = awaitAll(std::move(tasks));
    EXPECT_EQ(std::count_if(verified.begin(), verified.end(),
                            [](const auto &one) { return one->verdict == SignInCodes::Verdict::Right; }),
              1);
}

TEST_P(SignInCodesTest, stayWhereWhatTheyAreForFails)
{
    const auto code = create();
    const auto failing = [](DatabaseConnection &) { throw std::runtime_error("the disk is full"); };
    EXPECT_FALSE(await(m_codes.verify(student, code, failing)));
    EXPECT_EQ(verify(code), SignInCodes::Verdict::Right);
}

TEST_P(SignInCodesTest, guessedAtOnceOnTwoInstancesAreComparedFiveTimes)
{
    const auto code = create();
    std::vector<boost::asio::awaitable<Result<SignInCodes::Verification>>> tasks;
    for (int number = 0; number < 20; ++number) {
        tasks.push_back(m_codes.verify(student, otherThan(code)));
        tasks.push_back(m_otherCodes.verify(student, otherThan(code)));
    }
    int compared = 0;
    for (const auto &verified : awaitAll(std::move(tasks))) {
        EXPECT_EQ(verified->verdict, SignInCodes::Verdict::Wrong);
        compared += verified->isCompared ? 1 : 0;
    }
    EXPECT_EQ(compared, SignInCodes::attempts);
    EXPECT_EQ(m_files.number("SELECT attempts FROM sign_in_codes"), SignInCodes::attempts);
    EXPECT_EQ(verify(code), SignInCodes::Verdict::Wrong);
}

TEST_P(OAuthStatesTest, comeBackOnce)
{
    ASSERT_TRUE(await(m_states.put("state", m_attempt)));
    EXPECT_EQ(m_files.number("SELECT count(*) FROM oauth_states WHERE state_hash = 'state'"), 0);
    EXPECT_EQ(*await(m_otherStates.take("other", "google")), std::nullopt);
    EXPECT_THAT(*await(m_otherStates.take("state", "google")), Optional(m_attempt));
    EXPECT_EQ(*await(m_states.take("state", "google")), std::nullopt);
}

TEST_P(OAuthStatesTest, areSpentByTheWrongProvider)
{
    ASSERT_TRUE(await(m_states.put("state", m_attempt)));
    EXPECT_EQ(*await(m_states.take("state", "yandex")), std::nullopt);
    EXPECT_EQ(*await(m_states.take("state", "google")), std::nullopt);
}

TEST_P(OAuthStatesTest, areOverAfterTenMinutes)
{
    ASSERT_TRUE(await(m_states.put("first", m_attempt)));
    ASSERT_TRUE(await(m_states.put("second", m_attempt)));
    m_clock.advance(OAuthStates::lifetime - 1s);
    EXPECT_TRUE(*await(m_states.take("first", "google")));
    m_clock.advance(1s);
    EXPECT_FALSE(*await(m_states.take("second", "google")));
}

TEST_P(OAuthStatesTest, areTakenOnceByTwoInstancesAtTheSameTime)
{
    ASSERT_TRUE(await(m_states.put("state", m_attempt)));
    std::vector<boost::asio::awaitable<Result<std::optional<OAuthAttempt>>>> tasks;
    for (int number = 0; number < 10; ++number) {
        tasks.push_back(m_states.take("state", "google"));
        tasks.push_back(m_otherStates.take("state", "google"));
    }
    const auto taken = awaitAll(std::move(tasks));
    EXPECT_EQ(std::count_if(taken.begin(), taken.end(),
                            [](const auto &attempt) { return attempt.value().has_value(); }),
              1);
}

TEST_P(RateLimitsTest, countUpToTheLimitOfEachWindow)
{
    m_clock.advance(10s);
    EXPECT_EQ(use("a", 2, 60s), std::nullopt);
    EXPECT_EQ(use("a", 2, 60s), std::nullopt);
    EXPECT_EQ(use("a", 2, 60s), 50s);
    EXPECT_EQ(use("b", 2, 60s), std::nullopt);
    EXPECT_EQ(use("a", 2, 3600s), std::nullopt);
    m_clock.advance(49s);
    EXPECT_EQ(use("a", 2, 60s), 1s);
    m_clock.advance(1s);
    EXPECT_EQ(use("a", 2, 60s), std::nullopt);
}

TEST_P(RateLimitsTest, ofNothingLetNothingThrough)
{
    EXPECT_EQ(use("a", 0, 60s), 60s);
}

TEST_P(RateLimitsTest, takeBackWhatShouldNotCount)
{
    EXPECT_TRUE(await(m_limits.giveBack("a", 60s))); // nothing was used: nothing is gained
    EXPECT_EQ(use("a", 1, 60s), std::nullopt);
    EXPECT_TRUE(await(m_otherLimits.giveBack("a", 60s)));
    EXPECT_EQ(use("a", 1, 60s), std::nullopt);
    EXPECT_EQ(use("a", 1, 60s), 60s);
}

TEST_P(RateLimitsTest, holdForTwoInstancesTogether)
{
    std::vector<boost::asio::awaitable<Result<std::optional<std::chrono::seconds>>>> tasks;
    for (int number = 0; number < 20; ++number) {
        tasks.push_back(m_limits.use("a", 7, 60s));
        tasks.push_back(m_otherLimits.use("a", 7, 60s));
    }
    const auto waits = awaitAll(std::move(tasks));
    EXPECT_EQ(std::count_if(waits.begin(), waits.end(), [](const auto &wait) { return !wait.value(); }), 7);
}

TEST_P(StoreTest, removesWhatIsOverAndNothingElse)
{
    Sessions sessions(*m_database, m_clock.source());
    SignInCodes codes(*m_database, m_clock.source(), key);
    OAuthStates states(*m_database, m_clock.source());
    RateLimits limits(*m_database, m_clock.source());
    const auto over = *await(sessions.begin(student, "email"));
    await(codes.create(student));
    await(states.put("state", {"google", "v", "n"}));
    await(limits.use("a", 1, 60s));
    EXPECT_EQ(*await(removeExpired(*m_other, m_clock.now())), 0);
    m_clock.advance(Sessions::lifetime);
    const auto valid = *await(sessions.begin(student, "email"));
    await(codes.create("other@example.org"));
    EXPECT_EQ(*await(removeExpired(*m_other, m_clock.now())), 4);
    EXPECT_EQ(*await(removeExpired(*m_other, m_clock.now())), 0);
    EXPECT_FALSE(await(sessions.find(over)).value());
    EXPECT_TRUE(await(sessions.find(valid)).value());
}

QUORVEL_ON_EVERY_ENGINE(StoreTest);
QUORVEL_ON_EVERY_ENGINE(SessionsTest);
QUORVEL_ON_EVERY_ENGINE(SignInCodesTest);
QUORVEL_ON_EVERY_ENGINE(OAuthStatesTest);
QUORVEL_ON_EVERY_ENGINE(RateLimitsTest);
