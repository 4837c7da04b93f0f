#include "httpRefusals.h"

namespace refusals {

Refusal notFound()
{
    return {404,
            {"There is nothing at this address. Update Quorvel and try again.",
             "По этому адресу ничего нет. Обнови Quorvel и попробуй ещё раз."},
            {}};
}

Refusal methodNotAllowed()
{
    return {405,
            {"This address does not take such a request. Update Quorvel and try again.",
             "Этот адрес не принимает такие запросы. Обнови Quorvel и попробуй ещё раз."},
            {}};
}

Refusal tooSlow()
{
    return {408,
            {"The request came too slowly. Check your connection and try again.",
             "Запрос шёл слишком долго. Проверь соединение и попробуй ещё раз."},
            {}};
}

Refusal bodyTooLarge()
{
    return {413,
            {"The request is too large. Shorten the text and try again.",
             "Запрос слишком большой. Сократи текст и попробуй ещё раз."},
            {}};
}

Refusal targetTooLong()
{
    return {414, {"The address of the request is too long.", "Адрес запроса слишком длинный."}, {}};
}

Refusal notJson()
{
    return {415,
            {"The service takes JSON only. Update Quorvel and try again.",
             "Сервис принимает только JSON. Обнови Quorvel и попробуй ещё раз."},
            {}};
}

Refusal unknownExpectation()
{
    return {417,
            {"The service cannot do what the request expects of it.",
             "Сервис не может выполнить то, чего ждёт запрос."},
            {}};
}

Refusal headTooLarge()
{
    return {431, {"The headers of the request are too large.", "Заголовки запроса слишком большие."}, {}};
}

Refusal notImplemented()
{
    return {501,
            {"The service does not know this kind of request.", "Сервис не знает такого вида запросов."},
            {}};
}

Refusal unknownVersion()
{
    return {505, {"The service speaks HTTP 1.1 only.", "Сервис понимает только HTTP 1.1."}, {}};
}

Refusal tookTooLong()
{
    return {504,
            {"The service took too long to answer. Try again in a minute.",
             "Сервис не успел ответить. Попробуй ещё раз через минуту."},
            {}};
}

Refusal tooManyConnections()
{
    return {503,
            {"The service is very busy right now. Try again in a minute.",
             "Сервис сейчас очень занят. Попробуй ещё раз через минуту."},
            std::chrono::seconds(60)};
}

} // namespace refusals
