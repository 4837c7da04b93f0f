// When the program asks whether the desktop has a place for status items, on a real session bus.
#include "StatusPlace.h"
#include "desktopParts.h"

#include <QDBusMessage>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestStatusPlace : public QObject
{
    Q_OBJECT

private:
    QProcess m_bus;
    QString m_address;
    bool m_there = false;
    int m_asked = 0;

    std::function<bool()> ask()
    {
        return [this] {
            ++m_asked;
            return m_there;
        };
    }
    QDBusConnection connected(const QString &name) const
    {
        return QDBusConnection::connectToBus(m_address, name);
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty())
            QSKIP("not run: there is no dbus-daemon here");
    }
    void init()
    {
        m_there = false;
        m_asked = 0;
        bindToTest(m_bus);
        m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        m_address = QString::fromUtf8(firstLine(m_bus));
        QVERIFY(!m_address.isEmpty());
    }
    void cleanup()
    {
        QDBusConnection::disconnectFromBus(u"program"_s);
        QDBusConnection::disconnectFromBus(u"panel"_s);
        m_bus.kill();
        m_bus.waitForFinished();
    }

    void itFollowsTheKeeper()
    {
        StatusPlace place(connected(u"program"_s), ask(), 1h);
        const QSignalSpy changed(&place, &StatusPlace::changed);
        QVERIFY(!place.availability().works);
        QVERIFY(!place.availability().reasonEnglish.isEmpty());
        QVERIFY(!place.availability().reasonRussian.isEmpty());
        QCOMPARE(m_asked, 1);
        auto panel = connected(u"panel"_s);
        QVERIFY(panel.registerService(u"org.kde.StatusNotifierWatcher"_s));
        QTRY_COMPARE(m_asked, 2);
        QCOMPARE(changed.size(), 0);
        m_there = true;
        panel.send(QDBusMessage::createSignal(u"/StatusNotifierWatcher"_s, u"org.kde.StatusNotifierWatcher"_s,
                                              u"StatusNotifierHostRegistered"_s));
        QTRY_COMPARE(changed.size(), 1);
        QVERIFY(place.availability().works);
        m_there = false;
        QVERIFY(panel.unregisterService(u"org.kde.StatusNotifierWatcher"_s));
        QTRY_COMPARE(changed.size(), 2);
        QVERIFY(!place.availability().works);
        QCOMPARE(m_asked, 4);
    }

    void placesOfTheOlderKindAreFoundInTime()
    {
        StatusPlace place(QDBusConnection(u"none"_s), ask(), 1ms);
        m_there = true;
        QTRY_VERIFY(place.availability().works);
    }

    void aBusThatDiesIsSurvived()
    {
        m_there = true;
        StatusPlace place(connected(u"program"_s), ask(), 1ms);
        QVERIFY(place.availability().works);
        m_bus.kill();
        m_bus.waitForFinished();
        m_there = false;
        QTRY_VERIFY(!place.availability().works);
    }
};

QTEST_GUILESS_MAIN(TestStatusPlace)
#include "tst_statusPlace.moc"
