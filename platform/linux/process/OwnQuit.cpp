#include "OwnQuit.h"

#include "processLog.h"
#include "sessionBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int longestAnswer = 1000; // ms; nobody waits, but the request to end must not come much later

using Reply = std::function<void(const QDBusMessage &)>;

const QString player = u"org.mpris.MediaPlayer2"_s;
const QString actions = u"org.gtk.Actions"_s;

/// One round of questions. It lives as long as a question is open and tells the outcome when the last closes.
class Round : public std::enable_shared_from_this<Round>
{
public:
    Round(const QDBusConnection &bus, std::vector<qint32> processes, std::function<void(bool)> answered)
        : m_bus(bus)
        , m_processes(std::move(processes))
        , m_answered(std::move(answered))
    {}
    Round(const Round &) = delete;
    Round &operator=(const Round &) = delete;
    ~Round() { m_answered(m_asked); }

    void start(const QString &desktopId)
    {
        send(busCall(u"ListNames"_s, {}), [this, desktopId](const QDBusMessage &reply) {
            const auto names = reply.arguments().value(0).toStringList();
            for (const auto &name : names) {
                if (name.startsWith(player + u'.'))
                    ifOurs(name, [this, name] { quitPlayer(name); });
                else if (name == desktopId)
                    ifOurs(name, [this, name] { quitGtk(name); });
            }
        });
    }

private:
    static QDBusMessage busCall(const QString &method, const QVariantList &arguments)
    {
        const auto bus = u"org.freedesktop.DBus"_s;
        return withArguments(QDBusMessage::createMethodCall(bus, u"/org/freedesktop/DBus"_s, bus, method),
                             arguments);
    }
    static QDBusMessage withArguments(QDBusMessage message, const QVariantList &arguments)
    {
        message.setArguments(arguments);
        message.setAutoStartService(false);
        return message;
    }

    void send(const QDBusMessage &message, const Reply &onReply)
    {
        auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, longestAnswer));
        // The round is held by its open questions alone.
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                         [self = shared_from_this(), onReply](QDBusPendingCallWatcher *finished) {
                             finished->deleteLater();
                             if (!finished->isError())
                                 onReply(finished->reply());
                         });
    }
    void ifOurs(const QString &name, const std::function<void()> &then)
    {
        send(busCall(u"GetConnectionUnixProcessID"_s, {name}), [this, then](const QDBusMessage &reply) {
            const auto process = qint32(reply.arguments().value(0).toUInt());
            if (std::find(m_processes.begin(), m_processes.end(), process) != m_processes.end())
                then();
        });
    }
    void quitPlayer(const QString &name)
    {
        const auto path = u"/org/mpris/MediaPlayer2"_s;
        const auto ask =
            QDBusMessage::createMethodCall(name, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        send(withArguments(ask, {player, u"CanQuit"_s}), [this, name, path](const QDBusMessage &reply) {
            if (!qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant().toBool())
                return;
            quit(withArguments(QDBusMessage::createMethodCall(name, path, player, u"Quit"_s), {}));
        });
    }
    void quitGtk(const QString &name)
    {
        auto path = u'/' + name;
        path.replace(u'.', u'/').replace(u'-', u'_');
        const auto ask = QDBusMessage::createMethodCall(name, path, actions, u"Describe"_s);
        // An application without such an action answers with an error.
        send(withArguments(ask, {u"quit"_s}), [this, name, path](const QDBusMessage &) {
            const auto message = QDBusMessage::createMethodCall(name, path, actions, u"Activate"_s);
            quit(withArguments(message, {u"quit"_s, QVariant::fromValue(QVariantList()),
                                         QVariant::fromValue(QVariantMap())}));
        });
    }
    void quit(const QDBusMessage &message)
    {
        qCDebug(logProcess) << "asking" << message.service() << "to quit itself";
        m_bus.asyncCall(message, longestAnswer);
        m_asked = true;
    }

    QDBusConnection m_bus;
    std::vector<qint32> m_processes;
    std::function<void(bool)> m_answered;
    bool m_asked = false;
};

} // namespace

OwnQuit::OwnQuit(const QDBusConnection &bus)
    : m_bus(bus)
{}

OwnQuit OwnQuit::ofThisSession()
{
    return OwnQuit(sessionBusIfThere());
}

void OwnQuit::ask(const QString &desktopId, const std::vector<qint32> &processes,
                  std::function<void(bool)> answered)
{
    if (!m_bus.isConnected()) {
        answered(false);
        return;
    }
    std::make_shared<Round>(m_bus, processes, std::move(answered))->start(desktopId);
}
