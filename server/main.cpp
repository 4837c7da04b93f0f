// quorvel-server: the commands of its operator, and its life from start to signal.
#include "Service.h"
#include "commandLine.h"
#include "readConfiguration.h"
#include "textChecks.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/use_future.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>
#include <sys/resource.h>

namespace asio = boost::asio;

extern char **environ; // NOLINT: named by POSIX

namespace {

constexpr int badUsage = 64;         // of sysexits.h, as are the others
constexpr int unavailable = 69;      // something that is needed does not work
constexpr int badConfiguration = 78; // systemd need not start it again

std::map<std::string, std::string> environmentOfProcess()
{
    std::map<std::string, std::string> all;
    for (char **entry = environ; *entry; ++entry) {
        const std::string_view text = *entry;
        const auto sign = text.find('=');
        if (sign != std::string_view::npos)
            all.emplace(text.substr(0, sign), text.substr(sign + 1));
    }
    return all;
}

/// The log goes to standard error, one line an event, so that systemd or a container keeps it.
void setUpLog(const std::string &level)
{
    auto logger = spdlog::stderr_logger_mt("quorvel-server");
    logger->set_pattern("time=%Y-%m-%dT%H:%M:%S.%e%z level=%l %v");
    logger->set_level(spdlog::level::from_str(level));
    spdlog::set_default_logger(std::move(logger));
}

int fail(int status, const std::string &reason)
{
    fprintf(stderr, "quorvel-server: %s\n", reason.c_str());
    return status;
}

std::string summaryOf(const Configuration &configuration)
{
    const auto on = [](bool is) { return is ? "on" : "off"; };
    std::string text = "The configuration is good.\n";
    text += "database: " + configuration.database.url.substr(0, configuration.database.url.find(':')) + "\n";
    text +=
        "mail: " + (configuration.smtp.host.empty() ? "on standard output" : configuration.smtp.host) + "\n";
    text += std::string("sign-in with Google: ") + on(!configuration.google.clientId.empty()) + "\n";
    text += std::string("sign-in with Yandex: ") + on(!configuration.yandex.clientId.empty()) + "\n";
    text += std::string("coach: ") + on(!configuration.coach.url.empty()) + "\n";
    return text;
}

/// Ends sessions and waits for that.
Result<std::int64_t> endSessions(const Configuration &configuration, const std::optional<std::string> &email)
{
    auto database = Database::open(configuration.database);
    if (!database)
        return database.error();
    asio::io_context context;
    Sessions sessions(**database, systemTime);
    auto ended =
        asio::co_spawn(context, email ? sessions.revoke(*email) : sessions.revokeAll(), asio::use_future);
    context.run();
    return ended.get();
}

int revoke(const Configuration &configuration, const CommandLine &command)
{
    std::optional<std::string> email;
    if (!command.all) {
        email = mailAddress(command.email);
        if (!email)
            return fail(badUsage, "That is no mail address.");
    }
    // Opening would make it, and tell that nobody's sessions were ended.
    if (const auto path = sqlitePathOf(configuration.database.url); path && !std::filesystem::exists(*path))
        return fail(unavailable, "there is no database at " + *path +
                                     "; --config FILE gives the settings that the service has");
    const auto ended = endSessions(configuration, email);
    if (!ended)
        return fail(unavailable, ended.error().reason);
    printf("sessions ended: %lld\n", static_cast<long long>(*ended));
    return 0;
}

/// Each connection is a file of the process, and some systems allow 1,024 unless one asks for more.
void allowManyConnections()
{
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0)
        return;
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
}

int serve(const Configuration &configuration)
{
    allowManyConnections();
    std::signal(SIGPIPE, SIG_IGN); // a client that goes away is no reason to end
    asio::io_context context(1);
    const auto service = Service::create(context, configuration);
    if (!service)
        return fail(unavailable, service.error().reason);
    if (const auto started = (*service)->start(); !started)
        return fail(unavailable, started.error().reason);
    for (const auto &address : (*service)->addresses())
        printf("listening on %s\n", address.c_str());
    fflush(stdout);

    asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code &, int signal) {
        spdlog::info("stopping, by signal {}", signal);
        asio::co_spawn(context, (*service)->stop(),
                       [&context](const std::exception_ptr &) { context.stop(); });
    });
    context.run();
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const auto command = readCommandLine(argc, argv);
    if (!command)
        return fail(badUsage, command.error().reason);
    if (command->action == CommandLine::Action::Help) {
        printf("%s\n%s", commandLineHelp().c_str(), describeSettings().c_str());
        return 0;
    }
    const auto read = readConfiguration({command->file, environmentOfProcess()});
    for (const auto &problem : read.problems)
        fail(badConfiguration, problem);
    if (!read.problems.empty())
        return badConfiguration;
    setUpLog(read.configuration.logLevel);
    switch (command->action) {
    case CommandLine::Action::CheckConfiguration:
        printf("%s", summaryOf(read.configuration).c_str());
        return 0;
    case CommandLine::Action::Revoke:
        return revoke(read.configuration, *command);
    default:
        return serve(read.configuration);
    }
}
