// The wish for less movement as a portal on a real session bus has it.
#include "PortalMotion.h"
#include "desktopParts.h"
#include "suite.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

using Motion = MotionPreference::Motion;
using Settings = QMap<QString, QVariantMap>;

namespace {

const QString appearance = u"org.freedesktop.appearance"_s;
const QString gnome = u"org.gnome.desktop.interface"_s;
const QString kde = u"org.kde.kdeglobals.KDE"_s;

/// A desktop portal that has only settings.
class Portal : public QDBusVirtualObject
{
public:
    Portal(const QString &address, Settings settings)
        : m_connection(QDBusConnection::connectToBus(address, u"portal"_s))
        , m_settings(std::move(settings))
    {
        m_connection.registerVirtualObject(u"/org/freedesktop/portal/desktop"_s, this);
        m_connection.registerService(u"org.freedesktop.portal.Desktop"_s);
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(u"portal"_s); }
    Q_DISABLE_COPY_MOVE(Portal)

    QList<QDBusMessage> questions;
    bool holdsAnswers = false;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        questions.append(message);
        if (!holdsAnswers)
            answer(message);
        return true;
    }

    void answer(const QDBusMessage &question)
    {
        const auto known =
            question.interface() == "org.freedesktop.portal.Settings"_L1 && question.member() == "ReadAll"_L1;
        Settings asked;
        for (const auto &space : question.arguments().value(0).toStringList()) {
            if (m_settings.contains(space))
                asked[space] = m_settings[space];
        }
        m_connection.send(known ? question.createReply(QVariant::fromValue(asked))
                                : question.createErrorReply(QDBusError::UnknownMethod, u"no"_s));
    }

    void change(const QString &space, const QString &key, const QVariant &value)
    {
        auto signal = QDBusMessage::createSignal(u"/org/freedesktop/portal/desktop"_s,
                                                 u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        signal.setArguments({space, key, QVariant::fromValue(QDBusVariant(value))});
        m_connection.send(signal);
    }

private:
    QDBusConnection m_connection;
    Settings m_settings;
};

} // namespace

Q_DECLARE_METATYPE(MotionPreference::Motion)

class tst_portalMotion : public QObject
{
    Q_OBJECT

private:
    QProcess m_bus;
    QString m_address;

