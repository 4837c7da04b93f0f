#pragma once

#include "HttpFigures.h"
#include "HttpServer.h"
#include "RequestReader.h"
#include "clientAddresses.h"

#include <array>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using HttpSocket = boost::asio::ip::tcp::socket;
using HttpTimer = boost::asio::steady_timer;

/// What all connections of one server share. There is one thread, so they share what they read into and write
/// from too: a connection that waits holds no memory for bytes that have not come.
struct ConnectionsShared
{
    ConnectionsShared(HttpServerSettings chosen, Router routes, prometheus::Registry &registry)
        : settings(std::move(chosen))
        , router(std::move(routes))
        , figures(registry)
    {}

    std::string newRequestId();
    std::string_view date();

    HttpServerSettings settings;
    Router router;
    AddressNetworks trusted;
    HttpFigures figures;
    bool isStopping = false;
    std::array<char, 16 * 1024> input{};
    std::string output;

private:
    std::string m_random;
    std::time_t m_dateSecond = -1;
    std::string m_date;
};

/// One client's connection: its requests one after the other, each within its time.
class Connection : public std::enable_shared_from_this<Connection>
{
public:
    Connection(HttpSocket socket, boost::asio::ip::address peer, std::shared_ptr<ConnectionsShared> shared);

    /// Serves until either side ends it; then calls `over`.
    void start(std::function<void()> over);

    /// Ends it where no request has begun; else it ends after the answer.
    void stop();

    /// Ends it now, and what its handler waits for.
    void abandon();

private:
    using Clock = std::chrono::steady_clock;
    enum class Phase {
        Fresh,     ///< connected, nothing has come
        Idle,      ///< between two requests
        Head,      ///< a head has begun
        Body,      ///< a body has begun
        Handling,  ///< the handler works
        Writing,   ///< the client reads slowly
        Closing,   ///< all is said; what the client still sends is read and dropped
        Abandoned, ///< answered without the handler, which still works
    };

    boost::asio::awaitable<void> run();
    boost::asio::awaitable<bool> readRequest();
    boost::asio::awaitable<bool> receive();
    boost::asio::awaitable<bool> answerRequest();
    boost::asio::awaitable<bool> send(std::string_view head, std::string_view body);
    boost::asio::awaitable<void> finish();

    void take(std::string_view bytes);
    void describeClient(HttpRequest &request) const;
    HttpResponse refusal();
    void compose(HttpResponse &response, bool closes);
    void note(const HttpResponse &response);
    bool isBetweenRequests() const { return m_phase == Phase::Fresh || m_phase == Phase::Idle; }

    void enter(Phase phase, std::chrono::milliseconds most);
    void armTimer();
    void onTimer();
    void expire();
    void answerForHandler();
    void close();

    HttpSocket m_socket;
    HttpTimer m_timer;
    boost::asio::ip::address m_peer;
    std::shared_ptr<ConnectionsShared> m_shared;
    boost::asio::cancellation_signal m_cancel;
    RequestReader m_reader;
    std::string m_input;  ///< what has come and is not a whole head yet, or belongs to the next request
    std::string m_output; ///< what the client has not taken yet
    std::string m_requestId;
    std::string_view m_route;
    Phase m_phase = Phase::Fresh;
    Clock::time_point m_deadline;
    Clock::time_point m_armedFor = Clock::time_point::max();
    Clock::time_point m_begin; ///< when the request was whole
    bool m_isLate = false;     ///< the request did not come in time
    bool m_isOver = false;
};
