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

    void storesNameApplications()
    {
        const auto flatpak = effectiveCall({u"/usr/bin/flatpak"_s, u"run"_s, u"--branch=stable"_s,
                                            u"--command=foo"_s, u"org.foo.Bar"_s, u"@@u"_s});
        QCOMPARE(flatpak.flatpakId, u"org.foo.Bar"_s);
        QCOMPARE(flatpak.program, QString());
        QCOMPARE(effectiveCall({u"snap"_s, u"run"_s, u"chromium"_s}).snapName, u"chromium"_s);
        QCOMPARE(effectiveCall({u"flatpak"_s, u"run"_s}).flatpakId, QString());
    }
};

QUORVEL_TEST(TestProgramCall, QCoreApplication)
#include "tst_programCall.moc"
