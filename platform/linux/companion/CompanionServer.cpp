#include "CompanionServer.h"

#include "browserNames.h"
#include "companionIdentity.h"
#include "frames.h"
#include "socketPeer.h"

#include <QFile>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QTimer>

#include <algorithm>
#include <unistd.h>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcCompanion, "quorvel.companion")

namespace {

/// Bytes that a socket takes in between two turns of the event loop, so that a peer that never stops leaves
/// the others theirs.
constexpr qint64 bytesAtATime = 64 * 1024;

/// Lets go of a socket for good; nothing of it is heard after this.
void release(QLocalSocket *socket)
{
    socket->disconnect();
    socket->abort();
    socket->deleteLater();
}

bool claimsFocus(const CompanionMessage &message)
{
    if (const auto *focus = std::get_if<FocusMessage>(&message))
        return focus->window.has_value();
    const auto *windows = std::get_if<WindowsMessage>(&message);
    return windows && windows->focused;
}

} // namespace

/// One connection.
class CompanionPeer
{
public:
    CompanionPeer(quint64 ownNumber, QLocalSocket *ownSocket, const QString &itsBrowser)
        : number(ownNumber)
        , socket(ownSocket)
        , browser(itsBrowser)
    {}
    ~CompanionPeer() { release(socket); }
    CompanionPeer(const CompanionPeer &) = delete;
    CompanionPeer &operator=(const CompanionPeer &) = delete;

    const quint64 number;
    QLocalSocket *const socket;
    const QString browser; ///< empty where it is none that has a name here
    FrameReader frames{longestFrameFromBrowser};
    TabLedger ledger;
    quint64 focusClaim = 0;
};

CompanionServer::CompanionServer(const QByteArray &folder, const QString &processes,
                                 std::chrono::milliseconds patience,
                                 std::chrono::milliseconds listenAgainAfter, QObject *parent)
    : QObject(parent)
    , m_path(QFile::decodeName(folder) + u'/' + QLatin1StringView(companionSocketName))
    , m_processes(processes)
    , m_patience(patience)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    m_server.setMaxPendingConnections(int(mostConnections));
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (auto *socket = m_server.nextPendingConnection())
            take(socket);
    });
    m_listenAgain.setInterval(listenAgainAfter);
    connect(&m_listenAgain, &QTimer::timeout, this, &CompanionServer::listenAgain);
}

CompanionServer::~CompanionServer()
{
    m_server.close(); // takes the socket's name away
}

Result<> CompanionServer::listen()
{
    QLocalServer::removeServer(m_path);
    if (!m_server.listen(m_path))
        return Failure{m_server.errorString()};
    m_listenAgain.start();
    return Done{};
}

/// Qt closes the server for good where a single connection could not be taken, and tells nobody.
void CompanionServer::listenAgain()
{
    if (m_server.isListening())
        return;
    if (!std::exchange(m_isDeaf, true))
        qCWarning(lcCompanion).noquote() << "browsers cannot connect any more:" << m_server.errorString();
    m_isDeaf = !listen();
    if (!m_isDeaf)
        qCWarning(lcCompanion) << "browsers can connect again";
}

std::vector<CompanionServer::Source> CompanionServer::sources(const QString &browser) const
{
    std::vector<Source> found;
    for (const auto &peer : m_peers) {
        if (peer->browser == browser && !browser.isEmpty() && peer->ledger.told())
            found.push_back({peer->number, &peer->ledger, peer->focusClaim});
    }
    return found;
}

QStringList CompanionServer::browsers() const
{
    QStringList names;
    for (const auto &peer : m_peers) {
        if (!peer->browser.isEmpty() && peer->ledger.told() && !names.contains(peer->browser))
            names.append(peer->browser);
    }
    names.sort();
    return names;
}

void CompanionServer::close(quint64 connection, const std::vector<CompanionTab> &tabs)
{
    for (const auto &order : encodeClose(tabs)) {
        if (auto *peer = find(connection)) // the last order may have been one too many for it
            send(*peer, order);
    }
}

