#pragma once

#include "Result.h"

#include <QByteArray>
#include <QLocalServer>
#include <QObject>
#include <QTimer>

#include <chrono>

class QLocalSocket;

/// Sees to it that a user runs this program once. The first start holds a lock for as long as it lives and
/// listens; every later one gives it its arguments and ends. The lock goes with its process, however that
/// ends, so a killed program is no obstacle.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    /// How long a later start waits for the first one's confirmation.
    static constexpr std::chrono::milliseconds patience{3000};

    /// Callers served at a time; further ones are turned away, and try again while their patience lasts.
    static constexpr int mostCallers = 16;

    enum class Role {
        First,      ///< this process goes on and calls listen()
        HandedOver, ///< the first one has confirmed; this process ends
    };

    /// `folder` is private to the user and there.
    explicit SingleInstance(const QByteArray &folder, QObject *parent = nullptr);
    ~SingleInstance() override;

    /// Finds out which start this is; a later one hands `arguments` over. Fails where the first one does not
    /// confirm in time or the lock cannot be had. Needs no application object.
    Result<Role> claim(const QStringList &arguments);

    /// Begins to hear later starts. Only after claim() said First. A failure leaves the program usable, but
    /// a later start cannot reach it.
    Result<> listen();

Q_SIGNALS:
    /// A later start has given its arguments; it is confirmed once the signal has been handled.
    void startedAgain(const QStringList &arguments);

private:
    void listenAgain();
    void receive(QLocalSocket *socket);
    void takeBytes(QLocalSocket *socket);

    QByteArray m_lockPath;
    QByteArray m_socketPath;
    QLocalServer m_server;
    QTimer m_listenAgain;
    bool m_isDeaf = false; ///< Qt closed the server
    int m_lock = -1;
    int m_callers = 0;
};
