// The program itself with a real browser: it closes a blocked tab, is killed, and closes the next one after
// it was started again.
#include "PointerAndKeys.h"
#include "RealBrowser.h"
#include "patience.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString blocked = u"http://9gag.com/"_s; // on the built-in list

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

private:
    /// Has it block: the key of "Lock Now" in its window.
    static bool lock(const PointerAndKeys &hand)
    {
        if (!hand.sees(u"Quorvel"_s))
            return false;
        hand.bringToFront(u"Quorvel"_s);
        if (hand.front() != u"Quorvel")
            return false; // another window would take the key
        hand.press(u"ctrl+l"_s);
        return hand.front() == u"Quorvel";
    }

private Q_SLOTS:
    void blocksAgainAfterItWasKilled()
    {
        BrowserStage stage;
        QVERIFY2(stage.works(), "Xvfb, openbox, xdotool and dbus-daemon are needed");
        QDir().mkpath(stage.path(u"config/quorvel"_s));
        QFile preferences(stage.path(u"config/quorvel/preferences"_s));
        QVERIFY(preferences.open(QIODevice::WriteOnly));
        preferences.write("accessMode = \"guest\"\n");
        preferences.close();
        const PointerAndKeys hand(stage.desktop());
        auto environment = stage.environment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);

        RealBrowser chromium(RealBrowser::Kind::Chromium, stage, QStringLiteral(QUORVEL_EXTENSION),
                             QStringLiteral(QUORVEL_RELAY));
        QVERIFY(chromium.start({u"http://base.test/"_s}));
        TRY_VERIFY(hand.sees(u"base.test/"_s));

        ProcessFamily program;
        for (int round = 1; round <= 2; ++round) {
            QVERIFY(program.start(QStringLiteral(QUORVEL_PROGRAM), {}, environment,
                                  stage.path(u"quorvel.log"_s)));
            TRY_VERIFY(lock(hand));
            chromium.open({blocked});
            TRY_COMPARE(stage.pages().asked(u"9gag.com/shown"_s), round);
            TRY_VERIFY(!hand.sees(u"9gag.com/"_s));
            QVERIFY(hand.sees(u"base.test/"_s));
            program.kill();
        }
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
