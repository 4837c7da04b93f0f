#include "CompanionCoverage.h"
#include "CompanionStage.h"
#include "suite.h"

using namespace Qt::StringLiterals;
using State = BrowserCoverage::State;

Q_DECLARE_METATYPE(BrowserCoverage::State)

namespace {

const QByteArray noWindows = "[]";

RunningApplication application(const QString &name, const QString &id, const QString &path)
{
    return {1, name, id, path};
}
const auto runningChromium = application(u"Chromium"_s, u"chromium"_s, u"/usr/lib/chromium/chromium"_s);
const auto runningFirefox =
    application(u"Firefox ESR"_s, u"firefox-esr"_s, u"/usr/lib/firefox-esr/firefox-esr"_s);

} // namespace

class tst_companionCoverage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsBrowsersOnce()
    {
        CompanionStage stage;
        const auto entries = coverage(stage, {runningFirefox,
                                              application(u"Steam"_s, u"steam"_s, u"/usr/bin/steam"_s),
                                              runningChromium,
                                              runningChromium,
                                              {}});
        QCOMPARE(entries.size(), std::size_t(2));
        QCOMPARE(entries[0].browser, u"Chromium"_s);
        QCOMPARE(entries[1].browser, u"Firefox"_s);
    }

    void missing()
    {
        CompanionStage stage;
        const auto entries = coverage(stage, {runningChromium, runningFirefox});
        for (const auto &entry : entries)
            QVERIFY(entry.state == State::Missing && inBothLanguages(entry));
        for (const auto &sentence : {entries[0].adviceEnglish, entries[0].adviceRussian})
            QVERIFY2(sentence.contains(u"chrome://extensions") && sentence.contains(u"/share/companion"),
                     qPrintable(sentence));
        for (const auto &sentence : {entries[1].adviceEnglish, entries[1].adviceRussian})
            QVERIFY2(sentence.contains(u"about:debugging") && sentence.contains(u"/share/companion.xpi"),
                     qPrintable(sentence));
    }

    void missedBrowserIsNoticedOnce()
    {
        CompanionStage stage;
        int noticed = 0;
        CompanionCoverage source(stage.server, {u"/share/companion"_s, u"/share/companion.xpi"_s},
                                 [&noticed] { ++noticed; });
        source.coverage({});
        QCOMPARE(noticed, 0);
        source.coverage({runningChromium});
        source.coverage({runningChromium});
        QCOMPARE(noticed, 1);
        source.coverage({runningChromium, runningFirefox});
        source.coverage({runningChromium});
        QCOMPARE(noticed, 2);
        source.coverage({runningChromium, runningFirefox}); // it was started again
        QCOMPARE(noticed, 3);
    }

    void connected()
    {
        CompanionStage stage;
        const auto client = stage.connect();
        QVERIFY(coverage(stage, {runningChromium})[0].state == State::Missing); // it has told nothing yet
        client->tell(noWindows);
        QTRY_VERIFY(coverage(stage, {runningChromium})[0].state == State::Connected);
        const auto entry = coverage(stage, {runningChromium})[0];
        QVERIFY(inBothLanguages(entry));
        QVERIFY(!entry.adviceEnglish.contains(u"Incognito"));
        client->socket().disconnectFromServer();
        QTRY_VERIFY(coverage(stage, {runningChromium})[0].state == State::Missing);
    }

    void privateWindowsAreNotSeen_data()
    {
        QTest::addColumn<bool>("inFirefox");
        QTest::addColumn<QString>("option");
        QTest::newRow("chromium") << false << u"Allow in Incognito"_s;
        QTest::newRow("firefox") << true << u"Run in Private Windows"_s;
    }
    void privateWindowsAreNotSeen()
    {
        QFETCH(bool, inFirefox);
        QFETCH(QString, option);
        CompanionStage stage;
        const auto *program = inFirefox ? CompanionStage::firefox : CompanionStage::chromium;
        const auto running = inFirefox ? runningFirefox : runningChromium;
        const auto seeing = stage.connectAndTell(program, noWindows, "null", true);
        const auto blind = stage.connectAndTell(program, noWindows, "null", false);
        QTRY_VERIFY(coverage(stage, {running})[0].adviceEnglish.contains(option));
        const auto entry = coverage(stage, {running})[0];
        QVERIFY(entry.state == State::Connected && inBothLanguages(entry));
        QVERIFY(entry.adviceRussian.contains(option));
    }

    void cannotWork_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("browser");
        const auto none = QString();
        QTest::newRow("snap") << u"Chromium"_s << none << u"/snap/chromium/1/usr/lib/chromium/chromium"_s
                              << u"Chromium"_s;
        QTest::newRow("snap by id") << u"Firefox"_s << u"firefox_firefox"_s << none << u"Firefox"_s;
        QTest::newRow("flatpak inside")
            << u"Google Chrome"_s << u"com.google.Chrome"_s << u"/app/extra/chrome"_s << u"Google Chrome"_s;
        QTest::newRow("flatpak") << u"Firefox"_s << u"org.mozilla.firefox"_s
                                 << u"/var/lib/flatpak/app/org.mozilla.firefox/firefox"_s << u"Firefox"_s;
        QTest::newRow("user's flatpak") << u"Opera"_s << u"com.opera.Opera"_s
                                        << u"/home/me/.local/share/flatpak/app/opera"_s << u"Opera"_s;
        QTest::newRow("no companion") << u"Safari"_s << none << u"/usr/bin/safari"_s << u"Safari"_s;
    }
    void cannotWork()
    {
        QFETCH(QString, name);
        QFETCH(QString, id);
        QFETCH(QString, path);
        CompanionStage stage;
        const auto entries = coverage(stage, {application(name, id, path)});
        QCOMPARE(entries.size(), std::size_t(1));
        QVERIFY(entries[0].state == State::CannotWork && inBothLanguages(entries[0]));
        QTEST(entries[0].browser, "browser");
    }

    void oneOfTwoInASandbox()
    {
        CompanionStage stage;
        const auto snap = application(u"Chromium"_s, u"chromium_chromium"_s, u"/snap/chromium/1/chromium"_s);
        QVERIFY(coverage(stage, {snap})[0].state == State::CannotWork);
        QVERIFY(coverage(stage, {snap, runningChromium})[0].state == State::Missing);
        const auto client = stage.connectAndTell("/snap/chromium/1/usr/lib/chromium/chromium", noWindows);
        QTRY_VERIFY(coverage(stage, {snap})[0].state == State::Connected);
    }

    void anotherProtocolWantsAnUpdate()
    {
        CompanionStage stage;
        stage.connect()->hello(true, 2);
        QTRY_VERIFY(coverage(stage, {runningChromium})[0].adviceEnglish.contains(u"update"));
        const auto entry = coverage(stage, {runningChromium})[0];
        QVERIFY(entry.state == State::Missing && inBothLanguages(entry));
        QVERIFY(entry.adviceRussian.contains(u"обнови"));
        QVERIFY(!coverage(stage, {runningFirefox})[0].adviceEnglish.contains(u"update"));
    }

private:
    static std::vector<BrowserCoverage> coverage(CompanionStage &stage,
                                                 const std::vector<RunningApplication> &running)
    {
        return CompanionCoverage(stage.server, {u"/share/companion"_s, u"/share/companion.xpi"_s})
            .coverage(running);
    }

    /// One sentence in each language, with the browser's name.
    static bool inBothLanguages(const BrowserCoverage &entry)
    {
        const auto isSentence = [&](const QString &text) {
            return text.contains(entry.browser) && text.endsWith(u'.') && !text.contains(u'\n') &&
                   !text.contains(u". "_s) && !text.contains(u"%1"_s) && !text.contains(u"%2"_s);
        };
        const auto isRussian = [](QChar letter) { return letter.script() == QChar::Script_Cyrillic; };
        const auto &english = entry.adviceEnglish;
        const auto &russian = entry.adviceRussian;
        return isSentence(english) && isSentence(russian) &&
               std::none_of(english.begin(), english.end(), isRussian) &&
               std::any_of(russian.begin(), russian.end(), isRussian);
    }
};

QUORVEL_TEST(tst_companionCoverage, QCoreApplication)
#include "tst_companionCoverage.moc"
