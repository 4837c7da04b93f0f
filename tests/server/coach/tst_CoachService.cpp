// How often the endpoint is asked, how long is waited in between, and what comes of its faults.
#include "CoachService.h"
#include "FakeEndpoint.h"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>
#include <sstream>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr auto isGood = std::nullopt;
const SuggestionRequest maths{"derivatives", Language::English, "3 cards"};

class CoachServiceTest : public testing::Test
{
protected:
    CoachServiceTest()
        : endpoint(time)
    {
        settings.url = "https://model.example/v1/chat/completions";
        settings.key = "endpoint-key";
        settings.model = "some-model";
    }

    CoachService &service()
    {
        if (!m_service)
            m_service.emplace(settings, endpoint, registry, time.asTime());
        return *m_service;
    }

    /// Asks for a suggestion. How it ended; none: well.
    std::optional<CoachFault> ask()
    {
        const auto ended = finish(service().suggest(maths));
        const auto *const fault = std::get_if<CoachFault>(&ended);
        return fault != nullptr ? std::optional(*fault) : std::nullopt;
    }

    /// The figure of that outcome.
    double counted(const std::string &outcome)
    {
        for (const auto &family : registry.Collect())
            for (const auto &metric : family.metric)
                if (family.name == "quorvel_coach_calls_total" && metric.label.front().value == outcome)
                    return metric.counter.value;
        return -1;
    }

    FakeTime time;
    CoachSettings settings;
    FakeEndpoint endpoint;
    prometheus::Registry registry;

private:
    std::optional<CoachService> m_service;
};

} // namespace

TEST_F(CoachServiceTest, passesAGoodAnswerOn)
{
    endpoint.answers(chatAnswer(goodContent));
    const auto ended = finish(service().suggest(maths));
    ASSERT_TRUE(std::holds_alternative<Suggestion>(ended));
    EXPECT_EQ(std::get<Suggestion>(ended).message, "Begin with the rules.");
    EXPECT_EQ(endpoint.calls.size(), 1U);
    EXPECT_EQ(counted("ok"), 1);
}

TEST_F(CoachServiceTest, sendsTheKeyAndTheBodyAndNothingElse)
{
    endpoint.answers(chatAnswer(goodContent));
    ask();
    const auto &call = endpoint.calls.at(0);
    EXPECT_EQ(call.method, "POST");
    EXPECT_EQ(call.url, settings.url);
    EXPECT_EQ(call.headers, (HttpHeaders{{"Content-Type", "application/json"},
                                         {"Accept", "application/json"},
                                         {"Authorization", "Bearer endpoint-key"}}));
    EXPECT_EQ(call.body, chatBody(maths, "some-model"));
    EXPECT_EQ(call.timeout, 50s);
}

TEST_F(CoachServiceTest, sendsNoKeyWhereThereIsNone)
{
    settings.key.clear();
    endpoint.answers(chatAnswer(goodContent));
    EXPECT_EQ(ask(), isGood);
    EXPECT_EQ(endpoint.calls.at(0).headers.size(), 2U);
}

TEST_F(CoachServiceTest, asksNobodyWhereNoEndpointIsNamed)
{
    settings.url.clear();
    EXPECT_EQ(service().refusal(), CoachFault::NotConfigured);
    EXPECT_EQ(ask(), CoachFault::NotConfigured);
    EXPECT_THAT(endpoint.calls, IsEmpty());
}

TEST_F(CoachServiceTest, asksOnceMoreAfterAnAnswerOfNoUse)
{
    endpoint.answers(chatAnswer("Sure! Here is your plan."));
    endpoint.answers(chatAnswer(goodContent));
    EXPECT_EQ(ask(), isGood);
    EXPECT_EQ(endpoint.calls.size(), 2U);
}

TEST_F(CoachServiceTest, asksNoThirdTimeAfterAnswersOfNoUse)
{
    for (const auto &useless : {std::string("<html>"), chatAnswer("Sure!"), chatAnswer("{}")}) {
        endpoint.forget();
        endpoint.answers(useless);
        EXPECT_EQ(ask(), CoachFault::UnusableAnswer) << useless;
        EXPECT_EQ(endpoint.calls.size(), 2U) << useless;
    }
    EXPECT_EQ(counted("unusable_answer"), 3);
}

TEST_F(CoachServiceTest, countsAnswersOfNoUseApartFromOtherFaults)
{
    endpoint.answersStatus(500);
    endpoint.answers(chatAnswer("Sure!"));
    endpoint.answersStatus(500);
    endpoint.answers(chatAnswer(goodContent));
    EXPECT_EQ(ask(), isGood);
}

TEST_F(CoachServiceTest, asksNotAgainWhereTheEndpointWillNotHaveUs)
{
    for (const unsigned status : {301U, 400U, 401U, 403U, 404U, 422U}) {
        endpoint.forget();
        endpoint.answersStatus(status);
        EXPECT_EQ(ask(), CoachFault::Misconfigured) << status;
        EXPECT_EQ(endpoint.calls.size(), 1U) << status;
    }
}

TEST_F(CoachServiceTest, tellsTheOperatorOnceAMinuteWhatOnlyTheOperatorCanChange)
{
    std::ostringstream log;
    const auto usual = spdlog::default_logger();
    spdlog::set_default_logger(
        std::make_shared<spdlog::logger>("", std::make_shared<spdlog::sinks::ostream_sink_st>(log)));
    const auto linesAfter = [&](std::chrono::seconds pause) {
        time.now += pause;
        log.str({});
        ask();
        const auto text = log.str();
        EXPECT_EQ(text.find(settings.key), std::string::npos) << text;
        return std::count(text.begin(), text.end(), '\n');
    };
    endpoint.answersStatus(401, {}, "Incorrect API key provided: " + settings.key);
    EXPECT_EQ(linesAfter(0s), 1);
    EXPECT_EQ(linesAfter(59s), 0);
    EXPECT_EQ(linesAfter(1s), 1);
    spdlog::set_default_logger(usual);
}

