#include "configurationChecks.h"

#include "clientAddresses.h"
#include "secretKey.h"
#include "textChecks.h"

#include <array>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>
#include <utility>

namespace {

using Problems = std::vector<std::string>;

std::vector<std::string> wordsOf(const std::string &text)
{
    std::vector<std::string> words;
    boost::algorithm::split(words, text, boost::algorithm::is_any_of(" ,\t"),
                            boost::algorithm::token_compress_on);
    std::erase(words, "");
    return words;
}

void need(bool holds, const std::string &sentence, Problems &problems)
{
    if (!holds)
        problems.push_back(sentence);
}

void needRange(const std::string &name, int value, int least, int most, Problems &problems)
{
    need(value >= least && value <= most,
         name + " is " + std::to_string(value) + "; it must be " + std::to_string(least) + " to " +
             std::to_string(most) + ".",
         problems);
}

/// Whether it is an http or https address with a host and without user and fragment.
bool isWebAddress(const std::string &text)
{
    const auto url = boost::urls::parse_uri(text);
    return url && (url->scheme() == "http" || url->scheme() == "https") && !url->host().empty() &&
           !url->has_userinfo() && !url->has_fragment() && !hasControlCharacters(text);
}

void needWebAddress(const std::string &name, const std::string &text, Problems &problems)
{
    need(isWebAddress(text), name + " is no http or https address.", problems);
}

bool isLoopback(const std::string &host)
{
    const auto address = canonicalAddress(host);
    return host == "localhost" || (address && address->is_loopback());
}

std::vector<std::string> checkedNetworks(const std::string &name, const std::string &text, Problems &problems)
{
    const auto networks = wordsOf(text);
    if (const auto parsed = AddressNetworks::parse(networks); !parsed)
        problems.push_back(name + ": " + parsed.error().reason + ".");
    return networks;
}

void checkService(const RawSettings &raw, Configuration &made, Problems &problems)
{
    made.http.listen = wordsOf(raw.listen);
    need(!made.http.listen.empty(), "listen names no address.", problems);
    for (const auto &address : made.http.listen)
        need(endpointFrom(address).has_value(),
             "listen: " + address + " is no address with a port, such as 127.0.0.1:8080 or [::1]:8080.",
             problems);
    made.http.trustedProxies = checkedNetworks("trusted-proxies", raw.trustedProxies, problems);
    made.metricsFrom = checkedNetworks("metrics-from", raw.metricsFrom, problems);
    made.publicUrl = raw.publicUrl;
    while (made.publicUrl.ends_with('/'))
        made.publicUrl.pop_back();
    needWebAddress("public-url", made.publicUrl, problems);
    need(made.publicUrl.find('?') == std::string::npos, "public-url has a query.", problems);
    made.authorities = raw.authorities;
    made.logLevel = raw.logLevel;
    constexpr std::array levels{"debug", "info", "warning", "error"};
    need(std::find(levels.begin(), levels.end(), made.logLevel) != levels.end(),
         "log-level is none of debug, info, warning and error.", problems);
    needRange("codes-per-client-hour", raw.codesForClientAnHour, 1, 1'000'000, problems);
    needRange("wrong-codes-per-client-hour", raw.wrongCodesFromClientAnHour, 1, 1'000'000, problems);
    made.limits.codesForClientAnHour = raw.codesForClientAnHour;
    made.limits.wrongCodesFromClientAnHour = raw.wrongCodesFromClientAnHour;
}

void checkDatabase(const RawSettings &raw, Configuration &made, Problems &problems)
{
    made.database.url = raw.database;
    const auto problem = problemOfDatabaseUrl(raw.database);
    const bool isPostgresql = !problem && !sqlitePathOf(raw.database);
    if (problem)
        problems.push_back("database: " + *problem + ".");
    needRange("database-connections", raw.databaseConnections, 2, 64, problems);
    made.database.connections = static_cast<unsigned>(raw.databaseConnections);
    const auto key = secretKeyFrom(trimmed(raw.secretKey));
    need(key || raw.secretKey.empty(), "secret-key is not 64 hexadecimal digits.", problems);
    need(key || !isPostgresql,
         "With PostgreSQL secret-key must be set, to the same for all instances: "
         "openssl rand -hex 32 makes one.",
         problems);
    made.secretKey = key.value_or("");
}

void checkMail(const RawSettings &raw, SmtpSettings &made, Problems &problems)
{
    made.host = raw.smtpHost;
    needRange("smtp-port", raw.smtpPort, 1, 65'535, problems);
    made.port = static_cast<std::uint16_t>(raw.smtpPort);
    if (raw.smtpSecurity == "tls")
        made.security = SmtpSecurity::Tls;
    else if (raw.smtpSecurity == "none")
        made.security = SmtpSecurity::None;
    else
        need(raw.smtpSecurity == "starttls", "smtp-security is none of starttls, tls and none.", problems);
    made.user = raw.smtpUser;
    made.password = raw.smtpPassword;
    made.from = raw.smtpFrom;
    made.certificateAuthorities = raw.smtpAuthorities;
    need(MailSender::parse(made.from).has_value(),
         "smtp-from is no sender, such as: Quorvel <no-reply@example.org>.", problems);
    need(made.user.empty() == made.password.empty(), "smtp-user and smtp-password go together.", problems);
    need(made.host.empty() || made.security != SmtpSecurity::None || isLoopback(made.host),
         "smtp-security none is for a mail server on this machine: codes must not travel in clear.",
         problems);
}

void checkProviders(const RawSettings &raw, Configuration &made, Problems &problems)
{
    made.google = {raw.googleClientId, raw.googleClientSecret, raw.googleIssuer};
    need(made.google.clientId.empty() == made.google.clientSecret.empty(),
         "google-client-id and google-client-secret go together.", problems);
    needWebAddress("google-issuer", made.google.issuer, problems);
    made.yandex = {raw.yandexClientId, raw.yandexClientSecret, raw.yandexAuthorizeUrl, raw.yandexTokenUrl,
                   raw.yandexInfoUrl};
    need(made.yandex.clientId.empty() == made.yandex.clientSecret.empty(),
         "yandex-client-id and yandex-client-secret go together.", problems);
    needWebAddress("yandex-authorize-url", made.yandex.authorizeUrl, problems);
    needWebAddress("yandex-token-url", made.yandex.tokenUrl, problems);
    needWebAddress("yandex-info-url", made.yandex.infoUrl, problems);
}

void checkCoach(const RawSettings &raw, CoachSettings &made, Problems &problems)
{
    made.url = raw.coachUrl;
    made.key = raw.coachKey;
    made.model = raw.coachModel;
    need(made.url.empty() || isWebAddress(made.url), "coach-url is no http or https address.", problems);
    need(!hasControlCharacters(made.key), "coach-key has control characters.", problems);
    need(!made.model.empty(), "coach-model is empty.", problems);
    needRange("coach-per-hour", raw.coachPerHour, 1, 1'000'000, problems);
    needRange("coach-per-day", raw.coachPerDay, 1, 1'000'000, problems);
    needRange("coach-timeout", raw.coachTimeout, 5, 55, problems);
    made.perHour = raw.coachPerHour;
    made.perDay = raw.coachPerDay;
    made.timeout = std::chrono::seconds(raw.coachTimeout);
}

} // namespace

Configuration checkedConfiguration(const RawSettings &raw, std::vector<std::string> &problems)
{
    Configuration made;
    checkService(raw, made, problems);
    checkDatabase(raw, made, problems);
    checkMail(raw, made.smtp, problems);
    checkProviders(raw, made, problems);
    checkCoach(raw, made.coach, problems);
    return made;
}
