#include "PageServer.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

QByteArray script(const QByteArray &path)
{
    if (path == "/ask")
        return "addEventListener('beforeunload', event => { event.preventDefault(); event.returnValue = 'x'; "
               "});"
               "addEventListener('click', () => fetch('/clicked'));";
    if (path == "/hang") // the address has come to stay before it hangs
        return "addEventListener('load', () => setTimeout(() => {"
               "  const request = new XMLHttpRequest(); request.open('GET', '/hanging', false); "
               "request.send();"
               "  for (;;) {} }, 300));";
    if (path == "/gate")
        return "fetch('/waiting').then(answer => answer.text()).then(url => { location.href = url; });"
               "addEventListener('load', () => fetch('/ready'));";
    if (path == "/remote")
        return "(async () => { for (;;) {"
               "  const [kind, url] = (await (await fetch('/commands')).text()).split(' ');"
               "  window.open(url, '_blank', kind === 'window' ? 'popup,noopener' : 'noopener');"
               "} })();";
    return "addEventListener('load', () => fetch('/shown'));";
}

QByteArray page(const QByteArray &host, const QByteArray &path)
{
    // Firefox does not show a title that looks like an address.
    return "<!doctype html><meta charset=utf-8><title>Page " + host + path.toPercentEncoding("/") +
           "</title><link rel=icon href='data:,'><h1>" + host + "</h1><script>" + script(path) + "</script>";
}

} // namespace

PageServer::PageServer()
{
    connect(&m_server, &QTcpServer::newConnection, this, &PageServer::accept);
    m_server.listen(QHostAddress::LocalHost);
}

void PageServer::accept()
{
    while (auto *socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            const auto bytes = socket->peek(64 * 1024);
            if (const auto end = bytes.indexOf("\r\n\r\n"); end >= 0)
                answer(socket, socket->read(end + 4));
        });
    }
}

void PageServer::answer(QTcpSocket *socket, const QByteArray &head)
{
    // To a proxy a browser says "GET http://host/path HTTP/1.1". All else belongs to its own errands.
    const auto words = head.left(head.indexOf('\r')).split(' ');
    const QUrl url(QString::fromLatin1(words.value(1)));
    if (words.value(0) != "GET" || url.scheme() != u"http") {
        socket->write("HTTP/1.1 502 Bad Gateway\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
        return;
    }
    const auto path = url.path().toLatin1();
    m_asked.append(url.host() + url.path());
    if (path == "/slow") {
        m_slow.append(socket);
    } else if (path == "/waiting") {
        m_gates.append(socket);
    } else if (path == "/commands") {
        m_remote = socket;
        sendCommands();
    } else {
        send(socket, page(url.host().toLatin1(), path));
    }
}

void PageServer::send(QTcpSocket *socket, const QByteArray &body)
{
    socket->write(
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nCache-Control: no-store\r\nContent-Length: " +
        QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
    socket->disconnectFromHost();
}

void PageServer::release(const QString &next)
{
    for (const auto &socket : std::exchange(m_slow, {})) {
        if (socket)
            send(socket, page("slow.test", "/"));
    }
    for (const auto &socket : std::exchange(m_gates, {})) {
        if (socket)
            send(socket, next.toLatin1());
    }
}

void PageServer::open(const QString &url, bool ownWindow)
{
    m_commands.append((ownWindow ? "window " : "tab ") + url.toLatin1());
    sendCommands();
}

void PageServer::sendCommands()
{
    if (m_remote && !m_commands.isEmpty())
        send(std::exchange(m_remote, nullptr), m_commands.takeFirst());
}
