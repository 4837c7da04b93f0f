// One fetch for all who wait, whatever becomes of it.
#include "CachedFetch.h"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <gmock/gmock.h>
#include <vector>

namespace asio = boost::asio;
using testing::ElementsAre;

namespace {

/// A fetch that waits until the test lets it go.
struct CachedFetchTest : testing::Test
{
    asio::io_context context;
    asio::steady_timer gate{context, asio::steady_timer::time_point::max()};
    int fetches = 0;
    bool works = true;
    std::vector<int> seen; ///< -1 for a failure
    CachedFetch<int> cached{[this] { return fetch(); }};

    asio::awaitable<OAuthResult<int>> fetch()
    {
        ++fetches;
        boost::system::error_code ignored;
        co_await gate.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
        co_await asio::post(asio::use_awaitable); // throws where this coroutine is given up
        if (!works)
            co_return OAuthFault{{}, "no"};
        co_return fetches;
    }
    auto note()
    {
        return [this](const std::exception_ptr &error, const OAuthResult<CachedFetch<int>::Kept> &value) {
            seen.push_back(!error && value ? **value : -1);
        };
    }
    void ask() { asio::co_spawn(context, cached.renewed(), note()); }
    void proceed()
    {
        context.restart();
        context.poll();
    }
    void open()
    {
        proceed();
        gate.cancel();
        proceed();
    }
};

} // namespace

TEST_F(CachedFetchTest, isOneForAll)
{
    ask();
    ask();
    ask();
    open();
    EXPECT_THAT(seen, ElementsAre(1, 1, 1));
    EXPECT_EQ(*cached.kept(), 1);
}

TEST_F(CachedFetchTest, keepsWhatItHadWhereItFails)
{
    ask();
    open();
    works = false;
    ask();
    ask();
    open();
    EXPECT_THAT(seen, ElementsAre(1, -1, -1));
    EXPECT_EQ(fetches, 2);
    EXPECT_EQ(*cached.kept(), 1);
    works = true;
    ask();
    open();
    EXPECT_THAT(seen, ElementsAre(1, -1, -1, 3));
}

TEST_F(CachedFetchTest, isTakenOverWhereWhoeverBeganItGivesUp)
{
    asio::cancellation_signal giveUp;
    asio::co_spawn(context, cached.renewed(), asio::bind_cancellation_slot(giveUp.slot(), note()));
    ask();
    proceed();
    giveUp.emit(asio::cancellation_type::terminal);
    proceed();
    EXPECT_THAT(seen, ElementsAre(-1));
    open();
    EXPECT_THAT(seen, ElementsAre(-1, 2));
}
