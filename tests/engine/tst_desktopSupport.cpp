#include "DesktopSupport.h"
#include "suite.h"

#include <QMetaProperty>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

class TestDesktopSupport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachMeansIsPublishedWithItsReason_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const auto *name : {"applications", "idle", "browsers", "statusItem", "preferences"})
            QTest::newRow(name) << QByteArray(name);
    }
    void eachMeansIsPublishedWithItsReason()
    {
        QFETCH(QByteArray, name);
        DesktopSupport support;
        int changes = 0;
        const auto property =
            support.metaObject()->property(support.metaObject()->indexOfProperty(name.constData()));
        QVERIFY(property.isValid() && property.hasNotifySignal());
        const QSignalSpy changed(&support, property.notifySignal());
        const auto published = [&] { return property.read(&support).value<Availability>(); };
        QVERIFY(published().works);
        const auto missing = Availability::missing(u"No room."_s, u"Нет места."_s);
        for (const auto &state : {missing, missing, Availability::working()}) {
            support.setApplications(name == "applications" ? state : Availability());
            support.setIdle(name == "idle" ? state : Availability());
            support.setBrowsers(name == "browsers" ? state : Availability());
            support.setStatusItem(name == "statusItem" ? state : Availability());
            support.setPreferences(name == "preferences" ? state : Availability());
            QCOMPARE(published(), state);
            changes += state == missing && changes == 0;
        }
        QCOMPARE(changed.size(), changes + 1);
    }
};

QUORVEL_TEST(TestDesktopSupport)
#include "tst_desktopSupport.moc"
