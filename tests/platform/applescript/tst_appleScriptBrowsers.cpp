#include "AppleScriptBrowsers.h"
#include "StandInProgram.h"
#include "appleScripts.h"
#include "suite.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace {

const QString safari = u"Safari"_s;

/// What a browser of four tabs prints, a row of them broken.
const QByteArray fourRows =
    "printf '1\\t1\\thttps://a.example/\\n1\\t2\\tabout:blank\\n1\\tx\\thttps://b.example/\\n"
    "2\\t1\\thttps://c.example/?q=%%zz'";

/// More than a pipe holds, many times over.
constexpr int manyBytes = 6 * 1024 * 1024;
const QByteArray muchOutput = "head -c 6291456 /dev/zero | tr '\\0' x";
const QByteArray muchError = "head -c 6291456 /dev/zero | tr '\\0' e >&2";

} // namespace

class TestAppleScriptBrowsers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsWithTwoArguments()
    {
        const StandInProgram program("printf '  done \\303\\251\\n'");
        QVERIFY(program.works());
        const auto source = u"say \"é $HOME `id`\"\n\tend 'x' \\n %s"_s;
        QCOMPARE(AppleScriptBrowsers(program.path()).runAppleScript(source), u"  done é\n"_s);
        QCOMPARE(program.arguments(), QStringList({u"-e"_s, source}));
    }

    void outcomes_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<bool>("some");
        QTest::newRow("empty") << QByteArray() << true;
        QTest::newRow("error output only") << QByteArray("echo no >&2") << true;
        QTest::newRow("fails") << QByteArray("echo x; exit 1") << false;
        QTest::newRow("fails with 255") << QByteArray("echo x; exit 255") << false;
        QTest::newRow("killed") << QByteArray("echo x; kill -KILL $$") << false;
        QTest::newRow("ended") << QByteArray("echo x; kill -TERM $$") << false;
        QTest::newRow("UTF-8") << QByteArray("printf '\\360\\237\\246\\212'") << true;
        QTest::newRow("Latin-1") << QByteArray("printf 'caf\\351 au lait'") << false;
        QTest::newRow("cut short") << QByteArray("printf 'x\\303'") << false;
        QTest::newRow("overlong") << QByteArray("printf '\\300\\257'") << false;
        QTest::newRow("surrogate") << QByteArray("printf '\\355\\240\\200'") << false;
        QTest::newRow("beyond Unicode") << QByteArray("printf '\\364\\220\\200\\200'") << false;
        QTest::newRow("error output is not UTF-8") << QByteArray("printf '\\351' >&2") << true;
    }
    void outcomes()
    {
        QFETCH(QByteArray, lines);
        const StandInProgram program(lines);
        QVERIFY(program.works());
        QTEST(AppleScriptBrowsers(program.path()).runAppleScript(u"x"_s).has_value(), "some");
        QCOMPARE(program.arguments().size(), 2);
    }

    void errorOutputIsKeptApart()
    {
        const StandInProgram program("echo one; echo two >&2; echo three");
        QCOMPARE(AppleScriptBrowsers(program.path()).runAppleScript(u"x"_s), u"one\nthree\n"_s);
    }

    void muchIsReadToTheEnd_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<int>("length");
        QTest::newRow("output") << muchOutput << manyBytes;
        QTest::newRow("error output") << muchError << 0;
        QTest::newRow("output first") << muchOutput + "\n" + muchError << manyBytes;
        QTest::newRow("error output first") << muchError + "\n" + muchOutput << manyBytes;
        QTest::newRow("both at once") << "(" + muchError + ") &\n" + muchOutput + "\nwait" << manyBytes;
    }
    void muchIsReadToTheEnd()
    {
        QFETCH(QByteArray, lines);
        QFETCH(int, length);
        const StandInProgram program(lines);
        const auto text = AppleScriptBrowsers(program.path()).runAppleScript(u"x"_s);
        QVERIFY(text);
        QCOMPARE(text->size(), length);
        QVERIFY(text->count(u'x') == length);
    }

    void waitsForTheEnd()
    {
        const StandInProgram program("printf 'early '\nsleep 0.3\nprintf late");
        QElapsedTimer stopwatch;
        stopwatch.start();
        QCOMPARE(AppleScriptBrowsers(program.path()).runAppleScript(u"x"_s), u"early late"_s);
        QVERIFY(stopwatch.elapsed() >= 300);
    }

    void scriptThatReadsInputIsNotWaitedFor()
    {
        const StandInProgram program("cat\necho end");
        QCOMPARE(AppleScriptBrowsers(program.path()).runAppleScript(u"x"_s), u"end\n"_s);
    }

    void programThatCannotStart()
    {
        const AppleScriptBrowsers missing(u"/nowhere/osascript"_s);
        QCOMPARE(missing.runAppleScript(u"x"_s), std::nullopt);
        QVERIFY(!missing.availability().works);
        QCOMPARE(missing.availability().reasonEnglish,
                 u"Browser tabs cannot be seen: /nowhere/osascript, which runs AppleScript, is missing."_s);
        QCOMPARE(
            missing.availability().reasonRussian,
            u"Вкладки браузера не видны: нет программы /nowhere/osascript, которая выполняет AppleScript."_s);

        const StandInProgram program;
        QVERIFY(AppleScriptBrowsers(program.path()).availability().works);
        QFile::setPermissions(program.path(), QFile::ReadOwner | QFile::WriteOwner);
        AppleScriptBrowsers forbidden(program.path());
        QVERIFY(!forbidden.availability().works);
        QCOMPARE(forbidden.runAppleScript(u"x"_s), std::nullopt);
        QVERIFY(forbidden.allTabs(safari).empty());
        QCOMPARE(forbidden.frontTabURL(safari), std::nullopt);
        QVERIFY(!AppleScriptBrowsers(u"/usr"_s).availability().works); // a folder
    }

    void listsTabs()
    {
        const StandInProgram program(fourRows);
        AppleScriptBrowsers browsers(program.path());
        const std::vector<BrowserTab> expected{{safari, 1, 1, u"https://a.example/"_s},
                                               {safari, 1, 2, u"about:blank"_s},
                                               {safari, 2, 1, u"https://c.example/?q=%zz"_s}};
        QVERIFY(browsers.allTabs(safari) == expected);
        QCOMPARE(program.arguments(), QStringList({u"-e"_s, allTabsScript(safari)}));
        QVERIFY(browsers.furtherBrowsers().empty());
    }

    void failureListsNothing()
    {
        const StandInProgram program(fourRows + "\nexit 3");
        QVERIFY(AppleScriptBrowsers(program.path()).allTabs(safari).empty());
        QCOMPARE(program.arguments().size(), 2);
    }

    void frontTab_data()
    {
        QTest::addColumn<QByteArray>("lines");
        QTest::addColumn<QString>("url"); // empty for none
        QTest::newRow("address") << QByteArray("echo https://a.example/") << u"https://a.example/"_s;
        QTest::newRow("white space around")
            << QByteArray("printf '\\n\\t https://a.example/?q={} \\342\\200\\250\\r\\n'")
            << u"https://a.example/?q={}"_s;
        QTest::newRow("no window") << QByteArray("echo") << QString();
        QTest::newRow("nothing") << QByteArray() << QString();
        QTest::newRow("not a URL") << QByteArray("echo missing value") << QString();
        QTest::newRow("fails") << QByteArray("echo https://a.example/; exit 1") << QString();
        QTest::newRow("not UTF-8") << QByteArray("printf 'https://a.example/\\377'") << QString();
    }
    void frontTab()
    {
        QFETCH(QByteArray, lines);
        QFETCH(QString, url);
        const StandInProgram program(lines);
        const auto expected = url.isEmpty() ? std::nullopt : std::optional(url);
        AppleScriptBrowsers browsers(program.path());
        QCOMPARE(browsers.frontTabURL(safari), expected);
        QCOMPARE(browsers.frontTabURL(u"Opera"_s), expected);
        QCOMPARE(program.arguments(),
                 QStringList({u"-e"_s, frontTabScript(safari), u"-e"_s, frontTabScript(u"Opera"_s)}));
    }

    void closesWithOneScript()
    {
        const StandInProgram program("echo fails; exit 1");
        AppleScriptBrowsers browsers(program.path());
        browsers.closeTabs(safari, {});
        QCOMPARE(program.arguments(), QStringList());
        const std::vector<BrowserTab> tabs{{safari, 2, 1, u"https://a.example/"_s},
                                           {safari, 1, 5, u"about:blank"_s}};
        browsers.closeTabs(safari, tabs);
        QCOMPARE(program.arguments(), QStringList({u"-e"_s, closeTabsScript(tabs, safari)}));
    }
};

QUORVEL_TEST(TestAppleScriptBrowsers, QCoreApplication)
#include "tst_appleScriptBrowsers.moc"
