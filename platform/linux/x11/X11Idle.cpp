#include "X11Idle.h"

#include <utility>
#include <xcb/screensaver.h>

using namespace Qt::StringLiterals;

X11Idle::X11Idle(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{}

Availability X11Idle::availability() const
{
    auto connected = m_connection->availability();
    if (!connected.works || m_connection->hasScreenSaver())
        return connected;
    return Availability::missing(
        u"The X server of this desktop does not tell how long nobody has touched it."_s,
        u"X-сервер этого рабочего стола не сообщает, как давно его не трогали."_s);
}

std::optional<std::chrono::nanoseconds> X11Idle::sinceLastInput() const
{
    if (!m_connection->hasScreenSaver() || !m_connection->usable())
        return std::nullopt;
    const auto cookie = xcb_screensaver_query_info(m_connection->handle(), m_connection->root());
    const auto info = m_connection->reply<xcb_screensaver_query_info_reply_t>(cookie.sequence);
    if (!info)
        return std::nullopt;
    return std::chrono::milliseconds(info->ms_since_user_input);
}
