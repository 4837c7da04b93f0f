#include "StatusPlace.h"

#include <QLoggingCategory>

#include <utility>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcStatusPlace, "quorvel.app.statusplace")

StatusPlace::StatusPlace(const QDBusConnection &bus, std::function<bool()> ask,
                         std::chrono::milliseconds askEvery, QObject *parent)
    : QObject(parent)
    , m_ask(std::move(ask))
    , m_there(m_ask())
{
    const auto keeper = u"org.kde.StatusNotifierWatcher"_s;
    if (bus.isConnected()) {
        m_keeper.setConnection(bus);
        m_keeper.addWatchedService(keeper);
        connect(&m_keeper, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusPlace::look);
        // A keeper is there before the panel that shows what it keeps.
        const auto path = u"/StatusNotifierWatcher"_s;
        for (const auto &told : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s})
            QDBusConnection(bus).connect(keeper, path, keeper, told, this, SLOT(look()));
    }
    connect(&m_seldom, &QTimer::timeout, this, &StatusPlace::look);
    m_seldom.start(askEvery);
    if (!m_there)
        qCInfo(lcStatusPlace) << "this desktop has no place for status items";
}

Availability StatusPlace::availability() const
{
    if (m_there)
        return Availability::working();
    return Availability::missing(
        u"This desktop has no place for status items; everything is in this window."_s,
        u"В этой системе нет места для значков состояния; всё есть в этом окне."_s);
}

void StatusPlace::look()
{
    if (std::exchange(m_there, m_ask()) == m_there)
        return;
    qCInfo(lcStatusPlace) << (m_there ? "there is a place for status items"
                                      : "the place for status items is gone");
    Q_EMIT changed();
}
