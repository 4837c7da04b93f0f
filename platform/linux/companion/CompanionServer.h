#pragma once

#include "ProcFiles.h"
#include "Result.h"
#include "TabLedger.h"

#include <QByteArray>
#include <QHash>
#include <QLocalServer>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <chrono>
#include <memory>
#include <vector>

class CompanionPeer;
class QLocalSocket;

/// Where the browsers' relays connect: keeps what each has told, in memory, and passes orders on. A peer that
/// breaks the protocol loses its connection at the cost of one line in the log.
class CompanionServer : public QObject
{
    Q_OBJECT

public:
    /// Connections at a time.
    static constexpr std::size_t mostConnections = 64;

    /// Bytes that may wait for a peer that does not read.
    static constexpr qint64 mostUnsentBytes = 4 * 1024 * 1024;

    /// `folder` is the program's private folder, in the file system's encoding. `processes` is where the
    /// system shows its processes. A peer that has not told its windows after `patience` is dropped.
    /// Where the system was too short of files to take a connection, it listens again after
    /// `listenAgainAfter`.
    explicit CompanionServer(const QByteArray &folder, const QString &processes = QStringLiteral("/proc"),
                             std::chrono::milliseconds patience = std::chrono::seconds(30),
                             std::chrono::milliseconds listenAgainAfter = std::chrono::seconds(5),
                             QObject *parent = nullptr);
    ~CompanionServer() override;

    /// Begins to take connections. A socket that is there already is removed: only the one program that holds
    /// the folder's lock may call this.
    Result<> listen();
    bool listening() const { return m_server.isListening(); }

    /// One connection that has told its windows.
    struct Source
    {
        quint64 number = 0; ///< names the connection for good
        const TabLedger *ledger = nullptr;
        quint64 focusClaim = 0; ///< grows with each claim of the keyboard, over all connections
    };

    /// Those of one browser in the order of connecting; good until the next turn of the event loop.
    std::vector<Source> sources(const QString &browser) const;

    /// Names of the browsers that have such a connection, sorted.
    QStringList browsers() const;

    /// Browsers whose last connection spoke another protocol.
    bool speaksAnotherProtocol(const QString &browser) const { return m_otherProtocol.contains(browser); }

    /// Differs whenever that browser's windows, tabs or addresses may be others than before.
    quint64 revision(const QString &browser) const { return m_revisions.value(browser); }

    /// Asks a connection to close these tabs in this order; passed over where it has gone.
    void close(quint64 connection, const std::vector<CompanionTab> &tabs);

private:
    void listenAgain();
    void take(QLocalSocket *socket);
    void takeBytes(CompanionPeer &peer);
    bool takeMessage(CompanionPeer &peer, std::string_view text);
    void send(CompanionPeer &peer, const std::string &message);
    void drop(CompanionPeer &peer, const QString &reason);
    void forget(quint64 number);
    QString browserOf(qintptr socket) const;
    CompanionPeer *find(quint64 number) const;

    QString m_path;
    ProcFiles m_processes;
    std::chrono::milliseconds m_patience;
    QLocalServer m_server;
    QTimer m_listenAgain;
    bool m_isDeaf = false;                               ///< Qt closed the server
    std::vector<std::unique_ptr<CompanionPeer>> m_peers; ///< in the order of connecting
    quint64 m_lastNumber = 0;
    quint64 m_lastClaim = 0;
    QHash<QString, quint64> m_revisions;
    QSet<QString> m_otherProtocol;
};
