#pragma once

#include "Http.h"

#include <boost/asio/awaitable.hpp>
#include <functional>
#include <map>
#include <string>
#include <string_view>

/// Answers one request. Runs on the one thread of the service's own work and must not block it. What it
/// throws is logged and answered as unavailable.
using HttpHandler = std::function<boost::asio::awaitable<HttpResponse>(const HttpRequest &request)>;

/// Which handler answers which path. Paths are compared as they came, byte by byte.
class Router
{
public:
    void add(const std::string &method, const std::string &path, HttpHandler handler);

    /// Answers 404 for an unknown path, 405 with Allow for a known path and another method. HEAD is answered
    /// as GET.
    boost::asio::awaitable<HttpResponse> answer(const HttpRequest &request) const;

    /// The path where it is known, "other" elsewhere: a name for figures, of which there must not be
    /// endlessly many.
    std::string_view routeName(std::string_view path) const;

private:
    std::map<std::string, std::map<std::string, HttpHandler>, std::less<>>
        m_handlers; ///< by path, then method
};
