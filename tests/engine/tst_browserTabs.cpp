#include "ControllerHarness.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

struct Browsing : ControllerHarness
{
    explicit Browsing(const QString &browser = u"Chromium"_s)
    {
        applications.start(browser);
        start();
    }
    void open(qint64 window, qint64 tab, const QString &url, const QString &browser = u"Chromium"_s)
    {
        browsers.tabs[browser].push_back({browser, window, tab, url});
    }
};

} // namespace

class TestBrowserTabs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFifthActiveHeartbeatLooks()
    {
        Browsing browsing;
        browsing.controller->lockNow(); // its own heartbeat is the first
        browsing.seconds(3);
        QCOMPARE(browsing.browsers.listedBrowsers.size(), std::size_t(0));
        browsing.seconds(1);
        QCOMPARE(browsing.browsers.listedBrowsers.size(), std::size_t(1));
        browsing.seconds(5);
        QCOMPARE(browsing.browsers.listedBrowsers.size(), std::size_t(2));
    }

    void counterKeepsItsValueWhileBlockingIsOff()
    {
        Browsing browsing;
        browsing.controller->lockNow();
        browsing.seconds(3); // four active heartbeats
        browsing.controller->stopQuorvel();
        browsing.seconds(30);
        QCOMPARE(browsing.browsers.listedBrowsers.size(), std::size_t(0));
        browsing.controller->startStudy(); // the fifth
        QCOMPARE(browsing.browsers.listedBrowsers.size(), std::size_t(1));
    }

    void blockedTabsGoInFallingOrder()
    {
        Browsing browsing;
        browsing.open(1, 1, u"https://example.org/"_s);
        browsing.open(1, 2, u"https://www.youtube.com/watch"_s);
        browsing.open(1, 5, u"https://m.youtube.com/"_s);
        browsing.open(2, 1, u"https://YouTube.com/"_s);
        browsing.open(2, 2, u"https://notyoutube.com/"_s);
        browsing.open(2, 3, u"file:///youtube.com"_s);
        browsing.controller->lockNow();
        browsing.seconds(4);
        QStringList closed;
        for (const auto &tab : browsing.browsers.closed)
            closed.append(u"%1-%2"_s.arg(tab.windowIndex).arg(tab.tabIndex));
        QCOMPARE(closed, QStringList({u"2-1"_s, u"1-5"_s, u"1-2"_s}));
        QCOMPARE(browsing.events().first(), u"Closed 3 blocked browser tabs: youtube.com, m.youtube.com."_s);
    }

    void oneTabIsSingular()
    {
        Browsing browsing;
        browsing.open(1, 1, u"https://youtube.com/"_s);
        browsing.controller->lockNow();
        browsing.seconds(4);
        QCOMPARE(browsing.events().first(), u"Closed 1 blocked browser tab: youtube.com."_s);
    }

    void aHeartbeatClosesApplicationsBeforeTabs()
    {
        Browsing browsing;
        browsing.open(1, 1, u"https://youtube.com/"_s);
        browsing.controller->lockNow();
        browsing.seconds(3);
        browsing.applications.start(u"Steam"_s);
        browsing.seconds(1);
        QCOMPARE(browsing.events().mid(0, 2),
                 QStringList({u"Closed 1 blocked browser tab: youtube.com."_s, u"Closed Steam."_s}));
    }

    void eventNamesTheFirstFourHosts()
    {
        Browsing browsing;
        int tab = 0;
        for (const auto &host : {u"a.youtube.com"_s, u"b.youtube.com"_s, u"c.youtube.com"_s,
                                 u"d.youtube.com"_s, u"e.youtube.com"_s, u"f.youtube.com"_s})
            browsing.open(1, ++tab, u"https://%1/"_s.arg(host));
        browsing.controller->lockNow();
        browsing.seconds(4);
        QCOMPARE(browsing.events().first(), u"Closed 6 blocked browser tabs: a.youtube.com, b.youtube.com, "
                                            "c.youtube.com, d.youtube.com."_s);
    }

    void otherBrowsersAreNotInspected()
    {
        Browsing browsing(u"Chromium Beta"_s);
        browsing.controller->lockNow();
        browsing.seconds(20);
        QVERIFY(browsing.browsers.listedBrowsers.empty());
    }

    void furtherBrowsersAreSweptInTheSameHeartbeat()
    {
        Browsing browsing;
        browsing.browsers.further = {u"Firefox"_s};
        browsing.open(1, 1, u"https://youtube.com/"_s);
        browsing.open(1, 1, u"https://example.org/"_s, u"Firefox"_s);
        browsing.open(1, 2, u"https://m.youtube.com/"_s, u"Firefox"_s);
        browsing.controller->lockNow();
        browsing.seconds(3);
        QVERIFY(browsing.browsers.listedBrowsers.empty());
        browsing.seconds(1);
        QCOMPARE(browsing.browsers.listedBrowsers, std::vector<QString>({u"Chromium"_s, u"Firefox"_s}));
        QCOMPARE(browsing.events().mid(0, 2), QStringList({u"Closed 1 blocked browser tab: m.youtube.com."_s,
                                                           u"Closed 1 blocked browser tab: youtube.com."_s}));
        browsing.seconds(5);
        QCOMPARE(browsing.browsers.listedBrowsers.size(), std::size_t(4));
    }

    void furtherBrowserNeedsNoListedApplication()
    {
        ControllerHarness harness; // the desktop may call it otherwise, "Firefox ESR"
        harness.browsers.further = {u"Firefox"_s};
        harness.browsers.tabs[u"Firefox"_s].push_back({u"Firefox"_s, 1, 1, u"https://youtube.com/"_s});
        harness.start().lockNow();
        harness.seconds(4);
        QCOMPARE(harness.browsers.closed.size(), std::size_t(1));
        harness.browsers.further.clear(); // it has ended
        harness.seconds(5);
        QCOMPARE(harness.browsers.listedBrowsers.size(), std::size_t(1));
    }

    void furtherBrowsersAreLeftAloneWhileBlockingIsOff()
    {
        Browsing browsing;
        browsing.browsers.further = {u"Firefox"_s};
        browsing.seconds(20);
        QVERIFY(browsing.browsers.listedBrowsers.empty());
    }

    void hostsAreNormalizedInTheEventAndNamedOnce()
    {
        Browsing browsing;
        browsing.open(1, 1, u"https://www.YouTube.com/"_s);
        browsing.open(1, 2, u"https://youtube.com:8080/x"_s);
        browsing.controller->lockNow();
        browsing.seconds(4);
        QCOMPARE(browsing.events().first(), u"Closed 2 blocked browser tabs: youtube.com."_s);
    }

    void addressesThatOnlyBrowsersTakeAreBlockedToo()
    {
        Browsing browsing;
        browsing.open(1, 1, u"https://youtube.com/?q=%zz|{}"_s);
        browsing.controller->lockNow();
        browsing.seconds(4);
        QCOMPARE(browsing.events().first(), u"Closed 1 blocked browser tab: youtube.com."_s);
    }

    void tabsAreToldApartByTheirId()
    {
        QCOMPARE((BrowserTab{u"Arc"_s, 1, 2, u"https://example.org/"_s}).id(),
                 u"Arc-1-2-https://example.org/"_s);
    }

    void noBlockedTabLogsNothing()
    {
        Browsing browsing;
        browsing.open(1, 1, u"https://example.org/"_s);
        browsing.controller->lockNow();
        browsing.seconds(20);
        QCOMPARE(browsing.events(), QStringList({u"Locked manually."_s}));
    }
};

QUORVEL_TEST(TestBrowserTabs, QCoreApplication)
#include "tst_browserTabs.moc"