TEST_F(CoachServiceTest, asksAgainAfterFaultsThatPass)
{
    for (const unsigned status : {408U, 429U, 500U, 502U, 503U}) {
        endpoint.forget();
        endpoint.answersStatus(status);
        endpoint.answers(chatAnswer(goodContent));
        EXPECT_EQ(ask(), isGood) << status;
    }
    endpoint.forget();
    endpoint.isUnreachable();
    endpoint.answers(chatAnswer(goodContent));
    EXPECT_EQ(ask(), isGood);
}

TEST_F(CoachServiceTest, doublesThePauseUntilItGivesUp)
{
    endpoint.answersStatus(500);
    EXPECT_EQ(ask(), CoachFault::Unreachable);
    EXPECT_EQ(endpoint.calls.size(), 5U);
    EXPECT_THAT(time.sleeps, ElementsAre(250ms, 500ms, 1s, 2s));
}

TEST_F(CoachServiceTest, leavesHalfOfThePauseToChance)
{
    time.chance = 0.5;
    endpoint.isUnreachable();
    EXPECT_EQ(ask(), CoachFault::Unreachable);
    EXPECT_THAT(time.sleeps, ElementsAre(375ms, 750ms, 1500ms, 3s));
}

TEST_F(CoachServiceTest, waitsAsLongAsTheEndpointAsks)
{
    endpoint.answersStatus(429, {{"Retry-After", "7"}});
    endpoint.answersStatus(503, {{"Retry-After", "Fri, 15 Jan 2027 08:00:09 GMT"}}); // 9 s after wallTime
    endpoint.answers(chatAnswer(goodContent));
    EXPECT_EQ(ask(), isGood);
    EXPECT_THAT(time.sleeps, ElementsAre(7250ms, 9500ms));
}

TEST_F(CoachServiceTest, waitsAsUsualWhereTheEndpointAsksForNonsense)
{
    endpoint.answersStatus(429, {{"Retry-After", "in a while"}});
    endpoint.answers(chatAnswer(goodContent));
    EXPECT_EQ(ask(), isGood);
    EXPECT_THAT(time.sleeps, ElementsAre(250ms));
}

TEST_F(CoachServiceTest, givesUpAtOnceWhereTheEndpointAsksForTooLong)
{
    endpoint.answersStatus(429, {{"Retry-After", "49"}});
    EXPECT_EQ(ask(), CoachFault::Overloaded);
    EXPECT_EQ(endpoint.calls.size(), 1U);
    EXPECT_THAT(time.sleeps, IsEmpty());
}

TEST_F(CoachServiceTest, asksAgainWithinWhatIsLeft)
{
    endpoint.answersStatus(500);
    endpoint.takes(20s);
    endpoint.hangs();
    const auto begin = time.now;
    EXPECT_EQ(ask(), CoachFault::TimedOut);
    ASSERT_EQ(endpoint.calls.size(), 2U);
    EXPECT_EQ(endpoint.calls.at(1).timeout, 50s - 20s - 250ms);
    EXPECT_EQ(time.now - begin, 50s);
    EXPECT_EQ(counted("timed_out"), 1);
}

TEST_F(CoachServiceTest, beginsNoTryThatCannotEnd)
{
    endpoint.answersStatus(500);
    endpoint.takes(49s);
    EXPECT_EQ(ask(), CoachFault::Unreachable);
    EXPECT_EQ(endpoint.calls.size(), 1U);
}

TEST_F(CoachServiceTest, takesAnAnswerJustInTime)
{
    endpoint.answers(chatAnswer(goodContent));
    endpoint.takes(49'999ms);
    EXPECT_EQ(ask(), isGood);
}

TEST_F(CoachServiceTest, refusesAtOnceWhatIsTooMuchAtATime)
{
    class Waiting : public HttpClient
    {
    public:
        explicit Waiting(boost::asio::io_context &context)
            : m_released(context, CoachTime::Instant::max())
        {}
        boost::asio::awaitable<Result<HttpAnswer>> send(HttpCall /*call*/) override
        {
            ++asked;
            boost::system::error_code ended;
            co_await m_released.async_wait(boost::asio::redirect_error(boost::asio::use_awaitable, ended));
            co_return HttpAnswer{200, {}, chatAnswer(goodContent)};
        }
        void release() { m_released.cancel(); }
        int asked = 0;

    private:
        boost::asio::steady_timer m_released;
    };
    boost::asio::io_context context;
    Waiting waiting(context);
    settings.atOnce = 2;
    CoachService coach(settings, waiting, registry, time.asTime());
    const auto begin = [&] {
        return boost::asio::co_spawn(context, coach.suggest(maths), boost::asio::use_future);
    };

    auto first = begin();
    auto second = begin();
    context.poll();
    EXPECT_EQ(waiting.asked, 2);
    auto third = begin();
    context.poll();
    ASSERT_EQ(third.wait_for(0s), std::future_status::ready);
    EXPECT_EQ(std::get<CoachFault>(third.get()), CoachFault::Busy);
    EXPECT_EQ(waiting.asked, 2);

    waiting.release();
    context.poll();
    EXPECT_TRUE(std::holds_alternative<Suggestion>(first.get()));
    EXPECT_TRUE(std::holds_alternative<Suggestion>(second.get()));
    EXPECT_EQ(coach.refusal(), std::nullopt);
}
