#include "Clock.h"
#include "QuorvelController.h"
#include "eventTime.h"

namespace {

constexpr qsizetype mostEvents = 8;

} // namespace

void QuorvelController::addEvent(const QString &message)
{
    auto events = recentEvents();
    events.prepend(eventTimeText(m_ports.clock.now().time(), QLocale::system()) + QChar::Space + message);
    while (events.size() > mostEvents)
        events.removeLast();
    m_recentEvents = events;
}
