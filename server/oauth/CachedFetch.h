#pragma once

#include "OAuthFault.h"
#include "intoError.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// Something that is fetched from elsewhere, kept, and fetched once only however many wait for it. What fails
/// is not kept: those who waited for it fail with it, the next one tries again. For one thread.
template <class Value>
class CachedFetch
{
public:
    using Kept = std::shared_ptr<const Value>;
    using Fetch = std::function<boost::asio::awaitable<OAuthResult<Value>>()>;

    explicit CachedFetch(Fetch fetch)
        : m_fetch(std::move(fetch))
    {}

    /// What is kept; null before the first fetch.
    const Kept &kept() const { return m_kept; }

    /// What one fetch brings: that under way, or a new one.
    boost::asio::awaitable<OAuthResult<Kept>> renewed()
    {
        if (m_underWay)
            co_return co_await joined(m_underWay);
        const auto executor = co_await boost::asio::this_coro::executor;
        const auto fetch = std::make_shared<UnderWay>(executor);
        m_underWay = fetch;
        const Ending ending{*this, fetch}; // also where this coroutine is given up
        auto value = co_await m_fetch();
        if (value) {
            m_kept = std::make_shared<const Value>(*std::move(value));
            fetch->outcome.emplace(m_kept);
        } else {
            fetch->outcome.emplace(value.error());
        }
        co_return *fetch->outcome;
    }

private:
    struct UnderWay
    {
        explicit UnderWay(const boost::asio::any_io_executor &executor)
            : ended(executor, boost::asio::steady_timer::time_point::max())
        {}

        boost::asio::steady_timer ended; ///< cancelled then
        std::optional<OAuthResult<Kept>> outcome;
    };

    struct Ending
    {
        CachedFetch &owner;
        std::shared_ptr<UnderWay> fetch;

        ~Ending()
        {
            owner.m_underWay.reset();
            fetch->ended.cancel();
        }
    };

    boost::asio::awaitable<OAuthResult<Kept>> joined(std::shared_ptr<UnderWay> fetch)
    {
        boost::system::error_code ignored;
        co_await fetch->ended.async_wait(into(ignored));
        if (fetch->outcome)
            co_return *fetch->outcome;
        co_return co_await renewed(); // whoever fetched was given up
    }

    Fetch m_fetch;
    Kept m_kept;
    std::shared_ptr<UnderWay> m_underWay;
};
