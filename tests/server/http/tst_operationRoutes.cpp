// What operators ask: does it run, can it work, and its figures.
#include "operationRoutes.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <prometheus/counter.h>
#include <prometheus/registry.h>
#include <stdexcept>

using namespace std::chrono_literals;
using namespace testing;
using boost::asio::awaitable;

namespace {

/// The routes over a callback whose answer the test chooses.
class Operations
{
public:
    explicit Operations(const OperationSettings &settings = {})
    {
        isUnderstood =
            addOperationRoutes(
                router, registry,
                [this]() -> awaitable<bool> {
                    ++asked;
                    boost::asio::steady_timer timer(co_await boost::asio::this_coro::executor, takes);
                    co_await timer.async_wait(boost::asio::use_awaitable);
                    if (fails)
                        throw std::runtime_error("no database");
                    co_return isReady;
                },
                settings)
                .has_value();
    }

    void ask(const std::string &path, const std::string &client = "127.0.0.1", HttpHeaders headers = {})
    {
        auto &request = requests.emplace_back(std::make_unique<HttpRequest>());
        request->method = "GET";
        request->path = path;
        request->clientAddress = client;
        request->headers = std::move(headers);
        boost::asio::co_spawn(context, router.answer(*request),
                              [this](const std::exception_ptr &, HttpResponse made) {
                                  last = std::move(made);
                                  statuses.push_back(last.status);
                              });
    }

    unsigned answer(const std::string &path, const std::string &client = "127.0.0.1",
                    HttpHeaders headers = {})
    {
        ask(path, client, std::move(headers));
        context.restart();
        context.run();
        return last.status;
    }

    boost::asio::io_context context;
    prometheus::Registry registry;
    Router router;
    bool isUnderstood = false;
    bool isReady = true;
    bool fails = false;
    std::chrono::milliseconds takes{0};
    int asked = 0;
    std::vector<std::unique_ptr<HttpRequest>> requests;
    std::vector<unsigned> statuses;
    HttpResponse last;
};

} // namespace

TEST(Health, isOkWhileTheProgramRuns)
{
    Operations operations;
    EXPECT_EQ(operations.answer("/healthz"), 200U);
    EXPECT_EQ(operations.last.body, "ok\n");
    EXPECT_EQ(operations.asked, 0);
}

TEST(Readiness, isWhatTheCallbackSays)
{
    OperationSettings settings;
    settings.readyFor = 0ms;
    Operations operations(settings);
    EXPECT_EQ(operations.answer("/readyz"), 200U);
    operations.isReady = false;
    EXPECT_EQ(operations.answer("/readyz"), 503U);
    operations.isReady = true;
    operations.fails = true;
    EXPECT_EQ(operations.answer("/readyz"), 503U);
    EXPECT_EQ(operations.asked, 3);
}

TEST(Readiness, isAskedOnceForAllWhoAsk)
{
    OperationSettings settings;
    settings.readyFor = 1h;
    Operations operations(settings);
    operations.takes = 20ms;
    for (int number = 0; number < 50; ++number)
        operations.ask("/readyz");
    EXPECT_EQ(operations.answer("/readyz"), 200U);
    EXPECT_EQ(operations.statuses, std::vector<unsigned>(51, 200U));
    operations.isReady = false;
    EXPECT_EQ(operations.answer("/readyz"), 200U) << "which is remembered";
    EXPECT_EQ(operations.asked, 1);
}

TEST(Readiness, isANoWhereTheCallbackTakesTooLong)
{
    OperationSettings settings;
    settings.readyTimeout = 10ms;
    settings.readyFor = 1h;
    Operations operations(settings);
    operations.takes = 1h;
    operations.ask("/readyz");
    operations.ask("/readyz");
    while (operations.statuses.size() < 2)
        operations.context.run_one();
    operations.ask("/readyz");
    while (operations.statuses.size() < 3)
        operations.context.run_one();
    EXPECT_EQ(operations.statuses, (std::vector<unsigned>{503, 503, 503}));
    EXPECT_EQ(operations.asked, 1) << "and not asked again while it hangs";
}

TEST(Metrics, areForThisMachineAndThoseWhoMay)
{
    OperationSettings settings;
    settings.metricsFrom = {"10.0.0.0/8"};
    Operations operations(settings);
    prometheus::BuildCounter().Name("made_total").Register(operations.registry).Add({}).Increment();
    EXPECT_EQ(operations.answer("/metrics"), 200U);
    EXPECT_THAT(operations.last.body, HasSubstr("\nmade_total 1\n"));
    EXPECT_EQ(operations.last.contentType, "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_EQ(operations.answer("/metrics", "::1"), 200U);
    EXPECT_EQ(operations.answer("/metrics", "10.1.2.3"), 200U);
    EXPECT_EQ(operations.answer("/metrics", "10.1.2.3", {{"X-Forwarded-For", "10.1.2.3"}}), 200U);
    EXPECT_EQ(operations.answer("/metrics", "203.0.113.7"), 404U);
    EXPECT_EQ(operations.answer("/metrics", ""), 404U);
    for (const auto *header : {"X-Forwarded-For", "Forwarded", "X-Real-IP", "Via"})
        EXPECT_EQ(operations.answer("/metrics", "127.0.0.1", {{header, "x"}}), 404U)
            << "a proxy that is not trusted makes everybody seem to be this machine";
    const auto hidden = operations.last.body;
    EXPECT_EQ(operations.answer("/no such path"), 404U);
    EXPECT_EQ(operations.last.body, hidden);
}

TEST(Metrics, areNotForNetworksThatMakeNoSense)
{
    OperationSettings settings;
    settings.metricsFrom = {"10.0.0.0/99"};
    EXPECT_FALSE(Operations(settings).isUnderstood);
}
