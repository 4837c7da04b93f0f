#include "HttpServer.h"

#include "Connection.h"
#include "httpRefusals.h"
#include "intoError.h"
#include "responseBytes.h"
#include "textChecks.h"

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <charconv>
#include <spdlog/spdlog.h>
#include <unordered_map>
#include <unordered_set>

namespace asio = boost::asio;

namespace {

using boost::system::error_code;
using Acceptor = asio::ip::tcp::acceptor;
using Endpoint = asio::ip::tcp::endpoint;

/// How long nothing is accepted after the system had no files or no memory to give.
constexpr std::chrono::milliseconds shortagePause{100};

/// How long handlers have to end after they were cancelled.
constexpr std::chrono::seconds cancelTime{1};

} // namespace

std::optional<asio::ip::tcp::endpoint> endpointFrom(std::string_view text)
{
    const auto colon = text.rfind(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    auto host = text.substr(0, colon);
    const bool isBracketed = host.starts_with('[') && host.ends_with(']');
    if (isBracketed)
        host = host.substr(1, host.size() - 2);
    std::uint16_t port = 0;
    const auto digits = text.substr(colon + 1);
    const auto *const last = digits.data() + digits.size();
    const auto [end, problem] = std::from_chars(digits.data(), last, port);
    error_code error;
    const auto address = asio::ip::make_address(std::string(host), error);
    if (error || problem != std::errc() || end != last || digits.empty() || address.is_v6() != isBracketed)
        return std::nullopt;
    return Endpoint(address, port);
}

struct HttpServer::State : ConnectionsShared, std::enable_shared_from_this<State>
{
    State(asio::io_context &where, HttpServerSettings chosen, Router routes, prometheus::Registry &registry)
        : ConnectionsShared(std::move(chosen), std::move(routes), registry)
        , context(where)
        , changed(where.get_executor())
    {}

    Result<> bind(const std::string &text);
    asio::awaitable<void> accept(std::shared_ptr<Acceptor> acceptor);
    void take(HttpSocket socket);
    void turnAway(HttpSocket &socket);
    asio::awaitable<void> waitForEnd(std::chrono::milliseconds most);

    asio::io_context &context;
    std::vector<std::shared_ptr<Acceptor>> acceptors;
    std::vector<std::uint16_t> ports;
    std::unordered_set<std::shared_ptr<Connection>> connections;
    std::unordered_map<std::string, std::size_t> connectionsOf; ///< by the network of a client
    HttpTimer changed; ///< cancelled when the last connection has ended
    std::chrono::steady_clock::time_point nextWarning;
};

/// Opens one address; leaves it out where it is [::1] on a machine without IPv6.
Result<> HttpServer::State::bind(const std::string &text)
{
    const auto endpoint = endpointFrom(trimmed(text));
    if (!endpoint)
        return Failure{"\"" + text + "\" is no address to listen on: write 127.0.0.1:8080 or [::1]:8080"};
    auto acceptor = std::make_shared<Acceptor>(context.get_executor());
    error_code error;
    acceptor->open(endpoint->protocol(), error);
    if (!error)
        acceptor->set_option(Acceptor::reuse_address(true), error);
    if (!error && endpoint->address().is_v6())
        acceptor->set_option(asio::ip::v6_only(true), error);
    if (!error)
        acceptor->bind(*endpoint, error);
    if (!error)
        acceptor->listen(asio::socket_base::max_listen_connections, error);
    const bool isMissing = error == asio::error::address_family_not_supported ||
                           error == boost::system::errc::address_not_available;
    if (isMissing && endpoint->address() == asio::ip::address_v6::loopback()) {
        spdlog::warn("this machine has no IPv6: nothing listens on {}", text);
        ports.push_back(0);
        return {};
    }
    if (error)
        return Failure{"cannot listen on " + text + ": " + error.message()};
    ports.push_back(acceptor->local_endpoint(error).port());
    acceptors.push_back(std::move(acceptor));
    return {};
}

asio::awaitable<void> HttpServer::State::accept(std::shared_ptr<Acceptor> acceptor)
{
    const auto self = shared_from_this();
    HttpTimer pause(context.get_executor());
    while (acceptor->is_open()) {
        HttpSocket socket(context.get_executor());
        error_code error;
        co_await acceptor->async_accept(socket, into(error));
        if (!error) {
            take(std::move(socket));
        } else if (error != asio::error::connection_aborted && error != asio::error::operation_aborted) {
            spdlog::error("no connection can be accepted for a moment: {}", error.message());
            pause.expires_after(shortagePause);
            co_await pause.async_wait(into(error));
        }
    }
}

void HttpServer::State::take(HttpSocket socket)
{
    error_code error;
    const auto endpoint = socket.remote_endpoint(error);
    if (error)
        return; // it has gone already
    const auto peer = canonicalAddress(endpoint.address());
    const auto network = networkOf(peer);
    const bool isProxy = trusted.contains(peer);
    socket.non_blocking(true, error);
    if (!error)
        socket.set_option(asio::ip::tcp::no_delay(true), error);
    if (error)
        return;
    const auto known = connectionsOf.find(network);
    if (connections.size() >= settings.mostConnections ||
        (!isProxy && known != connectionsOf.end() && known->second >= settings.mostConnectionsPerAddress))
        return turnAway(socket);
    if (!isProxy)
        ++connectionsOf[network];
    auto connection = std::make_shared<Connection>(std::move(socket), peer, shared_from_this());
    connections.insert(connection);
    figures.connectionOpened();
    connection->start([self = weak_from_this(), network, isProxy, raw = std::weak_ptr(connection)] {
        const auto state = self.lock();
        if (!state)
            return;
        state->figures.connectionClosed();
        state->connections.erase(raw.lock());
        if (!isProxy && --state->connectionsOf[network] == 0)
            state->connectionsOf.erase(network);
        if (state->connections.empty())
            state->changed.cancel();
    });
}

/// Says why, as far as that is possible at once. Nothing has been asked, so nobody's language is known.
void HttpServer::State::turnAway(HttpSocket &socket)
{
    figures.refused("connections");
    if (const auto now = std::chrono::steady_clock::now(); now >= nextWarning) {
        spdlog::warn("connections are turned away: there are {} already", connections.size());
        nextWarning = now + std::chrono::minutes(1);
    }
    const auto response = refuse(HttpRequest(), refusals::tooManyConnections());
    output.clear();
    appendHead(output, response, {newRequestId(), date(), true, false});
    output += response.body;
    error_code error;
    socket.write_some(asio::buffer(output), error);
    socket.shutdown(HttpSocket::shutdown_send, error);
}

asio::awaitable<void> HttpServer::State::waitForEnd(std::chrono::milliseconds most)
{
    if (connections.empty())
        co_return;
    error_code error;
    changed.expires_after(most);
    co_await changed.async_wait(into(error));
}

HttpServer::HttpServer(asio::io_context &context, HttpServerSettings settings, Router router,
                       prometheus::Registry &registry)
    : m_state(std::make_shared<State>(context, std::move(settings), std::move(router), registry))
{}

HttpServer::~HttpServer()
{
    error_code error;
    for (const auto &acceptor : m_state->acceptors)
        acceptor->close(error);
    const auto connections = m_state->connections;
    for (const auto &connection : connections)
        connection->abandon();
}

Result<> HttpServer::start()
{
    auto trusted = AddressNetworks::parse(m_state->settings.trustedProxies);
    if (!trusted)
        return Failure{"the trusted proxies are not understood: " + trusted.error().reason};
    m_state->trusted = std::move(*trusted);
    for (const auto &text : m_state->settings.listen) {
        if (auto bound = m_state->bind(text); !bound)
            return bound;
    }
    if (m_state->acceptors.empty())
        return Failure{"there is no address to listen on"};
    for (const auto &acceptor : m_state->acceptors)
        asio::co_spawn(m_state->context, m_state->accept(acceptor), asio::detached);
    return {};
}

std::vector<std::uint16_t> HttpServer::ports() const
{
    return m_state->ports;
}

asio::awaitable<void> HttpServer::stop()
{
    const auto state = m_state;
    state->isStopping = true;
    error_code error;
    for (const auto &acceptor : state->acceptors)
        acceptor->close(error);
    auto connections = state->connections;
    for (const auto &connection : connections)
        connection->stop();
    co_await state->waitForEnd(state->settings.stopTimeout);
    connections = state->connections;
    if (connections.empty())
        co_return;
    spdlog::warn("{} connections are ended before their time", connections.size());
    for (const auto &connection : connections)
        connection->abandon();
    connections.clear();
    co_await state->waitForEnd(cancelTime);
}
