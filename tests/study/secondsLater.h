#pragma once

#include <QDateTime>

/// A moment that many seconds after one of January 2027.
inline QDateTime second(int count)
{
    return QDateTime::fromSecsSinceEpoch(1'800'000'000 + count, Qt::UTC);
}
