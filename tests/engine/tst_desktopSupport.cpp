#include "DesktopSupport.h"
#include "suite.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

class TestDesktopSupport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
