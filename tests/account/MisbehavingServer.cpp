#include "MisbehavingServer.h"

#include "patience.h"

using namespace Qt::StringLiterals;

bool MisbehavingServer::start(const QString &certificateAndKey)
{
    QStringList arguments{u"-B"_s, QStringLiteral(MISBEHAVING_SERVER)};
    if (!certificateAndKey.isEmpty())
        arguments.append(certificateAndKey);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(u"/usr/bin/python3"_s, arguments);
    const qsizetype ports = certificateAndKey.isEmpty() ? 1 : 2;
    while (m_ports.size() < ports) {
        if (!m_process.waitForReadyRead(patience))
            return false;
        read();
    }
    return true;
}

MisbehavingServer::~MisbehavingServer()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished(patience);
}

QString MisbehavingServer::base(const QString &scheme) const
{
    return scheme + u"://127.0.0.1:"_s + QString::number(port(scheme)) + u"/api"_s;
}

quint16 MisbehavingServer::port(const QString &scheme) const
{
    return m_ports.value(scheme.toLatin1());
}

void MisbehavingServer::release(const QByteArray &name)
{
    m_process.write("release " + name + '\n');
}

void MisbehavingServer::forget()
{
    read();
    m_requests.clear();
    m_gone = 0;
}

void MisbehavingServer::read()
{
    while (m_process.canReadLine())
        take(m_process.readLine().trimmed());
}

void MisbehavingServer::take(const QByteArray &line)
{
    const auto words = line.split(' ');
    if (words[0] == "port")
        m_ports.insert(words[1], words[2].toUShort());
    else if (words[0] == "request")
        m_requests.append(QByteArray::fromHex(words[1]));
    else if (words[0] == "gone")
        ++m_gone;
}
