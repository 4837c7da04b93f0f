#include "oauthRefusals.h"

namespace refusals {

Refusal providerNotConfigured(std::string_view provider)
{
    if (provider == "yandex")
        return {503,
                {"Sign-in with Yandex is not set up on this server. Sign in by e-mail.",
                 "На этом сервере не настроен вход через Яндекс. Войди по почте."},
                {}};
    return {503,
            {"Sign-in with Google is not set up on this server. Sign in by e-mail.",
             "На этом сервере не настроен вход через Google. Войди по почте."},
            {}};
}

Refusal providerUnavailable()
{
    return {502,
            {"The sign-in service did not answer as it should. Try again in a minute.",
             "Сервис входа ответил не так, как должен. Попробуй ещё раз через минуту."},
            {}};
}

Refusal noVerifiedAddress()
{
    return {400,
            {"This account has no confirmed e-mail address. Confirm one there, or sign in by e-mail.",
             "У этого аккаунта нет подтверждённой почты. Подтверди её там или войди по почте."},
            {}};
}

Refusal signInOver()
{
    return {400,
            {"This sign-in has already been used or took too long. Start it again in Quorvel.",
             "Этот вход уже использован или занял слишком много времени. Начни его заново в Quorvel."},
            {}};
}

Refusal signInCancelled()
{
    return {400,
            {"You have cancelled the sign-in. Start it again in Quorvel whenever you like.",
             "Вход отменён. Начни его заново в Quorvel, когда захочешь."},
            {}};
}

Refusal badCallback()
{
    return {400,
            {"This address is no answer to a sign-in. Start it again in Quorvel.",
             "Этот адрес не похож на ответ сервиса входа. Начни вход заново в Quorvel."},
            {}};
}

} // namespace refusals
