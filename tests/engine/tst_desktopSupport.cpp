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

    void unseenBrowsersFollowTheCoverage()
    {
        using State = BrowserCoverage::State;
        DesktopSupport support;
        const QSignalSpy changed(&support, &DesktopSupport::unseenBrowsersChanged);
        QVERIFY(support.unseenBrowsers().isEmpty());
        const BrowserCoverage seen{u"Chromium"_s, State::Connected, u"Seen."_s, u"Видно."_s};
        const BrowserCoverage missing{u"Firefox"_s, State::Missing, u"Add it."_s, u"Добавь."_s};
        const BrowserCoverage sandboxed{u"Opera"_s, State::CannotWork, u"No way."_s, u"Никак."_s};
        support.setBrowserCoverage({seen, missing, sandboxed});
        QCOMPARE(support.unseenBrowsers(), QList<BrowserCoverage>({missing, sandboxed}));
        QCOMPARE(changed.size(), 1);
        support.setBrowserCoverage({seen, missing, sandboxed});
        QCOMPARE(changed.size(), 1);
        support.setBrowserCoverage({seen});
        QVERIFY(support.unseenBrowsers().isEmpty());
    }
};

QUORVEL_TEST(TestDesktopSupport)
#include "tst_desktopSupport.moc"
