#pragma once

#include "Availability.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

/// Whether this desktop has a place for status items. To ask costs a new connection to the session bus and a
/// wait for its answer, so it is asked when the place's keeper on the bus comes or goes, and seldom besides,
/// for places of the older kind, which are no services of the bus.
class StatusPlace : public QObject
{
    Q_OBJECT

public:
    /// `ask` answers at that moment; it is asked at once.
    StatusPlace(const QDBusConnection &bus, std::function<bool()> ask,
                std::chrono::milliseconds askEvery = std::chrono::minutes(1), QObject *parent = nullptr);

    Availability availability() const;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void look();

private:
    std::function<bool()> m_ask;
    QDBusServiceWatcher m_keeper;
    QTimer m_seldom;
    bool m_there = false;
};
