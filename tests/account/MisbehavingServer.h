#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QProcess>
#include <QString>

/// server/misbehavingServer.py in a process of its own, which ends with this object and with the test.
class MisbehavingServer
{
public:
    /// `certificateAndKey` is the path of a PEM file; empty: no TLS. False where the server does not start.
    bool start(const QString &certificateAndKey = {});
    ~MisbehavingServer();

    /// The base address for the client, such as "http://127.0.0.1:40001/api".
    QString base(const QString &scheme = QStringLiteral("http")) const;
    quint16 port(const QString &scheme = QStringLiteral("http")) const;

    void release(const QByteArray &name); ///< lets a held answer go
    void forget();                        ///< what was received so far

    const QList<QByteArray> &requests() { return read(), m_requests; } ///< whole ones, as they came
    int gone() { return read(), m_gone; } ///< clients that closed what was left hanging

private:
    void read();
    void take(const QByteArray &line);

    QProcess m_process;
    QHash<QByteArray, quint16> m_ports;
    QList<QByteArray> m_requests;
    int m_gone = 0;
};
