#include "Refusal.h"

namespace refusals {

Refusal unavailable()
{
    return {503,
            {"The service has a problem right now. Try again in a minute.",
             "Сервис сейчас не работает. Попробуй ещё раз через минуту."},
            {}};
}

Refusal badRequest()
{
    return {400,
            {"The service did not understand this request. Update Quorvel and try again.",
             "Сервис не понял запрос. Обнови Quorvel и попробуй ещё раз."},
            {}};
}

Refusal signInAgain()
{
    return {401,
            {"Your sign-in is no longer valid. Sign out and sign in again.",
             "Вход больше не действует. Выйди из аккаунта и войди снова."},
            {}};
}

Refusal tooMany(std::chrono::seconds retryAfter)
{
    return {429,
            {"Too many attempts. Wait a little and try again.",
             "Слишком много попыток. Подожди немного и попробуй ещё раз."},
            retryAfter};
}

} // namespace refusals
