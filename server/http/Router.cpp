#include "Router.h"

#include "httpRefusals.h"

#include <exception>
#include <spdlog/spdlog.h>

namespace {

/// "GET, HEAD, POST"
std::string methodsOf(const std::map<std::string, HttpHandler> &handlers)
{
    std::string methods;
    for (const auto &[method, handler] : handlers) {
        methods += methods.empty() ? "" : ", ";
        methods += method;
        if (method == "GET" && !handlers.contains("HEAD"))
            methods += ", HEAD";
    }
    return methods;
}

} // namespace

void Router::add(const std::string &method, const std::string &path, HttpHandler handler)
{
    m_handlers[path][method] = std::move(handler);
}

boost::asio::awaitable<HttpResponse> Router::answer(const HttpRequest &request) const
{
    const auto route = m_handlers.find(request.path);
    if (route == m_handlers.end())
        co_return refuse(request, refusals::notFound());
    auto handler = route->second.find(request.method);
    if (handler == route->second.end() && request.method == "HEAD")
        handler = route->second.find("GET");
    if (handler == route->second.end()) {
        auto response = refuse(request, refusals::methodNotAllowed());
        response.headers.emplace_back("Allow", methodsOf(route->second));
        co_return response;
    }
    try {
        co_return co_await handler->second(request);
    } catch (const std::exception &problem) {
        spdlog::error("the handler of {} failed: {}", route->first, problem.what());
    } catch (...) {
        spdlog::error("the handler of {} failed", route->first);
    }
    co_return refuse(request, refusals::unavailable());
}

std::string_view Router::routeName(std::string_view path) const
{
    const auto route = m_handlers.find(path);
    return route == m_handlers.end() ? "other" : std::string_view(route->first);
}
