#pragma once

#include "Clock.h"

#include <QTimeZone>

/// A clock that stands still until it is moved. Starts on Tuesday 2026-03-10 at 12:00:00 UTC.
class FakeClock : public Clock
{
public:
    QDateTime now() const override { return QDateTime::fromMSecsSinceEpoch(m_wallMs, m_zone); }
    std::chrono::nanoseconds elapsed() const override { return m_elapsed; }

    /// Time passes: both the wall clock and the stopwatch go on.
    void advance(std::chrono::milliseconds by)
    {
        m_wallMs += by.count();
        m_elapsed += by;
    }
    /// The machine sleeps: only the wall clock goes on.
    void suspend(std::chrono::milliseconds by) { m_wallMs += by.count(); }
    void setWallClock(const QDateTime &to) { m_wallMs = to.toMSecsSinceEpoch(); }
    void setTimeZone(const QTimeZone &zone) { m_zone = zone; }

private:
    qint64 m_wallMs = QDateTime(QDate(2026, 3, 10), QTime(12, 0), Qt::UTC).toMSecsSinceEpoch();
    QTimeZone m_zone = QTimeZone::utc();
    std::chrono::nanoseconds m_elapsed{0};
};
