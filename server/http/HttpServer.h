#pragma once

#include "Result.h"
#include "Router.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace prometheus {
class Registry;
}

struct HttpServerSettings
{
    std::vector<std::string> listen = {"127.0.0.1:8080", "[::1]:8080"}; ///< port 0: any that is free
    std::vector<std::string> trustedProxies; ///< whose X-Forwarded-For is believed: "127.0.0.1", "10.0.0.0/8"

    std::size_t largestBody = 64 * 1024; ///< bytes
    std::size_t largestHead = 16 * 1024; ///< bytes of the request line and all headers

    std::chrono::milliseconds headTimeout{
        10'000}; ///< from the connection or the head's first byte to its last
    std::chrono::milliseconds bodyTimeout{15'000};    ///< for all of a body, however it comes
    std::chrono::milliseconds idleTimeout{60'000};    ///< between two requests of one connection
    std::chrono::milliseconds handlerTimeout{58'000}; ///< the desktop program gives up after 60 s
    std::chrono::milliseconds writeTimeout{20'000};   ///< for one answer to a client that does not read it
    std::chrono::milliseconds stopTimeout{10'000};    ///< for the requests that are being answered at the end

    std::size_t mostConnections = 10'000;
    /// From one address, or one /64 of IPv6; enough for a school behind one address. A trusted proxy has as
    /// many as it likes.
    std::size_t mostConnectionsPerAddress = 1'000;
};

/// "127.0.0.1:8080" or "[::1]:8080"; none where it is no such address.
std::optional<boost::asio::ip::tcp::endpoint> endpointFrom(std::string_view text);

/// Serves HTTP 1.1 on the addresses of its settings. A reverse proxy before it adds TLS.
///
/// Each request leaves one line in the log: a random id, which the answer carries as X-Request-Id, the
/// method, the route's name, the status, the time it took and the bytes of its answer. The client's address
/// is left out: it is personal, and limits hold without anybody reading it.
class HttpServer
{
public:
    /// All work is done where `context` runs, which must be one thread. Registers its figures; `registry`
    /// must outlive it.
    HttpServer(boost::asio::io_context &context, HttpServerSettings settings, Router router,
               prometheus::Registry &registry);
    ~HttpServer();

    /// Binds every address, then accepts. Fails with a sentence that names the address or the setting. [::1]
    /// may be missing from a machine without IPv6.
    Result<> start();

    /// The ports bound, in the order of the settings; 0 where [::1] is missing.
    std::vector<std::uint16_t> ports() const;

    /// Takes no more connections, ends those that ask nothing, lets requests be answered within stopTimeout,
    /// then ends the rest and cancels what their handlers wait for.
    boost::asio::awaitable<void> stop();

private:
    struct State;
    std::shared_ptr<State> m_state;
};
