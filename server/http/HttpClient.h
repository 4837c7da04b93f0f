#pragma once

#include "Http.h"
#include "Result.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <cstddef>
#include <string>

/// One request to another service.
struct HttpCall
{
    std::string method = "GET";
    std::string url; ///< http or https
    HttpHeaders headers;
    std::string body;
    std::chrono::milliseconds timeout{10'000}; ///< for all of it, from the name's look-up to the last byte
    std::size_t largestAnswer = 1024 * 1024;   ///< bytes of the body
};

/// What the other service answered, whatever its status.
struct HttpAnswer
{
    unsigned status = 0;
    HttpHeaders headers;
    std::string body;

    /// The value of the first header of that name, in any case; empty where there is none.
    std::string_view header(std::string_view name) const;
};

/// Asks other services. A redirect is an answer like any other. A reason of failure names no path and no
/// query: they may hold secrets.
class HttpClient
{
public:
    virtual ~HttpClient() = default;

    /// Fails where no whole answer came: no such name, refused, no valid certificate, cut off, too late, too
    /// large.
    virtual boost::asio::awaitable<Result<HttpAnswer>> send(HttpCall call) = 0;
};
