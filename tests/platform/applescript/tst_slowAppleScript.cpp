#include "AppleScriptBrowsers.h"
#include "StandInProgram.h"
#include "suite.h"

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

QUORVEL_TEST(TestSlowAppleScript, QCoreApplication)
#include "tst_slowAppleScript.moc"
