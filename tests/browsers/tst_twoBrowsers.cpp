// Chromium and Firefox at once, with one program.
#include "BlockingEngine.h"
#include "CompanionEnd.h"
#include "RealBrowser.h"
#include "patience.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestTwoBrowsers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneLookSweepsBoth()
    {
        BrowserStage stage;
        QVERIFY2(stage.works(), "Xvfb, openbox, xdotool and dbus-daemon are needed");
        CompanionEnd program(stage.programFolder());
        QVERIFY(program.works());
        const auto extension = QStringLiteral(QUORVEL_EXTENSION);
        const auto relay = QStringLiteral(QUORVEL_RELAY);
        RealBrowser chromium(RealBrowser::Kind::Chromium, stage, extension, relay);
        RealBrowser firefox(RealBrowser::Kind::Firefox, stage, extension, relay);
        QVERIFY(chromium.start({u"http://c.test/"_s, u"http://c.blocked.test/"_s}));
        QVERIFY(firefox.start({u"http://f.test/"_s, u"http://f.blocked.test/"_s}));
        TRY_COMPARE(program.tabs(u"Chromium"_s),
                    QStringList({u"1-1 http://c.test/"_s, u"1-2 http://c.blocked.test/"_s}));
        TRY_COMPARE(program.tabs(u"Firefox"_s),
                    QStringList({u"1-1 http://f.test/"_s, u"1-2 http://f.blocked.test/"_s}));
        QCOMPARE(program.scripting().furtherBrowsers(), std::vector<QString>{u"Firefox"_s});

        BlockingEngine engine(program.scripting(), {u"Chromium"_s}, {u"blocked.test"_s});
        engine.look();
        TRY_COMPARE(program.tabs(u"Chromium"_s), QStringList(u"1-1 http://c.test/"_s));
        TRY_COMPARE(program.tabs(u"Firefox"_s), QStringList(u"1-1 http://f.test/"_s));

        chromium.processes().kill(); // the other is not touched by it
        TRY_COMPARE(program.tabs(u"Chromium"_s), QStringList());
        QCOMPARE(program.tabs(u"Firefox"_s), QStringList(u"1-1 http://f.test/"_s));
    }
};

QTEST_GUILESS_MAIN(TestTwoBrowsers)
#include "tst_twoBrowsers.moc"
