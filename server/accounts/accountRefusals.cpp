#include "accountRefusals.h"

namespace {

/// "1 секунду", "2 секунды", "5 секунд", "21 секунду": what follows "через".
std::string russianSeconds(long long count)
{
    const auto last = count % 10;
    const bool isTeen = count % 100 / 10 == 1;
    const auto *ending = isTeen || last == 0 || last > 4 ? "" : last == 1 ? "у" : "ы";
    return std::to_string(count) + " секунд" + ending;
}

} // namespace

namespace refusals {

Refusal noAddress()
{
    return {400, {"Enter a valid email.", "Введи корректную почту."}, {}};
}

Refusal wrongCode()
{
    return {401,
            {"The code is wrong or too old. Ask for a new one.", "Код неверный или устарел. Запроси новый."},
            {}};
}

Refusal mailFailed()
{
    return {503,
            {"The mail with the code could not be sent. Try again in a minute.",
             "Не удалось отправить письмо с кодом. Попробуй ещё раз через минуту."},
            {}};
}

CodeTooSoon::CodeTooSoon(std::chrono::seconds wait)
    : m_wait(wait)
    , m_english("A code was sent a moment ago. Ask for a new one in " + std::to_string(wait.count()) +
                (wait.count() == 1 ? " second." : " seconds."))
    , m_russian("Код уже отправлен. Новый можно запросить через " + russianSeconds(wait.count()) + '.')
{}

Refusal CodeTooSoon::refusal() const
{
    return {429, {m_english, m_russian}, m_wait};
}

} // namespace refusals
