#include "coachRoutes.h"

#include "CoachService.h"
#include "RateLimits.h"
#include "Router.h"
#include "Sessions.h"

#include <array>
#include <spdlog/spdlog.h>

namespace {

namespace asio = boost::asio;

struct Parts
{
    Sessions &sessions;
    RateLimits &limits;
    CoachService &coach;
};

/// Whose session it is, or why nobody's.
asio::awaitable<std::variant<Account, Refusal>> whoAsks(Sessions &sessions, const HttpRequest &request)
{
    const auto token = request.bearerToken();
    if (token.empty())
        co_return refusals::signInAgain();
    const auto found = co_await sessions.find(std::string(token));
    if (!found) {
        spdlog::error("coach: a session could not be looked up: {}", found.error().reason);
        co_return refusals::unavailable();
    }
    if (!*found)
        co_return refusals::signInAgain();
    co_return **found;
}

/// How often one account is answered, within one hour and within one day.
struct Quota
{
    std::string key;
    int limit = 0;
    std::chrono::seconds length{0};
    Refusal (*refusal)(std::chrono::seconds retryAfter) = nullptr;
};

std::array<Quota, 2> quotasOf(std::int64_t account, const CoachSettings &settings)
{
    const auto number = std::to_string(account);
    return {Quota{"coach-hour:" + number, settings.perHour, std::chrono::hours(1), refusals::coachHourUsedUp},
            Quota{"coach-day:" + number, settings.perDay, std::chrono::days(1), refusals::coachDayUsedUp}};
}

/// Counts one suggestion before it is asked for: counted afterwards, any number could be under way together.
asio::awaitable<std::optional<Refusal>> takeFrom(const std::array<Quota, 2> &quotas, RateLimits &limits)
{
    for (const auto &quota : quotas) {
        const auto wait = co_await limits.use(quota.key, quota.limit, quota.length);
        if (!wait) {
            spdlog::error("coach: a quota could not be looked up: {}", wait.error().reason);
            co_return refusals::unavailable();
        }
        if (*wait)
            co_return quota.refusal(**wait);
    }
    co_return std::nullopt;
}

/// What certainly has cost nothing. A model that wrote nothing of use, or was too slow, has been paid for,
/// and a topic may be chosen so that it does.
bool isFree(CoachFault fault)
{
    return fault != CoachFault::UnusableAnswer && fault != CoachFault::TimedOut;
}

asio::awaitable<void> giveBackTo(const std::array<Quota, 2> &quotas, RateLimits &limits)
{
    for (const auto &quota : quotas)
        if (const auto given = co_await limits.giveBack(quota.key, quota.length); !given)
            spdlog::warn("coach: a use could not be given back: {}", given.error().reason);
}

/// The suggestion that is asked for, or why there is none.
asio::awaitable<std::variant<Suggestion, Refusal>> suggest(const Parts parts, std::int64_t account,
                                                           SuggestionRequest asked)
{
    if (isTopicTooLong(asked))
        co_return refusals::topicTooLong();
    if (const auto fault = parts.coach.refusal()) // before the quota, of which it is to take nothing
        co_return refusals::coach(*fault);
    const auto quotas = quotasOf(account, parts.coach.settings());
    if (const auto refusal = co_await takeFrom(quotas, parts.limits))
        co_return *refusal;
    auto ended = co_await parts.coach.suggest(std::move(asked));
    if (auto *const suggestion = std::get_if<Suggestion>(&ended))
        co_return std::move(*suggestion);
    const auto fault = std::get<CoachFault>(ended);
    if (isFree(fault))
        co_await giveBackTo(quotas, parts.limits);
    co_return refusals::coach(fault);
}

asio::awaitable<HttpResponse> answer(const Parts parts, const HttpRequest &request)
{
    const auto who = co_await whoAsks(parts.sessions, request);
    if (const auto *const refusal = std::get_if<Refusal>(&who))
        co_return refuse(request, *refusal);
    auto asked = readSuggestionRequest(request.body);
    if (!asked)
        co_return refuse(request, refusals::badRequest());
    HttpRequest reader; // of a refusal: the language that the program is set to, not that of its machine
    reader.language = asked->language;
    reader.wantsJsonErrors = request.wantsJsonErrors;
    const auto ended = co_await suggest(parts, std::get<Account>(who).id, std::move(*asked));
    if (const auto *const refusal = std::get_if<Refusal>(&ended))
        co_return refuse(reader, *refusal);
    HttpResponse response;
    response.body = jsonOf(std::get<Suggestion>(ended));
    co_return response;
}

} // namespace

void addCoachRoutes(Router &router, Sessions &sessions, RateLimits &limits, CoachService &coach)
{
    const Parts parts{sessions, limits, coach};
    router.add("POST", "/api/ai/suggestions",
               [parts](const HttpRequest &request) { return answer(parts, request); });
}
