#include "MadeSystem.h"
#include "ProcessTable.h"
#include "sessionParts.h"
#include "suite.h"

#include <QProcess>

#include <csignal>
#include <sys/wait.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestProcessTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsStateLines_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("plain") << QByteArray("bash");
        QTest::newRow("parentheses and spaces") << QByteArray("a) R 1 (b");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("invalid text") << QByteArray("\xff\n\x01");
    }
    void readsStateLines()
    {
        QFETCH(QByteArray, name);
        const auto state = parseProcessState("12 (" + name +
                                             ") S 7 1 1 34816 -1 4194304 0 0 0 0 0 0 0 0 20 0 1 0 987 1 1\n");
        QVERIFY(state);
        QCOMPARE(state->command, name);
        QCOMPARE(state->parent, 7);
        QCOMPARE(state->terminal, 34816);
        QCOMPARE(state->startTime, quint64(987));
        QVERIFY(!state->kernelThread && !state->ended());
    }
    void refusesBrokenStateLines()
    {
        for (const auto *text : {"", "12", "12 (x", "12 (x)", "12 (x) S 1 2", ")(",
                                 "12 (x) S a 1 1 0 -1 0 0 0 0 0 0 0 0 0 0 0 0 0 9 1"})
            QVERIFY2(!parseProcessState(text), text);
    }

    void readsFacts()
    {
        MadeSystem system;
        system.addProcess({.id = 40,
                           .executable = u"/opt/app/app"_s,
                           .arguments = {u"--one"_s, QString()},
                           .environment = environmentOf(
                               {"GIO_LAUNCHED_DESKTOP_FILE=/x/applications/kde/foo.desktop",
                                "GIO_LAUNCHED_DESKTOP_FILE_PID=40", "CHROME_DESKTOP=bar.desktop"})});
        ProcFiles files(system.path(u"proc"_s));
        const auto facts = files.facts(40);
        QVERIFY(facts);
        QCOMPARE(facts->executable, u"/opt/app/app"_s);
        QCOMPARE(facts->launchedId, u"kde-foo"_s);
        QCOMPARE(facts->chromeDesktop, u"bar"_s);
        QVERIFY(!files.facts(41));
    }
    void stripsDeletedMark()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/opt/app/app (deleted)"_s});
        QCOMPARE(ProcFiles(system.path(u"proc"_s)).executable(40), u"/opt/app/app"_s);
    }

    void followsAppearanceAndEnd()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/one"_s});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        QVERIFY(table.process(40));
        const auto revision = table.revision();
        table.refresh(1001s);
        QCOMPARE(table.revision(), revision);
        system.addProcess({.id = 39, .executable = u"/bin/two"_s});
        table.refresh(1002s);
        QVERIFY(table.process(39) && table.process(40));
        system.removeProcess(40);
        table.refresh(1003s);
        QVERIFY(table.process(39) && !table.process(40));
        QVERIFY(table.revision() > revision);
    }
    void seesAReusedNumber()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/one"_s});
        system.addProcess({.id = 41, .executable = u"/bin/other"_s});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        const QDir proc(system.path(u"proc"_s));
        QVERIFY(QDir().rename(proc.filePath(u"40"_s),
                              proc.filePath(u"gone"_s))); // keeps the folder's number taken
        system.addProcess({.id = 40, .executable = u"/bin/two"_s, .startTime = 5000});
        table.refresh(1001s);
        QCOMPARE(table.process(40)->executable, u"/bin/two"_s);
        QVERIFY(table.process(41));
    }
    void readsYoungProcessesAgain()
    {
        const auto tick = sysconf(_SC_CLK_TCK);
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/launcher"_s, .startTime = quint64(1000 * tick)});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1001s);
        system.addProcess({.id = 40, .executable = u"/bin/program"_s, .startTime = quint64(1000 * tick)});
        table.refresh(1002s);
        QCOMPARE(table.process(40)->executable, u"/bin/program"_s);
        table.refresh(1030s);
        system.addProcess({.id = 40, .executable = u"/bin/late"_s, .startTime = quint64(1000 * tick)});
        table.refresh(1031s);
        QCOMPARE(table.process(40)->executable, u"/bin/program"_s);
        table.refresh(1041s);
        QCOMPARE(table.process(40)->executable, u"/bin/late"_s);
    }
    void readsAllOfAnOldProcessWithinHalfAMinute()
    {
        MadeSystem system;
        const auto run = [&](const QByteArray &script) {
            for (const auto id : {40, 41, 42, 43})
                system.addProcess({.id = id,
                                   .executable = u"/bin/python3"_s,
                                   .arguments = {QString::fromLatin1(script)},
                                   .command = script});
        };
        run("first");
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        run("second");
        for (auto now = 1001s; now <= 1030s; ++now)
            table.refresh(now);
        for (const auto id : {40, 41, 42, 43})
            QCOMPARE(table.process(id)->commandLine.last(), u"second"_s);
    }
    void leavesOutWhatDoesNotRunHere()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/zombie"_s, .state = 'Z'});
        system.addProcess({.id = 41, .executable = u"/bin/kernel"_s, .flags = 0x00200000});
        system.addProcess({.id = 42, .executable = u"/bin/mine"_s});
        system.write(u"proc/43/stat"_s, "rubbish");
        system.write(u"proc/44"_s, "a file");
        system.write(u"proc/99999999999999/stat"_s, "too large");
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        QCOMPARE(table.processes().size(), size_t(1));
        QVERIFY(table.process(42));
        ProcessTable ofAnother(system.path(u"proc"_s), geteuid() + 1);
        ofAnother.refresh(1000s);
        QCOMPARE(ofAnother.processes().size(), size_t(0));
    }
    void forgetsNobodyWhileNoFileCanBeOpened()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/old"_s});
        system.addProcess({.id = 41, .executable = u"/bin/ending"_s});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        const auto revision = table.revision();
        system.addProcess({.id = 42, .executable = u"/bin/new"_s, .arguments = {u"x"_s}});
        {
            const NoMoreFiles full;
            table.refresh(1030s); // each is looked at again
            QVERIFY(table.process(40) && table.process(41) && !table.process(42));
            QCOMPARE(table.process(40)->executable, u"/bin/old"_s);
            QCOMPARE(table.revision(), revision);
        }
        system.removeProcess(41);
        table.refresh(1031s);
        QVERIFY(table.process(40) && !table.process(41));
        QVERIFY2(table.process(42), "read as soon as that can be done");
        QCOMPARE(table.process(42)->commandLine, (QStringList{u"/bin/new"_s, u"x"_s}));
    }
    void aWeekAsleepChangesNothing()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/one"_s});
        system.addProcess({.id = 41, .executable = u"/bin/two"_s});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        system.removeProcess(41);
        system.addProcess({.id = 42, .executable = u"/bin/three"_s});
        table.refresh(1000s + std::chrono::weeks(1));
        QVERIFY(table.process(40) && !table.process(41) && table.process(42));
        QCOMPARE(table.process(40)->executable, u"/bin/one"_s);
    }
    void anUnreadableStateIsNoEnd()
    {
        MadeSystem system;
        system.addProcess({.id = 40, .executable = u"/bin/one"_s});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(1000s);
        system.write(u"proc/40/stat"_s, "rubbish");
        table.refresh(1030s);
        QVERIFY(table.process(40));
        system.addProcess({.id = 40, .executable = u"/bin/one"_s, .state = 'Z'});
        table.refresh(1060s);
        QVERIFY(!table.process(40));
    }

    void endsWithoutProc()
    {
        ProcessTable table(u"/nowhere"_s, geteuid());
        QVERIFY(!table.readable());
        table.refresh(1s);
        QCOMPARE(table.processes().size(), size_t(0));
    }

    void knowsSessionParts_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("script");
        QTest::addColumn<bool>("part");
        QTest::newRow("window manager") << u"/usr/bin/openbox"_s << QString() << true;
        QTest::newRow("family") << u"/usr/libexec/gvfsd-trash"_s << QString() << true;
        QTest::newRow("script") << u"/usr/bin/python3.11"_s << u"/usr/bin/cinnamon-launcher"_s << true;
        QTest::newRow("unreadable") << QString() << QString() << true;
        QTest::newRow("application") << u"/usr/bin/gimp"_s << QString() << false;
    }
    void knowsSessionParts()
    {
        QFETCH(QString, executable);
        QFETCH(QString, script);
        ProcessFacts process;
        process.id = 40;
        process.executable = executable;
        process.state.command = "gnome-shell";
        process.call.program = script.isEmpty() ? executable : script;
        QTEST(isSessionPart(process), "part");
    }

    void signalsTheRealOne()
    {
        QProcess sleeper;
        sleeper.start(u"sleep"_s, {u"60"_s});
        QVERIFY(sleeper.waitForStarted());
        const auto id = qint32(sleeper.processId());
        ProcessTable table(u"/proc"_s, geteuid());
        table.refresh(timeSinceBoot());
        const auto *process = table.process(id);
        QVERIFY(process);
        const ProcessKey key{id, process->state.startTime};
        QVERIFY2(!table.signal({id, key.startTime + 1}, SIGKILL), "another process of that number");
        QVERIFY2(!table.signal({getpid(), 0}, SIGTERM), "never itself");
        table.watch({key});
        QVERIFY2(!table.signal({id, key.startTime + 1}, SIGKILL), "another process of that number");
        QVERIFY(!sleeper.waitForFinished(100));
        QVERIFY(table.signal(key, SIGKILL));
        // Ended but not yet waited for: it is gone for us as soon as the kernel says so.
        QTRY_VERIFY_WITH_TIMEOUT((table.noticeEnds(), !table.process(id)), 30'000);
        QTRY_COMPARE(sleeper.state(), QProcess::NotRunning);
        QVERIFY(!table.signal(key, SIGKILL));
    }
    void signalsWhomItHoldsWhileNoFileCanBeOpened()
    {
        QProcess held;
        QProcess other;
        for (auto *sleeper : {&held, &other}) {
            sleeper->start(u"sleep"_s, {u"60"_s});
            QVERIFY(sleeper->waitForStarted());
        }
        ProcessTable table(u"/proc"_s, geteuid());
        table.refresh(timeSinceBoot());
        const auto keyOf = [&](const QProcess &process) {
            const auto id = qint32(process.processId());
            return ProcessKey{id, table.process(id)->state.startTime};
        };
        const auto heldKey = keyOf(held);
        const auto otherKey = keyOf(other);
        table.watch({heldKey});
        {
            const NoMoreFiles full;
            QVERIFY2(!table.signal(otherKey, SIGKILL), "nobody is signalled by the number alone");
            table.watch({heldKey, otherKey}); // the one that is held stays so
            QVERIFY(table.signal(heldKey, SIGKILL));
        }
        QVERIFY(held.waitForFinished());
        QCOMPARE(other.state(), QProcess::Running);
        QVERIFY(table.signal(otherKey, SIGKILL));
        QVERIFY(other.waitForFinished());
    }
    void neverTouchesThroughAPicture()
    {
        QProcess sleeper;
        sleeper.start(u"sleep"_s, {u"60"_s});
        QVERIFY(sleeper.waitForStarted());
        ProcessTable real(u"/proc"_s, geteuid());
        real.refresh(timeSinceBoot());
        const auto id = qint32(sleeper.processId());
        const auto start = real.process(id)->state.startTime;
        MadeSystem system;
        system.addProcess({.id = id, .executable = u"/bin/sleep"_s, .startTime = start});
        ProcessTable table(system.path(u"proc"_s), geteuid());
        table.refresh(timeSinceBoot());
        QVERIFY(table.process(id));
        table.watch({{id, start}});
        QVERIFY(!table.signal({id, start}, SIGKILL));
        QVERIFY(!sleeper.waitForFinished(100));
        sleeper.kill();
        sleeper.waitForFinished();
    }
};

QUORVEL_TEST(TestProcessTable, QCoreApplication)
#include "tst_processTable.moc"
