#include "OwnQuit.h"
#include "suite.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Answers like an application that can be asked to quit, and remembers what it was told.
class Offering : public QDBusVirtualObject
{
public:
    QStringList told;
    bool canQuit = true;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        told << message.path() + u' ' + message.member();
        if (message.member() == "Get"_L1)
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(canQuit))));
        else if (message.member() == "Describe"_L1 && !canQuit)
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, u"no such action"_s));
        else
            connection.send(message.createReply());
        return true;
    }
};

} // namespace

class TestOwnQuit : public QObject
{
    Q_OBJECT

    QProcess m_bus;
    QString m_address;

    /// Asks with what a desktop id and these processes offer; none while the answer is out.
    std::optional<bool> ask(const QString &desktopId, const std::vector<qint32> &processes) const
    {
        OwnQuit quit(QDBusConnection::connectToBus(m_address, u"asker"_s));
        std::optional<bool> asked;
        quit.ask(desktopId, processes, [&](bool any) { asked = any; });
        [&] { QTRY_VERIFY(asked); }();
        return asked;
    }
    QDBusConnection offer(Offering &offering, const QString &name) const
    {
        auto connection = QDBusConnection::connectToBus(m_address, u"offering"_s);
        connection.registerVirtualObject(u"/"_s, &offering, QDBusConnection::SubPath);
        connection.registerService(name);
        return connection;
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty())
            QSKIP("not run: there is no dbus-daemon here");
        m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        QVERIFY(m_bus.waitForReadyRead(30'000));
        m_address = QString::fromUtf8(m_bus.readLine().trimmed());
    }
    void cleanup()
    {
        QDBusConnection::disconnectFromBus(u"asker"_s);
        QDBusConnection::disconnectFromBus(u"offering"_s);
    }
    void cleanupTestCase()
    {
        m_bus.kill();
        m_bus.waitForFinished();
    }

    void asksAMediaPlayer()
    {
        Offering player;
        offer(player, u"org.mpris.MediaPlayer2.tune"_s);
        QCOMPARE(ask({}, {getpid()}), std::optional(true));
        QTRY_COMPARE(player.told,
                     (QStringList{u"/org/mpris/MediaPlayer2 Get"_s, u"/org/mpris/MediaPlayer2 Quit"_s}));
    }
    void asksAGtkApplication()
    {
        Offering application;
        offer(application, u"org.example.Text-Editor"_s);
        QCOMPARE(ask(u"org.example.Text-Editor"_s, {1, getpid()}), std::optional(true));
        QTRY_COMPARE(application.told, (QStringList{u"/org/example/Text_Editor Describe"_s,
                                                    u"/org/example/Text_Editor Activate"_s}));
    }
    void takesNoForAnAnswer()
    {
        Offering player;
        player.canQuit = false;
        offer(player, u"org.mpris.MediaPlayer2.tune"_s).registerService(u"org.example.Tune"_s);
        QCOMPARE(ask(u"org.example.Tune"_s, {getpid()}), std::optional(false));
        QCOMPARE(player.told.size(), 2); // both questions, no request
    }
    void asksNobodyElse()
    {
        Offering player;
        offer(player, u"org.mpris.MediaPlayer2.tune"_s);
        QCOMPARE(ask(u"org.mpris.MediaPlayer2.tune"_s, {1}), std::optional(false));
        QCOMPARE(player.told, QStringList());
    }
    void answersAtOnceWithoutABus()
    {
        OwnQuit quit(QDBusConnection(u"none"_s));
        std::optional<bool> asked;
        quit.ask({}, {getpid()}, [&](bool any) { asked = any; });
        QCOMPARE(asked, std::optional(false));
    }
};

QUORVEL_TEST(TestOwnQuit, QCoreApplication)
#include "tst_ownQuit.moc"
