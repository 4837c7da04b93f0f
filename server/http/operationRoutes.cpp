#include "operationRoutes.h"

#include "clientAddresses.h"
#include "httpRefusals.h"
#include "intoError.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <exception>
#include <memory>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>
#include <spdlog/spdlog.h>

namespace asio = boost::asio;

namespace {

using Clock = std::chrono::steady_clock;

HttpResponse plain(unsigned status, std::string text)
{
    return {status, "text/plain; charset=utf-8", std::move(text), {}};
}

/// Asks at most once at a time, and remembers the answer for a moment: this path is open to everybody, and
/// must not be a way to keep the database busy.
class Readiness : public std::enable_shared_from_this<Readiness>
{
public:
    Readiness(std::function<asio::awaitable<bool>()> ask, const OperationSettings &settings)
        : m_ask(std::move(ask))
        , m_settings(settings)
    {}

    asio::awaitable<bool> get()
    {
        const auto self = shared_from_this();
        if (!m_isAsking && Clock::now() >= m_validUntil)
            ask(co_await asio::this_coro::executor);
        if (m_isAsking && Clock::now() < m_deadline) {
            boost::system::error_code error;
            asio::steady_timer changed(co_await asio::this_coro::executor, m_deadline);
            m_waiting.push_back(&changed);
            co_await changed.async_wait(into(error));
            std::erase(m_waiting, &changed);
        }
        co_return !m_isAsking && m_isReady;
    }

private:
    void ask(const asio::any_io_executor &executor)
    {
        m_isAsking = true;
        m_deadline = Clock::now() + m_settings.readyTimeout;
        asio::co_spawn(executor, m_ask(),
                       [self = shared_from_this()](const std::exception_ptr &problem, bool isReady) {
                           if (problem)
                               spdlog::error("whether the service is ready cannot be told");
                           self->m_isAsking = false;
                           self->m_isReady = !problem && isReady;
                           self->m_validUntil = Clock::now() + self->m_settings.readyFor;
                           for (auto *const changed : self->m_waiting)
                               changed->cancel();
                       });
    }

    std::function<asio::awaitable<bool>()> m_ask;
    OperationSettings m_settings;
    bool m_isAsking = false;
    bool m_isReady = false;
    Clock::time_point m_validUntil;
    Clock::time_point m_deadline;
    std::vector<asio::steady_timer *> m_waiting;
};

/// Where a proxy on this machine is not among the trusted ones, everybody seems to be this machine: what was
/// passed on does not count as coming from it.
bool mayReadFigures(const HttpRequest &request, const AddressNetworks &allowed)
{
    const auto client = canonicalAddress(request.clientAddress);
    if (!client)
        return false;
    const bool isPassedOn = !request.header("X-Forwarded-For").empty() ||
                            !request.header("Forwarded").empty() || !request.header("X-Real-IP").empty() ||
                            !request.header("Via").empty();
    return allowed.contains(*client) || (client->is_loopback() && !isPassedOn);
}

} // namespace

Result<> addOperationRoutes(Router &router, prometheus::Registry &registry,
                            std::function<asio::awaitable<bool>()> isReady, const OperationSettings &settings)
{
    auto allowed = AddressNetworks::parse(settings.metricsFrom);
    if (!allowed)
        return allowed.error();
    router.add("GET", "/healthz",
               [](const HttpRequest &) -> asio::awaitable<HttpResponse> { co_return plain(200, "ok\n"); });
    router.add("GET", "/readyz",
               [readiness = std::make_shared<Readiness>(std::move(isReady), settings)](
                   const HttpRequest &) -> asio::awaitable<HttpResponse> {
                   const bool answer = co_await readiness->get();
                   co_return answer ? plain(200, "ready\n") : plain(503, "not ready\n");
               });
    router.add("GET", "/metrics",
               [allowed = std::move(*allowed),
                &registry](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
                   if (!mayReadFigures(request, allowed))
                       co_return refuse(request, refusals::notFound());
                   HttpResponse response =
                       plain(200, prometheus::TextSerializer().Serialize(registry.Collect()));
                   response.contentType = "text/plain; version=0.0.4; charset=utf-8";
                   co_return response;
               });
    return {};
}