void CompanionServer::take(QLocalSocket *socket)
{
    if (peerUser(int(socket->socketDescriptor())) != geteuid()) {
        qCWarning(lcCompanion) << "a connection of another user was turned away";
        release(socket);
        return;
    }
    if (m_peers.size() == mostConnections) {
        qCWarning(lcCompanion) << "a connection was turned away: there are" << mostConnections << "already";
        release(socket);
        return;
    }
    const auto number = ++m_lastNumber;
    m_peers.push_back(std::make_unique<CompanionPeer>(number, socket, browserOf(socket->socketDescriptor())));
    socket->setReadBufferSize(bytesAtATime);
    connect(socket, &QLocalSocket::readyRead, this, [this, number] {
        if (auto *peer = find(number))
            takeBytes(*peer);
    });
    connect(socket, &QLocalSocket::disconnected, this, [this, number] { forget(number); });
    QTimer::singleShot(m_patience, socket, [this, number] {
        if (auto *peer = find(number); peer && !peer->ledger.told())
            drop(*peer, u"it has told nothing"_s);
    });
    send(*m_peers.back(), encodeWelcome());
    if (auto *peer = find(number))
        takeBytes(*peer);
}

void CompanionServer::takeBytes(CompanionPeer &peer)
{
    const auto bytes = peer.socket->readAll();
    peer.frames.append({bytes.constData(), std::size_t(bytes.size())});
    while (const auto text = peer.frames.next()) {
        if (!takeMessage(peer, *text))
            return;
    }
    if (peer.frames.broken())
        drop(peer, u"a frame is empty or too long"_s);
}

/// Says whether the connection goes on.
bool CompanionServer::takeMessage(CompanionPeer &peer, std::string_view text)
{
    auto message = decodeCompanionMessage(text);
    if (!message) {
        drop(peer, u"a message "_s + message.reason());
        return false;
    }
    if (const auto *hello = std::get_if<HelloMessage>(&message.value())) {
        if (hello->protocol != companionProtocol) {
            m_otherProtocol.insert(peer.browser);
            drop(peer, u"it speaks protocol %1, not %2"_s.arg(hello->protocol).arg(companionProtocol));
            return false;
        }
        m_otherProtocol.remove(peer.browser);
    }
    const bool claims = claimsFocus(message.value());
    switch (peer.ledger.apply(message.value())) {
    case TabLedger::Outcome::Broken:
        drop(peer, u"it tells of too many windows or tabs, or of one twice"_s);
        return false;
    case TabLedger::Outcome::PassedOver:
        qCDebug(lcCompanion) << "a message out of turn or of something unknown was passed over";
        return true;
    case TabLedger::Outcome::List:
        ++m_revisions[peer.browser];
        break;
    case TabLedger::Outcome::Front:
        break;
    }
    if (claims)
        peer.focusClaim = ++m_lastClaim;
    return true;
}

void CompanionServer::send(CompanionPeer &peer, const std::string &message)
{
    const auto frame = writeFrame(message);
    peer.socket->write(frame.data(), qint64(frame.size()));
    if (peer.socket->bytesToWrite() > mostUnsentBytes)
        drop(peer, u"it does not read what it is told"_s);
}

void CompanionServer::drop(CompanionPeer &peer, const QString &reason)
{
    const auto name = peer.browser.isEmpty() ? u"an unknown browser"_s : peer.browser;
    qCWarning(lcCompanion).noquote() << "the connection of" << name << "was closed:" << reason;
    forget(peer.number);
}

void CompanionServer::forget(quint64 number)
{
    const auto found = std::find_if(m_peers.begin(), m_peers.end(),
                                    [number](const auto &peer) { return peer->number == number; });
    if (found == m_peers.end())
        return;
    ++m_revisions[(*found)->browser];
    m_peers.erase(found);
}

/// The relay is the browser's child, and its program tells which browser that is.
QString CompanionServer::browserOf(qintptr socket) const
{
    const auto relay = peerProcess(int(socket));
    const auto state = relay ? m_processes.state(*relay) : std::nullopt;
    const auto executable = state ? m_processes.executable(state->parent) : QString();
    if (const auto name = supportedBrowserName({}, executable))
        return *name;
    if (const auto name = furtherBrowserName({}, executable))
        return *name;
    qCDebug(lcCompanion) << "a connection comes from no browser that is known:" << executable;
    return {};
}

CompanionPeer *CompanionServer::find(quint64 number) const
{
    const auto found = std::find_if(m_peers.begin(), m_peers.end(),
                                    [number](const auto &peer) { return peer->number == number; });
    return found == m_peers.end() ? nullptr : found->get();
}
