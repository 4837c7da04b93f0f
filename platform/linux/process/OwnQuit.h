#pragma once

#include <QDBusConnection>

#include <functional>
#include <vector>

/// The way to quit that an application offers itself on the session bus: a media player's
/// org.mpris.MediaPlayer2.Quit or the "quit" action of a GTK application. Never waits and never starts
/// anything.
class OwnQuit
{
public:
    explicit OwnQuit(const QDBusConnection &bus);

    /// The bus of this session if one is there to connect to; never starts one.
    static OwnQuit ofThisSession();

    /// Asks those of `processes` that offer it; `desktopId` may be empty. Calls `answered` later, after a few
    /// seconds at most, with whether any was asked; at once where there is no bus.
    void ask(const QString &desktopId, const std::vector<qint32> &processes,
             std::function<void(bool)> answered);

private:
    QDBusConnection m_bus;
};
