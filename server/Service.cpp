#include "Service.h"

#include "ConsoleMailer.h"
#include "SmtpMailer.h"
#include "coachRoutes.h"
#include "emailRoutes.h"
#include "operationRoutes.h"
#include "removeExpired.h"
#include "secretKey.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <spdlog/spdlog.h>

namespace asio = boost::asio;

namespace {

constexpr std::chrono::minutes betweenTidyings{5};

std::unique_ptr<Mailer> mailerFor(const SmtpSettings &settings)
{
    if (settings.host.empty())
        return std::make_unique<ConsoleMailer>();
    return std::make_unique<SmtpMailer>(settings);
}

Result<std::string> keyFor(const Configuration &configuration)
{
    if (!configuration.secretKey.empty())
        return Result<std::string>(boost::system::in_place_value, configuration.secretKey);
    return keptSecretKey(sqlitePathOf(configuration.database.url).value_or("") + ".key");
}

/// "127.0.0.1:0" with the port that was found.
std::string addressOf(const std::string &listen, std::uint16_t port)
{
    return "http://" + listen.substr(0, listen.rfind(':')) + ":" + std::to_string(port);
}

} // namespace

Result<Service::Opened> Service::open(const Configuration &configuration)
{
    auto database = Database::open(configuration.database);
    if (!database)
        return database.error();
    const auto key = keyFor(configuration);
    if (!key)
        return key.error();
    auto client = BeastHttpClient::create(configuration.authorities);
    if (!client)
        return client.error();
    return Opened{std::move(*database), std::move(*client), *key};
}

Result<std::unique_ptr<Service>> Service::create(asio::io_context &context,
                                                 const Configuration &configuration)
{
    auto opened = open(configuration);
    if (!opened)
        return opened.error();
    return std::unique_ptr<Service>(new Service(context, configuration, std::move(*opened)));
}

Service::Service(asio::io_context &context, const Configuration &configuration, Opened opened)
    : m_context(context)
    , m_listen(configuration.http.listen)
    , m_database(std::move(opened.database))
    , m_client(std::move(opened.client))
    , m_mailer(mailerFor(configuration.smtp))
    , m_sessions(*m_database, systemTime)
    , m_codes(*m_database, systemTime, std::move(opened.key))
    , m_states(*m_database, systemTime)
    , m_limits(*m_database, systemTime)
    , m_google(configuration.google, *m_client, systemTime)
    , m_yandex(configuration.yandex, *m_client)
    , m_oauth(configuration.publicUrl, m_states, m_sessions, m_limits)
    , m_coach(configuration.coach, *m_client, m_registry)
    , m_server(context, configuration.http, routes(configuration), m_registry)
{}

Router Service::routes(const Configuration &configuration)
{
    Router router;
    addEmailRoutes(router, {m_codes, m_sessions, m_limits, *m_mailer, configuration.limits});
    m_oauth.add(router, m_google);
    m_oauth.add(router, m_yandex);
    addCoachRoutes(router, m_sessions, m_limits, m_coach);
    OperationSettings operation;
    operation.metricsFrom = configuration.metricsFrom;
    const auto added = addOperationRoutes(
        router, m_registry, [this] { return m_database->isReady(); }, operation);
    if (!added) // the networks were checked with the rest of the configuration
        spdlog::error("/healthz, /readyz and /metrics are missing: {}", added.error().reason);
    return router;
}

Result<> Service::start()
{
    if (auto started = m_server.start(); !started)
        return started;
    asio::co_spawn(m_context, tidyUp(), asio::detached);
    return {};
}

std::vector<std::string> Service::addresses() const
{
    std::vector<std::string> all;
    const auto ports = m_server.ports();
    for (std::size_t place = 0; place < ports.size(); ++place) {
        if (ports[place] != 0)
            all.push_back(addressOf(m_listen[place], ports[place]));
    }
    return all;
}

asio::awaitable<void> Service::stop()
{
    return m_server.stop();
}

asio::awaitable<void> Service::tidyUp()
{
    asio::steady_timer timer(m_context);
    for (;;) {
        const auto removed = co_await removeExpired(*m_database, systemTime());
        if (!removed)
            spdlog::warn("what is over could not be removed: {}", removed.error().reason);
        else if (*removed > 0)
            spdlog::debug("removed {} rows that were over", *removed);
        timer.expires_after(betweenTidyings);
        co_await timer.async_wait(asio::use_awaitable);
    }
}
