#pragma once

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>

/// The whole web, for browsers that are told to use it as their proxy: answers for every host on loopback and
/// lets nothing through to anywhere else. A page's title ends in its host and path.
///
/// Most paths are plain pages. Some do more:
///   /ask      wants a confirmation before it is left, once it was clicked; a click is seen as "/clicked"
///   /hang     never answers its browser again, after it has been shown
///   /slow     comes only when release() is called
///   /gate     moves on to the address that release() names; being ready for that is seen as "/ready"
///   /remote   opens what open() tells it to
/// A plain page that is shown asks for "/shown" of its host, so that a test knows.
class PageServer : public QObject
{
    Q_OBJECT

public:
    PageServer();

    bool works() const { return m_server.isListening(); }
    quint16 port() const { return m_server.serverPort(); }

    /// What was asked for so far, as host and path.
    const QStringList &asked() const { return m_asked; }

    /// How often this was asked for, for example "a.test/shown".
    qsizetype asked(const QString &hostAndPath) const { return m_asked.count(hostAndPath); }

    /// Answers all that wait: slow pages, and pages at their gate, which move on to `next`.
    void release(const QString &next = {});

    /// Has the page /remote open the address in a new tab, or in a window of its own.
    void open(const QString &url, bool ownWindow = false);

private:
    void accept();
    void answer(QTcpSocket *socket, const QByteArray &head);
    static void send(QTcpSocket *socket, const QByteArray &body);
    void sendCommands();

    QTcpServer m_server;
    QStringList m_asked;
    QList<QPointer<QTcpSocket>> m_slow;
    QList<QPointer<QTcpSocket>> m_gates;
    QPointer<QTcpSocket> m_remote; ///< the page /remote, while it waits for a command
    QList<QByteArray> m_commands;
};
