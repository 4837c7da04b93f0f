#pragma once

#include "CoachService.h"
#include "HttpClient.h"
#include "chatAnswer.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/use_future.hpp>
#include <deque>
#include <vector>

/// Time that passes only where somebody waits.
struct FakeTime
{
    CoachTime::Instant now{};
    std::chrono::sys_seconds wallTime{std::chrono::seconds(1'800'000'000)};
    std::vector<std::chrono::milliseconds> sleeps;
    double chance = 0;

    CoachTime asTime()
    {
        return {[this] { return now; }, [this](std::chrono::milliseconds length) { return sleep(length); },
                [this] { return wallTime; }, [this] { return chance; }};
    }

private:
    boost::asio::awaitable<void> sleep(std::chrono::milliseconds length)
    {
        now += length;
        sleeps.push_back(length);
        co_return;
    }
};

/// An endpoint that answers as the test has written down; the last of it again and again.
class FakeEndpoint : public HttpClient
{
public:
    explicit FakeEndpoint(FakeTime &time)
        : m_time(time)
    {}

    void answers(std::string body) { answersStatus(200, {}, std::move(body)); }
    void answersStatus(unsigned status, HttpHeaders headers = {}, std::string body = "{}")
    {
        m_steps.push_back({{}, HttpAnswer{status, std::move(headers), std::move(body)}});
    }
    void isUnreachable() { m_steps.push_back({{}, Failure{"refused"}}); }
    void hangs() { m_steps.push_back({std::chrono::hours(1), Failure{"never told"}}); }
    /// The answer written down last is that much later.
    void takes(std::chrono::milliseconds length) { m_steps.back().takes = length; }

    void forget()
    {
        calls.clear();
        m_steps.clear();
    }

    boost::asio::awaitable<Result<HttpAnswer>> send(HttpCall call) override
    {
        calls.push_back(call);
        const auto step = m_steps.front();
        if (m_steps.size() > 1)
            m_steps.pop_front();
        if (step.takes >= call.timeout) {
            m_time.now += call.timeout;
            co_return Failure{"too late"};
        }
        m_time.now += step.takes;
        co_return step.answer;
    }

    std::vector<HttpCall> calls;

private:
    struct Step
    {
        std::chrono::milliseconds takes{0};
        Result<HttpAnswer> answer;
    };

    FakeTime &m_time;
    std::deque<Step> m_steps;
};

/// Runs a coroutine to its end.
template <class Value>
Value finish(boost::asio::awaitable<Value> work)
{
    boost::asio::io_context context;
    auto ended = boost::asio::co_spawn(context, std::move(work), boost::asio::use_future);
    context.run();
    return ended.get();
}
