#include "coachRefusals.h"

#include <stdexcept>

namespace {

constexpr std::chrono::seconds soon{30};
constexpr std::chrono::seconds later{300};

} // namespace

std::string_view nameOf(CoachFault fault)
{
    switch (fault) {
    case CoachFault::NotConfigured:
        return "not_configured";
    case CoachFault::Busy:
        return "busy";
    case CoachFault::Misconfigured:
        return "misconfigured";
    case CoachFault::Overloaded:
        return "overloaded";
    case CoachFault::Unreachable:
        return "unreachable";
    case CoachFault::TimedOut:
        return "timed_out";
    case CoachFault::UnusableAnswer:
        return "unusable_answer";
    }
    throw std::logic_error("no such fault of the coach");
}

namespace refusals {

Refusal coach(CoachFault fault)
{
    switch (fault) {
    case CoachFault::NotConfigured:
        return {503, {"This server has no AI coach.", "На этом сервере нет ИИ-тренера."}, {}};
    case CoachFault::Busy:
        return {503,
                {"Too many students are asking the AI coach right now. Try again in a minute.",
                 "Сейчас ИИ-тренера спрашивает слишком много людей. Попробуй ещё раз через минуту."},
                soon};
    case CoachFault::Misconfigured:
        return {503,
                {"The AI coach does not work on this server right now. Try again later.",
                 "ИИ-тренер сейчас не работает на этом сервере. Попробуй позже."},
                later};
    case CoachFault::Overloaded:
        return {503,
                {"The AI coach is overloaded right now. Try again in a few minutes.",
                 "ИИ-тренер сейчас перегружен. Попробуй ещё раз через несколько минут."},
                later};
    case CoachFault::Unreachable:
        return {502,
                {"The AI coach cannot be reached right now. Try again in a few minutes.",
                 "Связаться с ИИ-тренером сейчас не получается. Попробуй ещё раз через несколько минут."},
                {}};
    case CoachFault::TimedOut:
        return {504,
                {"The AI coach did not answer in time. Try again in a few minutes.",
                 "ИИ-тренер не успел ответить. Попробуй ещё раз через несколько минут."},
                {}};
    case CoachFault::UnusableAnswer:
        return {502,
                {"The AI coach gave no usable answer. Try again or put the topic in other words.",
                 "ИИ-тренер ответил непонятно. Попробуй ещё раз или сформулируй тему иначе."},
                {}};
    }
    throw std::logic_error("no such fault of the coach");
}

Refusal topicTooLong()
{
    return {400,
            {"The topic is too long for the AI coach. Shorten it to 2,000 characters.",
             "Тема слишком длинная для ИИ-тренера. Сократи её до 2000 символов."},
            {}};
}

Refusal coachHourUsedUp(std::chrono::seconds retryAfter)
{
    return {429,
            {"You have asked the AI coach as often as it answers within an hour. Try again later.",
             "Лимит запросов к ИИ-тренеру на этот час исчерпан. Попробуй позже."},
            retryAfter};
}

Refusal coachDayUsedUp(std::chrono::seconds retryAfter)
{
    return {429,
            {"You have asked the AI coach as often as it answers within a day. Try again tomorrow.",
             "Лимит запросов к ИИ-тренеру на сегодня исчерпан. Попробуй завтра."},
            retryAfter};
}

} // namespace refusals
