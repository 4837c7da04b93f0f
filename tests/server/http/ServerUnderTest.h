#pragma once

#include "HttpServer.h"
#include "RawClient.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/use_future.hpp>
#include <future>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>
#include <string>
#include <thread>
#include <utility>

/// A real server on a free port of this machine, with a thread of its own.
class ServerUnderTest
{
public:
    explicit ServerUnderTest(Router router, HttpServerSettings settings = {})
        : m_guard(m_context.get_executor())
    {
        settings.listen = {"127.0.0.1:0"};
        m_server =
            std::make_unique<HttpServer>(m_context, std::move(settings), std::move(router), m_registry);
        m_started = m_server->start();
        m_thread = std::thread([this] { m_context.run(); });
    }

    ~ServerUnderTest()
    {
        stop();
        m_guard.reset();
        m_context.stop();
        m_thread.join();
    }

    /// Waits until it has stopped.
    void stop() { beginStop().wait(); }

    std::future<void> beginStop()
    {
        return boost::asio::co_spawn(m_context, m_server->stop(), boost::asio::use_future);
    }

    bool isStarted() const { return m_started.has_value(); }
    std::uint16_t port() const { return m_server->ports().at(0); }
    RawClient client() const { return RawClient(port()); }
    boost::asio::io_context &context() { return m_context; }
    prometheus::Registry &registry() { return m_registry; }

    /// Sends it and reads until the server ends the connection.
    std::string answerTo(std::string_view bytes) const
    {
        auto raw = client();
        raw.send(bytes);
        return raw.readToEnd();
    }

    /// The value of a line such as `quorvel_http_connections`; "(none)" where there is none.
    std::string figure(const std::string &line) const
    {
        const auto text = "\n" + prometheus::TextSerializer().Serialize(m_registry.Collect());
        const auto place = text.find("\n" + line + " ");
        if (place == std::string::npos)
            return "(none)";
        const auto begin = place + line.size() + 2;
        return text.substr(begin, text.find('\n', begin) - begin);
    }

private:
    prometheus::Registry m_registry;
    boost::asio::io_context m_context;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_guard;
    std::unique_ptr<HttpServer> m_server;
    Result<> m_started;
    std::thread m_thread;
};
