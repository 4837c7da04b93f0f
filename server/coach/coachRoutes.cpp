#include "coachRoutes.h"

#include "CoachService.h"
#include "Limit.h"
#include "Router.h"
#include "signedInAccount.h"

#include <array>

namespace {

namespace asio = boost::asio;

struct Parts
{
    Sessions &sessions;
    RateLimits &limits;
    CoachService &coach;
};

/// How often one account is answered, within one hour and within one day.
std::array<Limit, 2> quotasOf(std::int64_t account, const CoachSettings &settings)
{
    const auto number = std::to_string(account);
    return {Limit{"coach-hour:" + number, settings.perHour, std::chrono::hours(1), refusals::coachHourUsedUp},
            Limit{"coach-day:" + number, settings.perDay, std::chrono::days(1), refusals::coachDayUsedUp}};
}

/// What certainly has cost nothing. A model that wrote nothing of use, or was too slow, has been paid for,
/// and a topic may be chosen so that it does.
bool isFree(CoachFault fault)
{
    return fault != CoachFault::UnusableAnswer && fault != CoachFault::TimedOut;
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
    // Counted before it is asked for: counted afterwards, any number could be under way together.
    if (const auto refusal = co_await useEach(parts.limits, quotas))
        co_return *refusal;
    auto ended = co_await parts.coach.suggest(std::move(asked));
    if (auto *const suggestion = std::get_if<Suggestion>(&ended))
        co_return std::move(*suggestion);
    const auto fault = std::get<CoachFault>(ended);
    if (isFree(fault)) {
        for (const auto &quota : quotas)
            co_await giveBack(parts.limits, quota);
    }
    co_return refusals::coach(fault);
}

asio::awaitable<HttpResponse> answer(const Parts parts, const HttpRequest &request)
{
    const auto who = co_await signedInAccount(parts.sessions, request);
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
