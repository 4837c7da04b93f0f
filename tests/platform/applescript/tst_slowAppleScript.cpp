#include "AppleScriptBrowsers.h"
#include "StandInProgram.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestSlowAppleScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// 30 seconds are what Qt waits where it is not told otherwise.
    void noEndIsSetToWaiting()
    {
        const StandInProgram program("sleep 31\necho late");
        QVERIFY(program.works());
        QCOMPARE(AppleScriptBrowsers(program.path()).runAppleScript(u"x"_s), u"late\n"_s);
    }
};

QTEST_GUILESS_MAIN(TestSlowAppleScript)
#include "tst_slowAppleScript.moc"
