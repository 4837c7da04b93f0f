#pragma once

#include "CoachFigures.h"
#include "CoachSettings.h"
#include "HttpClient.h"
#include "Suggestion.h"
#include "TimeSource.h"
#include "coachRefusals.h"
#include "suggestionRequest.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <functional>
#include <optional>
#include <variant>

/// Time as the coach sees it; tests have their own.
struct CoachTime
{
    using Instant = std::chrono::steady_clock::time_point;

    std::function<Instant()> now;
    std::function<boost::asio::awaitable<void>(std::chrono::milliseconds)> sleep;
    TimeSource wallTime;            ///< for dates that another machine names
    std::function<double()> chance; ///< 0 to 1, so that those who failed together do not come back together

    static CoachTime real();
};

/// Asks a chat-completions endpoint for suggestions, again where that may help, and takes nothing on trust.
class CoachService
{
public:
    /// `client` and `registry` outlive it.
    CoachService(CoachSettings settings, HttpClient &client, prometheus::Registry &registry,
                 CoachTime time = CoachTime::real());

    const CoachSettings &settings() const { return m_settings; }

    /// Why nobody would be asked now: NotConfigured or Busy, and counted as such. None where suggest() would
    /// ask.
    std::optional<CoachFault> refusal();

    /// Ends within the settings' timeout. Tries again after what passes: too many requests, faults of the
    /// endpoint, no connection; and once after an answer that is of no use.
    boost::asio::awaitable<std::variant<Suggestion, CoachFault>> suggest(SuggestionRequest request);

private:
    struct FailedTry
    {
        CoachFault fault = CoachFault::Unreachable;
        std::optional<std::chrono::seconds> wait; ///< that the endpoint asks for
    };
    class InFlight;

    boost::asio::awaitable<std::variant<Suggestion, CoachFault>> askUntil(CoachTime::Instant deadline,
                                                                          const SuggestionRequest &request);
    boost::asio::awaitable<std::variant<Suggestion, FailedTry>> askOnce(CoachTime::Instant deadline,
                                                                        const SuggestionRequest &request);
    HttpCall callFor(const SuggestionRequest &request, std::chrono::milliseconds timeout) const;
    FailedTry failedBy(const HttpAnswer &answer);
    std::chrono::milliseconds pauseAfter(const FailedTry &failed, int tries) const;
    void complain(unsigned status);

    CoachSettings m_settings;
    HttpClient &m_client;
    CoachTime m_time;
    CoachFigures m_figures;
    int m_inFlight = 0;
    std::optional<CoachTime::Instant> m_lastComplaint;
};
