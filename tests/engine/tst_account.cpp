#include "ControllerHarness.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestAccount : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedMode_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<AccessMode>("mode");
        QTest::newRow("guest") << u"guest"_s << AccessMode::Guest;
        QTest::newRow("account") << u"account"_s << AccessMode::Account;
        QTest::newRow("none") << u"none"_s << AccessMode::None;
        QTest::newRow("other case") << u"Guest"_s << AccessMode::None;
        QTest::newRow("unknown") << u"admin"_s << AccessMode::None;
    }
    void storedMode()
    {
        QFETCH(QString, stored);
        ControllerHarness harness;
        harness.preferences.values[u"accessMode"_s] = stored;
        QTEST(harness.start().accessMode(), "mode");
    }

    void absentModeIsNone()
    {
        ControllerHarness harness;
        QCOMPARE(harness.start().accessMode(), AccessMode::None);
    }

    void guestForgetsTheAccount()
    {
        ControllerHarness harness;
        harness.preferences.values = {{u"accessMode"_s, u"account"_s},
                                      {u"signedInEmail"_s, u"a@b.c"_s},
                                      {u"serverSessionToken"_s, u"secret"_s}};
        auto &controller = harness.start();
        QCOMPARE(controller.signedInEmail(), std::optional(u"a@b.c"_s));
        controller.continueAsGuest();
        QCOMPARE(controller.accessMode(), AccessMode::Guest);
        QVERIFY(!controller.hasSignedInEmail());
        QCOMPARE(controller.authStatusText(), u"Guest mode active. Data stays local."_s);
        QCOMPARE(harness.preferences.values,
                 (std::map<QString, PreferenceValue>{{u"accessMode"_s, u"guest"_s}}));
        QVERIFY(harness.events().isEmpty());
        QCOMPARE(harness.start().accessMode(), AccessMode::Guest);
    }

    void signOutWritesNoneAndKeepsTheSession()
    {
        ControllerHarness harness;
        harness.preferences.values = {{u"accessMode"_s, u"account"_s},
                                      {u"serverSessionToken"_s, u"secret"_s}};
        auto &controller = harness.start();
        controller.startStudy();
        const auto events = harness.events();
        controller.signOut();
        QCOMPARE(controller.accessMode(), AccessMode::None);
        QCOMPARE(controller.authStatusText(),
                 u"Create an account to sync progress, or continue as Guest for local-only use."_s);
        QCOMPARE(harness.preferences.values.at(u"accessMode"_s), PreferenceValue(u"none"_s));
        QVERIFY(!harness.preferences.values.contains(u"serverSessionToken"_s));
        QCOMPARE(controller.mode(), QuorvelController::Mode::Studying);
        QCOMPARE(harness.events(), events);
    }

    void changesAreDurableWhenTheCommandReturns()
    {
        ControllerHarness harness;
        harness.start().continueAsGuest();
        for (const auto &write : harness.preferences.writes)
            QCOMPARE(write.durability, Durability::AtOnce);
    }
};

QTEST_GUILESS_MAIN(TestAccount)
#include "tst_account.moc"
