// The whole program on a desktop of its own: its window, its status item, and how it starts again and ends.
#include "StatusWatcher.h"
#include "VirtualDesktop.h"
#include "desktopParts.h"

#include <QDBusConnection>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_shell : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<VirtualDesktop> m_desktop;
    std::unique_ptr<StatusWatcher> m_watcher;
    std::unique_ptr<QProcess> m_program;

    void startProgram(QProcess &process, const QStringList &arguments = {})
    {
        auto environment = m_desktop->environment();
        environment.insert(u"QT_LOGGING_RULES"_s, u"quorvel.engine.command.debug=true"_s);
        process.setProcessEnvironment(environment);
        bindToTest(process);
        process.start(QString::fromLocal8Bit(QUORVEL_PROGRAM), arguments);
    }

    /// The main window as the X server knows it while it can be seen; empty else.
    QString window() const
    {
        return m_desktop->run(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Quorvel$"_s});
    }

    /// Lines like "WIDTH=1180".
    QStringList geometry() const
    {
        return m_desktop->run(u"xdotool"_s, {u"getwindowgeometry"_s, u"--shell"_s, window()}).split(u'\n');
    }

    QString activeTitle() const
    {
        return m_desktop->run(u"xdotool"_s, {u"getactivewindow"_s, u"getwindowname"_s});
    }

    /// Whether the window is there and active to stay: a window manager takes a new one off the screen while
    /// it frames it.
    bool windowStandsInFront() const
    {
        for (int look = 0; look < 5; ++look) {
            if (window().isEmpty() || activeTitle() != u"Quorvel")
                return false;
            QTest::qWait(40);
        }
        return true;
    }

    /// Presses the key that closes a window; whether it is gone. A window that just came to the front may
    /// miss it.
    bool windowCloses() const
    {
        if (!window().isEmpty())
            m_desktop->run(u"xdotool"_s, {u"key"_s, u"alt+F4"_s});
        return window().isEmpty();
    }

    QString title() const { return m_watcher->toolTip(); }

private Q_SLOTS:
    void init()
    {
        m_desktop = std::make_unique<VirtualDesktop>();
        QVERIFY2(m_desktop->works(), "Xvfb, openbox, xdotool and dbus-daemon are needed");
        QDir().mkpath(m_desktop->filePath(u"config/quorvel"_s));
        QFile preferences(m_desktop->filePath(u"config/quorvel/preferences"_s));
        QVERIFY(preferences.open(QIODevice::WriteOnly));
        preferences.write("accessMode = \"guest\"\n");
        preferences.close();
        m_watcher = std::make_unique<StatusWatcher>(m_desktop->busAddress());
        QVERIFY(m_watcher->works());
        m_program = std::make_unique<QProcess>();
        startProgram(*m_program);
        TRY_VERIFY(windowStandsInFront());
        TRY_COMPARE(m_watcher->items().size(), 1);
    }

    void cleanup()
    {
        if (QTest::currentTestFailed() && m_desktop)
            qWarning().noquote() << "The desktop:" << m_desktop->report();
        if (m_program && m_program->state() != QProcess::NotRunning) {
            m_program->kill();
            m_program->waitForFinished();
        }
        m_program.reset();
        m_watcher.reset();
        m_desktop.reset();
    }

    void windowHasTitleSizeAndPlace()
    {
        QVERIFY(geometry().contains(u"WIDTH=1180"_s));
        QVERIFY(geometry().contains(u"HEIGHT=820"_s));
        const int left = geometry().filter(u"X="_s).value(0).mid(2).toInt();
        QVERIFY2(qAbs(left - 110) <= 10,
                 qPrintable(QString::number(left))); // centred on 1400, but for its frame
        m_desktop->run(u"xdotool"_s, {u"windowsize"_s, window(), u"300"_s, u"300"_s});
        TRY_VERIFY(geometry().contains(u"WIDTH=900"_s));
        QVERIFY(geometry().contains(u"HEIGHT=640"_s));
    }

    void closedWindowComesBackAndProgramLives()
    {
        TRY_VERIFY(windowCloses());
        QCOMPARE(m_program->state(), QProcess::Running);
        QCOMPARE(title(), u"QV Ready"_s);
        QVERIFY(m_watcher->pressEntry(u"Show Quorvel"_s));
        TRY_VERIFY(windowStandsInFront());

        TRY_VERIFY(windowCloses());
        QProcess second;
        startProgram(second, {u"https://example.org"_s}); // raises the window whatever it carries
        QVERIFY(second.waitForFinished(patience));
        QCOMPARE(second.exitCode(), 0);
        TRY_VERIFY(windowStandsInFront());

        TRY_VERIFY(windowCloses());
        m_watcher->activate();
        TRY_VERIFY(windowStandsInFront());
    }

    void statusItemTellsAndCommands()
    {
        QCOMPARE(title(), u"QV Ready"_s);
        QCOMPARE(m_watcher->menuLabels(), QStringList({u"Show Quorvel"_s, u"Start Study"_s, u"Lock Now"_s,
                                                       u"Stop Quorvel"_s, u"-"_s, u"Quit"_s}));
        TRY_VERIFY(windowCloses());
        QVERIFY(m_watcher->pressEntry(u"Lock Now"_s));
        TRY_COMPARE(title(), u"QV Locked"_s);
        QVERIFY(m_watcher->pressEntry(u"Stop Quorvel"_s));
        TRY_COMPARE(title(), u"QV Ready"_s);
        QVERIFY(window().isEmpty());
        QVERIFY(m_watcher->pressEntry(u"Start Study"_s));
        TRY_VERIFY(title().startsWith(u"QV 2"_s)); // "QV 25:00" and falling, or paused there
        TRY_VERIFY(windowStandsInFront());
        QVERIFY(m_watcher->pressEntry(u"Quit"_s));
        QVERIFY(m_program->waitForFinished(patience));
        QCOMPARE(m_program->exitCode(), 0);
    }

    void keysCommand()
    {
        m_desktop->run(u"xdotool"_s, {u"key"_s, u"ctrl+l"_s});
        TRY_COMPARE(title(), u"QV Locked"_s);
        m_desktop->run(u"xdotool"_s, {u"key"_s, u"ctrl+s"_s});
        TRY_VERIFY(title().startsWith(u"QV 2"_s));
        m_desktop->run(u"xdotool"_s, {u"key"_s, u"ctrl+q"_s});
        QVERIFY(m_program->waitForFinished(patience));
        QCOMPARE(m_program->exitCode(), 0);
    }

    /// What a status item and its place cost the session bus: the item itself is told, nobody connects anew.
    void theBusSeesNoNewConnectionsWhileNothingChanges()
    {
        const auto connections = [this] {
            auto bus = QDBusConnection::connectToBus(m_desktop->busAddress(), u"count"_s);
            const auto number = bus.baseService().section(u'.', -1).toInt(); // they are numbered as they come
            QDBusConnection::disconnectFromBus(u"count"_s);
            return number;
        };
        QTest::qWait(1000); // its start is over
        const auto before = connections();
        QTest::qWait(6000); // longer than the support is asked about
        QCOMPARE(connections(), before + 1);
    }

    void aSessionBusThatDiesIsSurvived()
    {
        m_desktop->bus().kill();
        QVERIFY(m_desktop->bus().waitForFinished(patience));
        QTest::qWait(6000); // everything that asks the bus now and then has asked
        QCOMPARE(m_program->state(), QProcess::Running);
        m_program->readAllStandardError();
        QByteArray said;
        m_desktop->run(u"xdotool"_s, {u"key"_s, u"ctrl+l"_s});
        TRY_VERIFY((said += m_program->readAllStandardError()).contains("lockNow"));
        QVERIFY(windowStandsInFront());
        m_program->terminate();
        QVERIFY(m_program->waitForFinished(patience));
        QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program->exitCode(), 0);
    }

    /// Without its X server the program has nowhere to be; what was done is kept, and the next start finds
    /// it.
    void anXServerThatDiesTakesNothingElseWithIt()
    {
        m_desktop->run(u"xdotool"_s, {u"key"_s, u"ctrl+s"_s});
        TRY_VERIFY(title().startsWith(u"QV 2"_s));
        const auto preferences = [this] {
            QByteArray bytes;
            for (const auto &name : {u"preferences"_s, u"preferences.journal"_s}) {
                QFile file(m_desktop->filePath(u"config/quorvel/"_s + name));
                bytes += file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
            }
            return bytes;
        };
        QVERIFY(preferences().contains("accessMode = \"guest\"\n"));
        m_desktop->server().kill();
        QVERIFY(m_program->waitForFinished(patience));
        QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
        QVERIFY(m_program->exitCode() != 0);
        QVERIFY(m_program->readAllStandardError().contains("X11 connection broke"));
        QVERIFY(preferences().contains("accessMode = \"guest\"\n"));
        auto environment = m_desktop->environment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        QProcess next;
        next.setProcessEnvironment(environment);
        bindToTest(next);
        next.start(QString::fromLocal8Bit(QUORVEL_PROGRAM), {});
        QVERIFY(!next.waitForFinished(2000)); // it has neither given up nor handed over
        next.terminate();
        QVERIFY(next.waitForFinished(patience));
        QCOMPARE(next.exitCode(), 0);
    }

    void terminationSignalEndsPromptly()
    {
        QElapsedTimer stopwatch;
        stopwatch.start();
        m_program->terminate();
        QVERIFY(m_program->waitForFinished(patience));
        QVERIFY2(stopwatch.elapsed() < 1500, qPrintable(QString::number(stopwatch.elapsed())));
        QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program->exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(tst_shell)
#include "tst_shell.moc"