    QDBusConnection bus() const { return QDBusConnection::connectToBus(m_address, u"program"_s); }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty())
            QSKIP("not run: there is no dbus-daemon here");
        bindToTest(m_bus);
        m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        m_address = QString::fromUtf8(firstLine(m_bus));
        QVERIFY(!m_address.isEmpty());
    }
    void cleanup() { QDBusConnection::disconnectFromBus(u"program"_s); }
    void cleanupTestCase()
    {
        m_bus.kill();
        m_bus.waitForFinished();
    }

    void anyDesktopsOwnSettingTells_data()
    {
        QTest::addColumn<Settings>("settings");
        QTest::addColumn<Motion>("motion");
        QTest::newRow("portal, reduced")
            << Settings{{appearance, {{u"reduced-motion"_s, 1U}}}} << Motion::Reduced;
        QTest::newRow("portal, none") << Settings{{appearance, {{u"reduced-motion"_s, 0U}}}} << Motion::Full;
        QTest::newRow("portal, no such number")
            << Settings{{appearance, {{u"reduced-motion"_s, 7U}}}} << Motion::Full;
        QTest::newRow("GNOME, off") << Settings{{gnome, {{u"enable-animations"_s, false}}}}
                                    << Motion::Reduced;
        QTest::newRow("GNOME, on") << Settings{{gnome, {{u"enable-animations"_s, true}}}} << Motion::Full;
        QTest::newRow("KDE, none") << Settings{{kde, {{u"AnimationDurationFactor"_s, u"0"_s}}}}
                                   << Motion::Reduced;
        QTest::newRow("KDE, slow") << Settings{{kde, {{u"AnimationDurationFactor"_s, u"1.41421"_s}}}}
                                   << Motion::Full;
        QTest::newRow("KDE, a number")
            << Settings{{kde, {{u"AnimationDurationFactor"_s, 0.0}}}} << Motion::Reduced;
        QTest::newRow("one of two") << Settings{{appearance, {{u"reduced-motion"_s, 0U}}},
                                                {gnome, {{u"enable-animations"_s, false}}}}
                                    << Motion::Reduced;
    }
    void anyDesktopsOwnSettingTells()
    {
        QFETCH(Settings, settings);
        QFETCH(Motion, motion);
        qDBusRegisterMetaType<Settings>();
        Portal portal(m_address, settings);
        PortalMotion preference(bus());
        int changes = 0;
        preference.whenChanged([&changes] { ++changes; });
        QTRY_COMPARE(preference.motion(), motion);
        QCOMPARE(changes, 1);
    }

    void whatIsNoAnswerTellsNothing()
    {
        Portal portal(m_address, {{appearance, {{u"reduced-motion"_s, u"much"_s}, {u"contrast"_s, 1U}}},
                                  {gnome, {{u"enable-animations"_s, u"no"_s}}},
                                  {kde, {{u"AnimationDurationFactor"_s, u"fast"_s}}}});
        PortalMotion preference(bus());
        QTRY_COMPARE(portal.questions.size(), 1);
        portal.change(u"org.gnome.desktop.a11y"_s, u"enable-animations"_s, false);
        portal.change(gnome, u"clock-format"_s, false);
        // The next change comes after all these.
        portal.change(gnome, u"enable-animations"_s, true);
        QTRY_COMPARE(preference.motion(), Motion::Full);
        QCOMPARE(portal.questions.size(), 1);
    }

    void aChangeIsFollowed()
    {
        Portal portal(m_address, {{gnome, {{u"enable-animations"_s, true}}}});
        PortalMotion preference(bus());
        QTRY_COMPARE(preference.motion(), Motion::Full);
        QList<Motion> told;
        preference.whenChanged([&] { told.append(preference.motion()); });
        portal.change(gnome, u"enable-animations"_s, false);
        portal.change(gnome, u"enable-animations"_s, false); // no change
        portal.change(gnome, u"enable-animations"_s, true);
        QTRY_COMPARE(told, QList<Motion>({Motion::Reduced, Motion::Full}));
    }

    void nothingWaitsForThePortal()
    {
        Portal portal(m_address, {{appearance, {{u"reduced-motion"_s, 1U}}}});
        portal.holdsAnswers = true;
        PortalMotion preference(
            bus()); // the portal lives in this thread: who waited for it would wait in vain
        QCOMPARE(preference.motion(), Motion::Unknown);
        QTRY_COMPARE(portal.questions.size(), 1);
        QCOMPARE(preference.motion(), Motion::Unknown);
        portal.answer(portal.questions.front());
        QTRY_COMPARE(preference.motion(), Motion::Reduced);
    }

    void aPortalMayComeLater()
    {
        PortalMotion preference(bus());
        {
            Portal portal(m_address, {{appearance, {{u"reduced-motion"_s, 1U}}}});
            QTRY_COMPARE(preference.motion(), Motion::Reduced);
        }
        QCOMPARE(preference.motion(), Motion::Reduced); // the wish does not go with its teller
        Portal portal(m_address, {{appearance, {{u"reduced-motion"_s, 0U}}}});
        QTRY_COMPARE(preference.motion(), Motion::Full);
        portal.change(appearance, u"reduced-motion"_s, 1U);
        QTRY_COMPARE(preference.motion(), Motion::Reduced);
    }

    void withoutABusItIsUnknown()
    {
        PortalMotion preference(QDBusConnection(u"no such bus"_s));
        QCOMPARE(preference.motion(), Motion::Unknown);
    }
};

QUORVEL_TEST(tst_portalMotion, QCoreApplication)
#include "tst_portalMotion.moc"
