#include "handOver.h"

#include "FileHandle.h"
#include "quorvelUrls.h"
#include "socketPeer.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qsizetype lengthBytes = 4;

bool connectTo(int socket, const QByteArray &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= qsizetype(sizeof address.sun_path))
        return false;
    memcpy(address.sun_path, path.constData(), size_t(path.size()));
    return connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

bool waitFor(int socket, short events, const QDeadlineTimer &deadline)
{
    pollfd poll{socket, events, 0};
    int ready = 0;
    do {
        ready = ::poll(&poll, 1, int(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR && !deadline.hasExpired());
    return ready > 0;
}

bool sendAll(int socket, const QByteArray &bytes, const QDeadlineTimer &deadline)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const auto step = send(socket, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        const bool mayGoOn = step > 0 || errno == EAGAIN || errno == EINTR;
        if (!mayGoOn || (step <= 0 && !waitFor(socket, POLLOUT, deadline)))
            return false;
        sent += qMax<qsizetype>(step, 0);
    }
    return true;
}

QByteArray listText(const QStringList &texts)
{
    return QJsonDocument(QJsonArray::fromStringList(texts)).toJson(QJsonDocument::Compact);
}

} // namespace

QByteArray writeHandOver(const QStringList &arguments)
{
    auto text = listText(arguments);
    if (text.size() > longestHandOver)
        text = listText(quorvelUrls(arguments).isEmpty() ? QStringList() : QStringList{u"quorvel:"_s});
    QByteArray message(lengthBytes, Qt::Uninitialized);
    qToBigEndian(quint32(text.size()), message.data());
    return message + text;
}

ReadHandOver readHandOver(const QByteArray &bytes)
{
    using State = ReadHandOver::State;
    if (bytes.size() < lengthBytes)
        return {};
    const auto length = qint64(qFromBigEndian<quint32>(bytes.constData()));
    if (length > longestHandOver || bytes.size() > lengthBytes + length)
        return {State::Broken, {}};
    if (bytes.size() < lengthBytes + length)
        return {};
    const auto document = QJsonDocument::fromJson(bytes.mid(lengthBytes));
    if (!document.isArray())
        return {State::Broken, {}};
    ReadHandOver read{State::Complete, {}};
    const auto entries = document.array();
    for (const auto &entry : entries) {
        if (!entry.isString())
            return {State::Broken, {}};
        read.arguments.append(entry.toString());
    }
    return read;
}

bool handOver(const QByteArray &path, const QStringList &arguments, std::chrono::milliseconds patience)
{
    const QDeadlineTimer deadline(patience);
    const auto message = writeHandOver(arguments);
    const FileHandle handle(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int server = handle.descriptor();
    if (!handle || !connectTo(server, path) || peerUser(server) != geteuid())
        return false;
    if (!sendAll(server, message, deadline) || !waitFor(server, POLLIN, deadline))
        return false;
    char answer = 0;
    return recv(server, &answer, 1, 0) == 1 && answer == handOverConfirmation;
}
