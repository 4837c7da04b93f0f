#pragma once

#include <QFile>
#include <QRandomGenerator>
#include <QString>

/// A display that no X server has, as ":N". A server that looks for one itself takes the lock of a server
/// that it cannot see, in another process namespace, for a dead one's and cuts that off from its clients. So
/// the number is one that has never been used here, drawn from so many that two rarely draw the same.
inline QString freeDisplay()
{
    while (true) {
        const auto number = QString::number(QRandomGenerator::system()->bounded(1000, 59000));
        if (!QFile::exists(QStringLiteral("/tmp/.X%1-lock").arg(number)) &&
            !QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(number)))
            return u':' + number;
    }
}

/// Takes away what a server that was killed has left of its display ":N".
inline void clearDisplay(const QString &display)
{
    const auto number = display.mid(1);
    QFile::remove(QStringLiteral("/tmp/.X%1-lock").arg(number));
    QFile::remove(QStringLiteral("/tmp/.X11-unix/X%1").arg(number));
}
