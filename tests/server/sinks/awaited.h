#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/use_future.hpp>

/// Runs a coroutine to its end on a thread of its own context: this one.
template <class Value>
Value awaited(boost::asio::awaitable<Value> work)
{
    boost::asio::io_context context;
    auto future = boost::asio::co_spawn(context, std::move(work), boost::asio::use_future);
    context.run();
    return future.get();
}
