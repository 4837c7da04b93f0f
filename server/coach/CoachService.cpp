#include "CoachService.h"

#include "retryAfter.h"
#include "suggestionReply.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <memory>
#include <random>
#include <spdlog/spdlog.h>

namespace {

using namespace std::chrono_literals;
namespace asio = boost::asio;

constexpr int mostTries = 5;
constexpr std::chrono::milliseconds firstPause = 500ms; ///< doubled with each further try
constexpr std::chrono::milliseconds shortestTry = 1s;   ///< no model answers in less
constexpr std::size_t largestAnswer = 256 * 1024;       ///< ten times what the longest fit one takes
constexpr auto betweenComplaints = 1min;

asio::awaitable<void> realSleep(std::chrono::milliseconds length)
{
    asio::steady_timer timer(co_await asio::this_coro::executor, length);
    co_await timer.async_wait(asio::use_awaitable);
}

/// What a later try may find otherwise. An answer of no use is worth one more only.
bool passes(CoachFault fault, int unusable)
{
    return fault == CoachFault::Overloaded || fault == CoachFault::Unreachable ||
           (fault == CoachFault::UnusableAnswer && unusable < 2);
}

} // namespace

CoachTime CoachTime::real()
{
    const auto random = std::make_shared<std::mt19937>(std::random_device{}());
    return {std::chrono::steady_clock::now, realSleep, systemTime,
            [random] { return std::uniform_real_distribution<>(0, 1)(*random); }};
}

/// Counts one suggestion that is under way, however it ends.
class CoachService::InFlight
{
public:
    explicit InFlight(CoachService &service)
        : m_service(service)
    {
        m_service.m_figures.tell(++m_service.m_inFlight);
    }
    ~InFlight() { m_service.m_figures.tell(--m_service.m_inFlight); }
    InFlight(const InFlight &) = delete;
    InFlight &operator=(const InFlight &) = delete;

private:
    CoachService &m_service;
};

CoachService::CoachService(CoachSettings settings, HttpClient &client, prometheus::Registry &registry,
                           CoachTime time)
    : m_settings(std::move(settings))
    , m_client(client)
    , m_time(std::move(time))
    , m_figures(registry)
{}

std::optional<CoachFault> CoachService::refusal()
{
    std::optional<CoachFault> fault;
    if (m_settings.url.empty())
        fault = CoachFault::NotConfigured;
    else if (m_inFlight >= m_settings.atOnce)
        fault = CoachFault::Busy;
    if (fault)
        m_figures.count(fault);
    return fault;
}

asio::awaitable<std::variant<Suggestion, CoachFault>> CoachService::suggest(SuggestionRequest request)
{
    if (const auto fault = refusal())
        co_return *fault;
    const InFlight inFlight(*this);
    const auto begin = m_time.now();
    auto ended = co_await askUntil(begin + m_settings.timeout, request);
    m_figures.tell(m_time.now() - begin);
    const auto *const fault = std::get_if<CoachFault>(&ended);
    m_figures.count(fault != nullptr ? std::optional(*fault) : std::nullopt);
    co_return ended;
}

asio::awaitable<std::variant<Suggestion, CoachFault>> CoachService::askUntil(CoachTime::Instant deadline,
                                                                             const SuggestionRequest &request)
{
    int unusable = 0;
    for (int tries = 1;; ++tries) {
        auto asked = co_await askOnce(deadline, request);
        if (auto *const suggestion = std::get_if<Suggestion>(&asked))
            co_return std::move(*suggestion);
        const auto &failed = std::get<FailedTry>(asked);
        unusable += failed.fault == CoachFault::UnusableAnswer ? 1 : 0;
        const auto pause = pauseAfter(failed, tries);
        if (!passes(failed.fault, unusable) || tries == mostTries ||
            m_time.now() + pause + shortestTry > deadline)
            co_return failed.fault;
        co_await m_time.sleep(pause);
    }
}

asio::awaitable<std::variant<Suggestion, CoachService::FailedTry>>
CoachService::askOnce(CoachTime::Instant deadline, const SuggestionRequest &request)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - m_time.now());
    const auto answer = co_await m_client.send(callFor(request, left));
    if (!answer) {
        spdlog::warn("coach: the endpoint gave no answer: {}", answer.error().reason);
        co_return FailedTry{m_time.now() < deadline ? CoachFault::Unreachable : CoachFault::TimedOut, {}};
    }
    if (answer->status / 100 != 2)
        co_return failedBy(*answer);
    auto suggestion = readSuggestion(answer->body);
    if (!suggestion) {
        spdlog::warn("coach: the endpoint's answer is of no use: {}", suggestion.error().reason);
        co_return FailedTry{CoachFault::UnusableAnswer, {}};
    }
    co_return std::move(*suggestion);
}

/// The body is made anew for each try: kept over pauses, it would be most of what a waiting call takes.
HttpCall CoachService::callFor(const SuggestionRequest &request, std::chrono::milliseconds timeout) const
{
    HttpCall call;
    call.method = "POST";
    call.url = m_settings.url;
    call.headers = {{"Content-Type", "application/json"}, {"Accept", "application/json"}};
    if (!m_settings.key.empty())
        call.headers.emplace_back("Authorization", "Bearer " + m_settings.key);
    call.body = chatBody(request, m_settings.model);
    call.timeout = timeout;
    call.largestAnswer = largestAnswer;
    return call;
}

CoachService::FailedTry CoachService::failedBy(const HttpAnswer &answer)
{
    constexpr unsigned requestTimeout = 408;
    constexpr unsigned tooManyRequests = 429;
    const bool isFaultOfTheirs = answer.status >= 500 || answer.status == requestTimeout;
    if (!isFaultOfTheirs && answer.status != tooManyRequests) {
        complain(answer.status);
        return {CoachFault::Misconfigured, {}};
    }
    spdlog::warn("coach: the endpoint answered {}", answer.status);
    return {isFaultOfTheirs ? CoachFault::Unreachable : CoachFault::Overloaded,
            retryAfter(answer.header("Retry-After"), m_time.wallTime())};
}

/// Half of it is certain, half is chance; on top of what the endpoint asks for.
std::chrono::milliseconds CoachService::pauseAfter(const FailedTry &failed, int tries) const
{
    if (failed.fault == CoachFault::UnusableAnswer)
        return 0ms;
    const auto whole = firstPause * (1 << (tries - 1));
    const auto chance = std::chrono::round<std::chrono::milliseconds>(whole / 2.0 * m_time.chance());
    return failed.wait.value_or(0s) + whole / 2 + chance;
}

/// Once a minute: only the operator can change it, and every student who asks meets it.
void CoachService::complain(unsigned status)
{
    const auto now = m_time.now();
    if (m_lastComplaint && now - *m_lastComplaint < betweenComplaints)
        return;
    m_lastComplaint = now;
    spdlog::error("coach: the endpoint answered {}: check its address, key and model in the configuration",
                  status);
}
