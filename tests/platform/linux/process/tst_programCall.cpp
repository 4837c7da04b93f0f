#include "DesktopEntry.h"
#include "programCall.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestProgramCall : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void programs_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("arguments");
        QTest::newRow("plain") << u"/usr/bin/foo -a b"_s << u"/usr/bin/foo"_s << u"-a b"_s;
        QTest::newRow("env") << u"env A=b LD_PRELOAD=/x/y.so foo -a"_s << u"foo"_s << u"-a"_s;
        QTest::newRow("env alone") << u"env"_s << QString() << QString();
        QTest::newRow("script") << u"/usr/bin/python3.11 -Es /usr/bin/app x"_s << u"/usr/bin/app"_s << u"x"_s;
        QTest::newRow("module") << u"python3 -m pkg --tray"_s << u"pkg"_s << u"--tray"_s;
        QTest::newRow("inline program") << u"python3 -c print"_s << QString() << QString();
        QTest::newRow("shell alone") << u"bash -l"_s << QString() << QString();
        QTest::newRow("shell script")
            << u"/bin/sh /usr/bin/chromium --x"_s << u"/usr/bin/chromium"_s << u"--x"_s;
        QTest::newRow("jar") << u"java -Xmx1g -jar /opt/a.jar in"_s << u"/opt/a.jar"_s << u"in"_s;
        QTest::newRow("electron") << u"/usr/lib/electron/electron /usr/lib/foo/app.asar"_s
                                  << u"/usr/lib/foo/app.asar"_s << QString();
        QTest::newRow("env and interpreter")
            << u"env A=1 perl /opt/tool.pl"_s << u"/opt/tool.pl"_s << QString();
        QTest::newRow("a variable taken away") << u"env -u X -C /tmp app -u"_s << u"app"_s << u"-u"_s;
        QTest::newRow("the same in one word") << u"env -uX --unset=Y app"_s << u"app"_s << QString();
        QTest::newRow("end of the options") << u"env -- app -n"_s << u"app"_s << u"-n"_s;
        QTest::newRow("priority") << u"nice -n 10 app"_s << u"app"_s << QString();
        QTest::newRow("priority in one word") << u"nice -10 app"_s << u"app"_s << QString();
        QTest::newRow("disk priority") << u"ionice -c 2 -n 7 app x"_s << u"app"_s << u"x"_s;
        QTest::newRow("buffering") << u"stdbuf -o L -e0 app"_s << u"app"_s << QString();
        QTest::newRow("a unit's properties")
            << u"systemd-run --user -p Nice=5 --slice app.slice app"_s << u"app"_s << QString();
        QTest::newRow("a reason") << u"systemd-inhibit --what idle --why x app"_s << u"app"_s << QString();
        QTest::newRow("another's option") << u"setsid -n app"_s << u"app"_s << QString();
        QTest::newRow("wrapper in wrapper")
            << u"env A=b nice -n 5 ionice -c2 env -u C app"_s << u"app"_s << QString();
        QTest::newRow("a value that is missing") << u"env -u"_s << QString() << QString();
    }
    void programs()
    {
        QFETCH(QString, command);
        QFETCH(QString, arguments);
        const auto call = effectiveCall(command.split(u' '));
        QTEST(call.program, "program");
        QCOMPARE(call.arguments.join(u' '), arguments);
    }

    void simpleShellCommands()
    {
        QCOMPARE(effectiveCall({u"sh"_s, u"-c"_s, u"exec foo %u"_s}).program, u"foo"_s);
        QCOMPARE(effectiveCall({u"sh"_s, u"-c"_s, u"a && b"_s}).program, QString());
    }

    void tensOfThousandsOfWrappersAreNoTrouble_data()
    {
        QTest::addColumn<QStringList>("wrapper");
        QTest::newRow("plain") << QStringList{u"env"_s};
        QTest::newRow("with a variable") << QStringList{u"env"_s, u"A=b"_s};
        QTest::newRow("with an option's value") << QStringList{u"nice"_s, u"-n"_s, u"1"_s};
    }
    void tensOfThousandsOfWrappersAreNoTrouble()
    {
        QFETCH(QStringList, wrapper);
        QStringList command;
        for (int count = 0; count < 40'000; ++count)
            command += wrapper;
        QCOMPARE(effectiveCall(command), ProgramCall());
        const auto call = effectiveCall(command + QStringList{u"app"_s, u"x"_s});
        QCOMPARE(call.program, u"app"_s);
        QCOMPARE(call.arguments, QStringList{u"x"_s});
    }

    void shellsInShellsEnd()
    {
        // Each shell's command is quoted once more, so that the line doubles with every step.
        QString line = u"env app"_s;
        for (int depth = 0; depth < 12; ++depth) {
            line.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s);
            line = u"env sh -c \""_s + line + u'"';
        }
        QCOMPARE(effectiveCall(splitCommand(line)).program, u"app"_s);
    }

    void storesRunNoProgramOfTheirOwn()
    {
        const auto flatpak = effectiveCall({u"/usr/bin/flatpak"_s, u"run"_s, u"--branch=stable"_s,
                                            u"--command=foo"_s, u"org.foo.Bar"_s, u"@@u"_s});
        QCOMPARE(flatpak.program, QString());
        QCOMPARE(flatpak.arguments, QStringList{u"@@u"_s});
        QCOMPARE(effectiveCall({u"snap"_s, u"run"_s, u"chromium"_s}).program, QString());
        QCOMPARE(effectiveCall({u"flatpak"_s, u"run"_s}), ProgramCall());
    }
};

QUORVEL_TEST(TestProgramCall, QCoreApplication)
#include "tst_programCall.moc"
