#include "SingleInstance.h"

#include "fileSteps.h"
#include "handOver.h"
#include "socketPeer.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QTimer>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_LOGGING_CATEGORY(lcInstance, "quorvel.app.instance")

namespace {

/// How often a later start looks again while the first one is still starting or already ending.
constexpr auto retryPause = 30ms;

/// How soon it listens again after it could not take a caller; well within a caller's patience.
constexpr auto listenAgainAfter = 1s;

/// A caller that says nothing for so long is dropped.
constexpr auto silence = 3s;

Failure cannot(const QString &english, const QString &russian, const QByteArray &path, int error)
{
    const auto name = QFile::decodeName(path);
    const auto reason = FileSteps::failure(error).reason;
    return {u"Cannot %1 \"%2\": %3\n"_s.arg(english, name, reason) +
            u"Не удаётся %1 «%2»: %3"_s.arg(russian, name, reason)};
}

} // namespace

SingleInstance::SingleInstance(const QByteArray &folder, QObject *parent)
    : QObject(parent)
    , m_lockPath(folder + "/lock")
    , m_socketPath(folder + "/socket")
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    m_server.setMaxPendingConnections(mostCallers);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (auto *socket = m_server.nextPendingConnection())
            receive(socket);
    });
    m_listenAgain.setInterval(listenAgainAfter);
    connect(&m_listenAgain, &QTimer::timeout, this, &SingleInstance::listenAgain);
}

SingleInstance::~SingleInstance()
{
    // The socket goes before the lock: whoever gets the lock finds no socket of ours.
    m_server.close();
    if (m_lock >= 0)
        ::close(m_lock);
}

Result<SingleInstance::Role> SingleInstance::claim(const QStringList &arguments)
{
    m_lock = ::open(m_lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_lock < 0)
        return cannot(u"open"_s, u"открыть"_s, m_lockPath, errno);
    const QDeadlineTimer deadline(patience);
    do {
        if (flock(m_lock, LOCK_EX | LOCK_NB) == 0)
            return Role::First;
        if (errno != EWOULDBLOCK && errno != EINTR)
            return cannot(u"lock"_s, u"заблокировать"_s, m_lockPath, errno);
        if (handOver(m_socketPath, arguments, std::chrono::milliseconds(deadline.remainingTime())))
            return Role::HandedOver;
        std::this_thread::sleep_for(retryPause);
    } while (!deadline.hasExpired());
    return Failure{u"Quorvel is already running, but it does not answer.\n"
                   u"Quorvel уже запущен, но не отвечает."_s};
}

Result<> SingleInstance::listen()
{
    const auto path = QFile::decodeName(m_socketPath);
    QLocalServer::removeServer(path); // we hold the lock, so it is a dead program's
    if (!m_server.listen(path))
        return Failure{u"Cannot listen at \"%1\": %2"_s.arg(path, m_server.errorString())};
    m_listenAgain.start();
    return Done{};
}

/// Qt closes the server for good where a single connection could not be taken, as while no file can be
/// opened, and tells nobody.
void SingleInstance::listenAgain()
{
    if (m_server.isListening())
        return;
    if (!std::exchange(m_isDeaf, true))
        qCWarning(lcInstance).noquote() << "later starts are not heard any more:" << m_server.errorString();
    m_isDeaf = !listen();
    if (!m_isDeaf)
        qCWarning(lcInstance) << "later starts are heard again";
}

void SingleInstance::receive(QLocalSocket *socket)
{
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    if (m_callers == mostCallers) {
        qCWarning(lcInstance) << "a start was turned away: there are" << mostCallers << "already";
        socket->abort();
        return;
    }
    ++m_callers;
    connect(socket, &QLocalSocket::disconnected, this, [this] { --m_callers; });
    const auto user = peerUser(int(socket->socketDescriptor()));
    if (user != geteuid()) {
        qCWarning(lcInstance) << "a start of another user was turned away";
        socket->abort();
        return;
    }
    socket->setReadBufferSize(longestHandOver + 8);
    QTimer::singleShot(silence, socket, &QLocalSocket::abort);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] { takeBytes(socket); });
    takeBytes(socket);
}

void SingleInstance::takeBytes(QLocalSocket *socket)
{
    // Bytes stay in the socket's bounded buffer until the message is whole.
    const auto read = readHandOver(socket->peek(longestHandOver + 8));
    if (read.state == ReadHandOver::State::Incomplete)
        return;
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
    if (read.state == ReadHandOver::State::Broken) {
        qCWarning(lcInstance) << "a start gave a message that makes no sense";
        socket->abort();
        return;
    }
    Q_EMIT startedAgain(read.arguments);
    socket->write(&handOverConfirmation, 1);
    socket->disconnectFromServer(); // once the byte is written
}
