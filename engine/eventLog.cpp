#include "Clock.h"
#include "QuorvelController.h"
#include "eventTime.h"

namespace {

constexpr qsizetype mostEvents = 8;

} // namespace

void QuorvelController::addEvent(const QString &message)
{
    m_recentEventModel.prepend(
        eventTimeText(m_ports.clock.now().time(), QLocale::system()) + QChar::Space + message, mostEvents);
    m_recentEvents = m_recentEventModel.lines();
}
