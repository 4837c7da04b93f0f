#include "ControllerHarness.h"
#include "domains.h"
#include "suite.h"
#include "supportedBrowsers.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Mode = QuorvelController::Mode;

namespace {

struct Studying : ControllerHarness
{
    explicit Studying(const QuorvelConfig &config = QuorvelConfig::defaults())
    {
        startWith(config);
        controller->startStudy();
    }
    QString statusAfterASecond()
    {
        seconds(1);
        return controller->statusMessage();
    }
};

QuorvelConfig withDomains(const QStringList &domains)
{
    auto config = QuorvelConfig::defaults();
    config.allowedStudyDomains = domains;
    return config;
}

} // namespace

class TestStudyMoment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void idleEqualToTheLimitCounts()
    {
        Studying study;
        study.idle.since = 180s;
        study.seconds(1);
        QCOMPARE(study.controller->todayStudySeconds(), 2);
        study.idle.since = 181s;
        QCOMPARE(study.statusAfterASecond(), u"Paused: Mac is idle for 181s."_s);
        QCOMPARE(study.controller->todayStudySeconds(), 2);
    }

    void idleNanosecondsAreRoundedDown()
    {
        FakeSystemIdle idle;
        idle.since = 2'999'999'999ns;
        QCOMPARE(idle.seconds(), 2);
        idle.since = 999'999'999ns;
        QCOMPARE(idle.seconds(), 0);
    }

    void unknownIdleReadsZeroAndNeverPauses()
    {
        Studying study;
        study.idle.since = std::nullopt;
        study.seconds(1);
        QCOMPARE(study.controller->idleSeconds(), 0);
        QCOMPARE(study.controller->todayStudySeconds(), 2);
    }

    void blockedApplicationsAreListedSorted()
    {
        Studying study;
        study.applications.startImmortal(u"Steam"_s);
        study.applications.startImmortal(u"Discord"_s);
        study.applications.bringToFront(study.studyApplication);
        QCOMPARE(study.statusAfterASecond(), u"Paused: blocked app is running: Discord, Steam."_s);
        QCOMPARE(study.controller->todayStudySeconds(), 1);
    }

    void idleIsToldBeforeBlockedApplications()
    {
        Studying study;
        study.applications.startImmortal(u"Steam"_s);
        study.idle.since = 200s;
        QCOMPARE(study.statusAfterASecond(), u"Paused: Mac is idle for 200s."_s);
    }

    void blockedApplicationsAreToldBeforeTheStudyApplication()
    {
        Studying study;
        study.applications.startImmortal(u"Steam"_s);
        QCOMPARE(study.statusAfterASecond(), u"Paused: blocked app is running: Steam."_s);
    }

    void otherApplicationInFrontPauses()
    {
        Studying study;
        study.applications.start(u"Calculator"_s);
        QCOMPARE(study.statusAfterASecond(), u"Paused: Calculator is not in allowed study apps."_s);
    }

    void ownWindowInFrontPauses()
    {
        Studying study;
        study.applications.start(u"Quorvel"_s);
        QCOMPARE(study.statusAfterASecond(), u"Paused: Quorvel is not in allowed study apps."_s);
    }

    void noFrontmostApplicationPausesAsUnknown()
    {
        Studying study;
        study.applications.leaveFrontEmpty();
        QCOMPARE(study.statusAfterASecond(), u"Paused: Unknown is not in allowed study apps."_s);
        QCOMPARE(study.controller->activeAppName(), u"Unknown"_s);
    }

    void frontmostApplicationWithoutNameIsUnknown()
    {
        Studying study;
        study.applications.start(QString(), u"org.example.nameless"_s);
        study.seconds(1);
        QCOMPARE(study.controller->activeAppName(), u"Unknown"_s);
    }

    void reasonsInRussian()
    {
        Studying study;
        study.controller->setLanguage(AppLanguage::Russian);
        study.idle.since = 200s;
        QCOMPARE(study.statusAfterASecond(), u"Пауза: Mac бездействует 200 сек."_s);
        study.idle.since = 0s;
        const auto steam = study.applications.startImmortal(u"Steam"_s);
        QCOMPARE(study.statusAfterASecond(), u"Пауза: запущено блокируемое приложение: Steam."_s);
        study.applications.end(steam);
        study.applications.start(u"Калькулятор"_s);
        QCOMPARE(study.statusAfterASecond(), u"Пауза: Калькулятор не входит в учебные приложения."_s);
        study.applications.bringToFront(study.studyApplication);
        QCOMPARE(study.statusAfterASecond(),
                 u"Считаю учебное время. Пруф: Выкл. Активное приложение: Anki."_s);
    }

    void emptyListOfStudyApplicationsAllowsNone()
    {
        auto config = QuorvelConfig::defaults();
        config.allowedStudyApps.clear();
        Studying study(config);
        QCOMPARE(study.statusAfterASecond(), u"Paused: Anki is not in allowed study apps."_s);
        QCOMPARE(study.controller->todayStudySeconds(), 0);
    }

    void allowedStudyApplications_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("same") << QStringList{u"Anki"_s} << u"Anki"_s << true;
        QTest::newRow("other case") << QStringList{u"aNKi"_s} << u"ANKI"_s << true;
        QTest::newRow("part of the name") << QStringList{u"Notes"_s} << u"My Notes App"_s << true;
        QTest::newRow("Arc admits Archive Manager") << QStringList{u"Arc"_s} << u"Archive Manager"_s << true;
        QTest::newRow("entry is trimmed") << QStringList{u" \tAnki\n"_s} << u"Anki"_s << true;
        QTest::newRow("name is not trimmed") << QStringList{u"Anki"_s} << u" Anki "_s << true;
        QTest::newRow("inner blanks count") << QStringList{u"Study  Room"_s} << u"Study Room"_s << false;
        QTest::newRow("only spaces") << QStringList{u"   "_s} << u"Anki"_s << false;
        QTest::newRow("empty entry") << QStringList{QString()} << u"Anki"_s << false;
        QTest::newRow("name shorter than entry") << QStringList{u"Anki Pro"_s} << u"Anki"_s << false;
        QTest::newRow("second entry") << QStringList{u"Books"_s, u"Anki"_s} << u"Anki"_s << true;
        QTest::newRow("Cyrillic case") << QStringList{u"ЗАМЕТКИ"_s} << u"Заметки"_s << true;
        QTest::newRow("no entries") << QStringList() << u"Anki"_s << false;
    }
    void allowedStudyApplications()
    {
        QFETCH(QStringList, entries);
        QFETCH(QString, name);
        ControllerHarness harness;
        auto config = QuorvelConfig::defaults();
        config.allowedStudyApps = entries;
        QTEST(harness.startWith(config).isAllowedStudyApp(name), "allowed");
    }

    void emptyDomainListAllowsAnySiteWithoutAsking()
    {
        Studying study;
        study.applications.start(u"Google Chrome"_s);
        study.seconds(1);
        QCOMPARE(study.controller->todayStudySeconds(), 2);
    }

    void nameThatExtendsABrowsersIsNoBrowser()
    {
        Studying study(withDomains({u"example.org"_s}));
        study.applications.start(u"Safari Technology Preview"_s);
        study.seconds(1);
        QCOMPARE(study.controller->todayStudySeconds(), 2);
    }

    void browserWithoutReadableTabPauses_data()
    {
        QTest::addColumn<QString>("front");
        QTest::newRow("no answer") << QString();
        QTest::newRow("blank") << u" \n"_s;
        QTest::newRow("not a URL") << u"http://a b/"_s;
    }
    void browserWithoutReadableTabPauses()
    {
        QFETCH(QString, front);
        Studying study(withDomains({u"example.org"_s}));
        study.applications.start(u"Brave Browser"_s);
        if (!front.isEmpty())
            study.browsers.frontUrls[u"Brave Browser"_s] = front;
        QCOMPARE(study.statusAfterASecond(), u"Paused: could not read active browser tab."_s);
        study.controller->setLanguage(AppLanguage::Russian);
        QCOMPARE(study.statusAfterASecond(), u"Пауза: не удалось прочитать активную вкладку браузера."_s);
    }

    void studySites_data()
    {
        QTest::addColumn<QString>("front");
        QTest::addColumn<QString>("shown"); // empty: the second counts
        QTest::newRow("the domain") << u"https://example.org/page"_s << QString();
        QTest::newRow("www label") << u"https://www.example.org/"_s << QString();
        QTest::newRow("deep subdomain") << u"https://a.b.example.org/"_s << QString();
        QTest::newRow("upper case") << u"https://EXAMPLE.org/"_s << QString();
        QTest::newRow("with port and user") << u"https://me@example.org:8080/x"_s << QString();
        QTest::newRow("host begins with it")
            << u"https://example.org.evil.com/"_s << u"example.org.evil.com"_s;
        QTest::newRow("same letters, no dot") << u"https://badexample.org/"_s << u"badexample.org"_s;
        QTest::newRow("host as written") << u"https://Other.COM/x"_s << u"Other.COM"_s;
        QTest::newRow("local file") << u"file:///home/me/book.pdf"_s << u"file:///home/me/book.pdf"_s;
        QTest::newRow("blank page") << u"about:blank"_s << u"about:blank"_s;
    }
    void studySites()
    {
        QFETCH(QString, front);
        QFETCH(QString, shown);
        Studying study(withDomains({u"  "_s, u"https://www.Example.org/some/path"_s}));
        study.applications.start(u"Google Chrome"_s);
        study.browsers.frontUrls[u"Google Chrome"_s] = front;
        study.seconds(1);
        QCOMPARE(study.controller->todayStudySeconds(), shown.isEmpty() ? 2 : 1);
        if (shown.isEmpty())
            return;
        QCOMPARE(study.controller->statusMessage(),
                 u"Paused: %1 is not in allowed study domains."_s.arg(shown));
        study.controller->setLanguage(AppLanguage::Russian);
        QCOMPARE(study.statusAfterASecond(), u"Пауза: %1 не входит в учебные домены."_s.arg(shown));
    }

    void supportedBrowsersAreSevenExactNames()
    {
        const auto &names = supportedBrowsers();
        QCOMPARE(names.size(), 7);
        for (const auto &name : {u"Safari"_s, u"Google Chrome"_s, u"Brave Browser"_s, u"Microsoft Edge"_s,
                                 u"Arc"_s, u"Chromium"_s, u"Opera"_s})
            QVERIFY(names.contains(name));
        QVERIFY(!names.contains(u"chromium"_s));
    }

    void normalizedDomains_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("domain");
        QTest::newRow("bare") << u"example.org"_s << u"example.org"_s;
        QTest::newRow("case and blanks") << u"  Example.ORG\n"_s << u"example.org"_s;
        QTest::newRow("full URL") << u"HTTPS://www.Example.org/path?q#f"_s << u"example.org"_s;
        QTest::newRow("path without scheme") << u"example.org/path"_s << u"example.org"_s;
        QTest::newRow("doubled www") << u"www.www.example.org"_s << u"example.org"_s;
        QTest::newRow("port of a URL goes with the host") << u"http://example.org:80/"_s << u"example.org"_s;
        QTest::newRow("bare port stays") << u"example.org:80"_s << u"example.org:80"_s;
        QTest::newRow("trailing dot stays") << u"example.org."_s << u"example.org."_s;
        QTest::newRow("only www") << u"www."_s << QString();
        QTest::newRow("blank") << u" \t"_s << QString();
    }
    void normalizedDomains()
    {
        QFETCH(QString, text);
        QTEST(normalizeDomain(text), "domain");
    }
};

QUORVEL_TEST(TestStudyMoment, QCoreApplication)
#include "tst_studyMoment.moc"
