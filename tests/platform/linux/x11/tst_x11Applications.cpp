#include "VirtualDesktop.h"
#include "X11Applications.h"
#include "X11Idle.h"
#include "patience.h"

#include <QElapsedTimer>
#include <QStandardPaths>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <linux/sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

[[noreturn]] void become(const QList<QByteArray> &words)
{
    std::vector<char *> arguments;
    for (const auto &word : words)
        arguments.push_back(const_cast<char *>(word.constData()));
    arguments.push_back(nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL); // also where the test itself is killed
    execv(arguments[0], arguments.data());
    _exit(127);
}

/// Starts a program under exactly that number; -1 where this is not permitted.
pid_t startAs(pid_t wanted, const QList<QByteArray> &words)
{
    clone_args how{};
    how.exit_signal = SIGCHLD;
    how.set_tid = quint64(quintptr(&wanted));
    how.set_tid_size = 1;
    const auto id = pid_t(syscall(SYS_clone3, &how, sizeof(how)));
    if (id == 0) {
        become(words);
    }
    return id;
}

/// A child that nobody waits for until it is ended.
pid_t startChild(const QList<QByteArray> &words)
{
    const auto id = fork();
    if (id == 0)
        become(words);
    if (id < 0)
        qFatal("fork: %s", strerror(errno)); // a signal to -1 goes to everybody
    return id;
}

bool lives(pid_t id)
{
    return waitpid(id, nullptr, WNOHANG) == 0;
}

/// Whether the child has become its program already.
bool isProgram(pid_t id, const QString &path)
{
    return QFileInfo(u"/proc/%1/exe"_s.arg(id)).symLinkTarget() == QFileInfo(path).canonicalFilePath();
}

} // namespace

class TestX11Applications : public QObject
{
    Q_OBJECT

    std::unique_ptr<VirtualDesktop> m_desktop;
    std::shared_ptr<X11Connection> m_connection;
    std::unique_ptr<X11Applications> m_applications;
    std::vector<pid_t> m_children;

    QStringList names()
    {
        QStringList names;
        for (const auto &application : m_applications->running())
            names << application.localizedName.value_or(u"-"_s);
        return names;
    }
    /// The application in front; an empty one where that is unknown, also because the server was late.
    RunningApplication front() { return m_applications->frontmost().value_or(RunningApplication()); }
    std::optional<RunningApplication> named(const QString &name)
    {
        for (const auto &application : m_applications->running()) {
            if (application.localizedName == name)
                return application;
        }
        return std::nullopt;
    }
    void look()
    {
        ApplicationPlaces places;
        places.desktop = {{m_desktop->path(u"data"_s)}, {m_desktop->path()}, u"ru_RU.UTF-8"_s};
        m_connection = std::make_shared<X11Connection>(m_desktop->display());
        m_applications =
            std::make_unique<X11Applications>(m_connection, places, OwnQuit(QDBusConnection(u"none"_s)));
    }
    void begin(VirtualDesktop::Manager manager = VirtualDesktop::Manager::Openbox)
    {
        m_desktop = std::make_unique<VirtualDesktop>(manager);
        look();
        QVERIFY2(m_desktop->works(), qPrintable(m_desktop->report()));
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"Xvfb"_s).isEmpty() ||
            QStandardPaths::findExecutable(u"openbox"_s).isEmpty())
            QSKIP("not run: Xvfb or openbox is missing here");
    }
    void cleanup()
    {
        if (QTest::currentTestFailed() && m_desktop)
            qWarning().noquote() << "The desktop:" << m_desktop->report();
        for (const auto child : std::exchange(m_children, {})) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
        m_applications.reset();
        m_connection.reset();
        m_desktop.reset();
    }

    void namesByTheDesktopEntry()
    {
        begin();
        m_desktop->addEntry(u"org.example.Steam"_s, "Name=Steam\nName[ru]=Стим\nExec=steam %U\n");
        const auto id = m_desktop->start(u"steam"_s, {u"--class"_s, u"Whatever"_s});
        const RunningApplication expected{id, u"Стим"_s, u"org.example.Steam"_s,
                                          m_desktop->program(u"steam"_s)};
        TRY_VERIFY(m_applications->frontmost());
        TRY_COMPARE(front(), expected);
        TRY_COMPARE(m_applications->running(), std::vector{expected});
    }

    void helpersAndWindowsMakeOneEntryAndEndWithIt()
    {
        begin();
        const auto id = m_desktop->start(
            u"many"_s, {u"--class"_s, u"Many"_s, u"--windows"_s, u"3"_s, u"--helpers"_s, u"2"_s});
        X11Windows windows(std::make_shared<X11Connection>(m_desktop->display()));
        TRY_COMPARE((windows.update(), windows.windows().size()),
                    size_t(3)); // the manager takes them in one by one
        TRY_COMPARE(names(), QStringList{u"Many"_s});
        QCOMPARE(named(u"Many"_s)->processId, id);
        m_applications->terminate(*named(u"Many"_s));
        TRY_VERIFY(!m_desktop->runs(id)); // only when all three windows were closed
        TRY_COMPARE(names(), QStringList());
    }

    void aTrayProgramIsListedAndAskedBySignal()
    {
        begin();
        m_desktop->addEntry(u"discord"_s, "Name=Discord\nExec=discord\n");
        const auto id = m_desktop->start(u"discord"_s, {u"--windows"_s, u"0"_s});
        TRY_COMPARE(names(), QStringList{u"Discord"_s});
        QVERIFY(!m_applications->frontmost());
        m_applications->terminate(*named(u"Discord"_s));
        TRY_VERIFY(!m_desktop->runs(id));
    }

    void aWindowThatCannotBeAskedLeavesTheSignal()
    {
        begin(VirtualDesktop::Manager::None);
        const auto id = m_desktop->start(u"plain"_s, {u"--deaf"_s});
        TRY_COMPARE(names(), QStringList{u"plain"_s});
        m_applications->terminate(*named(u"plain"_s));
        TRY_VERIFY(!m_desktop->runs(id));
    }

    void oneThatHidesOnClosingStaysUntilForced()
    {
        begin();
        m_desktop->addEntry(u"discord"_s, "Name=Discord\nExec=discord\n");
        const auto id = m_desktop->start(u"discord"_s, {u"--hide"_s});
        TRY_VERIFY(m_applications->frontmost());
        m_applications->terminate(*named(u"Discord"_s));
        TRY_VERIFY(!m_applications->frontmost());
        QVERIFY(m_desktop->runs(id));
        QCOMPARE(names(), QStringList{u"Discord"_s});
        m_applications->forceTerminate(*named(u"Discord"_s));
        TRY_VERIFY(!m_desktop->runs(id));
        TRY_COMPARE(names(), QStringList());
    }

    void docksAndTheSessionAreNoApplications()
    {
        begin();
        m_desktop->start(u"panel"_s, {u"--type"_s, u"DOCK"_s});
        m_desktop->start(u"plain"_s);
        TRY_COMPARE(names(), QStringList{u"plain"_s});
        QTest::qWait(100);
        QCOMPARE(names(), QStringList{u"plain"_s});
    }

    void aWindowOfAnotherHostIsNamedButNeverSignalled()
    {
        begin();
        const auto sleeper = startChild({"/bin/sleep", "600"});
        m_children.push_back(sleeper);
        m_desktop->start(u"remote"_s,
                         {u"--machine"_s, u"elsewhere.example"_s, u"--pid"_s, QString::number(sleeper)});
        TRY_COMPARE(front().localizedName, std::optional(u"remote"_s));
        auto claimed = front();
        QCOMPARE(claimed.processId, 0);
        QCOMPARE(names(), QStringList());
        m_applications->terminate(claimed);
        m_applications->forceTerminate(claimed);
        claimed.processId = sleeper;
        m_applications->forceTerminate(claimed);
        QTest::qWait(50);
        QVERIFY(lives(sleeper));
    }

    void theKernelsWordGoesBeforeTheWindows()
    {
        begin();
        const auto id = m_desktop->start(u"liar"_s, {u"--pid"_s, QString::number(getpid())});
        TRY_VERIFY(named(u"liar"_s));
        QCOMPARE(named(u"liar"_s)->processId, id);
        const auto silent = m_desktop->start(u"silent"_s, {u"--pid"_s, u"0"_s});
        TRY_VERIFY(named(u"silent"_s));
        QCOMPARE(named(u"silent"_s)->processId, silent);
    }

    void anotherUsersProcessIsNotListed()
    {
        if (geteuid() != 0)
            QSKIP("not run: only root can start another user's process");
        begin();
        m_desktop->addEntry(u"theirs"_s, "Name=Theirs\nExec=theirs\n");
        QVERIFY(QFile::setPermissions(m_desktop->path(), QFile::Permissions(0x7755)));
        const auto id =
            m_desktop->start(u"theirs"_s, {}, {u"setpriv"_s, u"--reuid=65534"_s, u"--clear-groups"_s});
        TRY_VERIFY(m_applications->frontmost());
        QCOMPARE(front().processId, 0);
        QCOMPARE(names(), QStringList());
        m_applications->forceTerminate({id, u"Theirs"_s, u"theirs"_s, {}});
        QTest::qWait(50);
        QVERIFY(m_desktop->runs(id));
    }

    void aReusedNumberIsNotHit_data()
    {
        QTest::addColumn<bool>("bySameApplication");
        QTest::newRow("a stranger") << false;
        QTest::newRow("the same application") << true;
    }
    void aReusedNumberIsNotHit()
    {
        QFETCH(bool, bySameApplication);
        begin();
        m_desktop->addEntry(u"reused"_s, "Name=Reused\nExec=reused\n");
        const auto id = m_desktop->start(u"reused"_s);
        TRY_VERIFY(named(u"Reused"_s));
        const auto former = *named(u"Reused"_s);
        m_desktop->end(id);
        QTest::qWait(30); // start times are counted in steps of 10 ms; numbers do not come back that fast by
                          // themselves
        qputenv("DISPLAY", m_desktop->display().toLatin1());
        const auto program = bySameApplication ? m_desktop->program(u"reused"_s) : u"/bin/sleep"_s;
        const auto options =
            bySameApplication ? QList<QByteArray>{"--windows", "0"} : QList<QByteArray>{"600"};
        const auto newcomer = startAs(id, QList{QFile::encodeName(program)} + options);
        if (newcomer != id)
            QSKIP("not run: choosing a process number is not permitted here");
        m_children.push_back(newcomer);
        TRY_VERIFY(isProgram(newcomer, program));
        m_applications->terminate(former);
        m_applications->forceTerminate(former);
        QTest::qWait(50);
        QVERIFY(lives(newcomer));
        QCOMPARE(names(), bySameApplication ? QStringList{u"Reused"_s} : QStringList());
    }

    void aZombieIsGone()
    {
        begin();
        m_desktop->addEntry(u"ghost"_s, "Name=Ghost\nExec=ghost\n");
        const auto ghost = QFile::encodeName(m_desktop->program(u"ghost"_s));
        qputenv("DISPLAY", m_desktop->display().toLatin1());
        const auto child = startChild({ghost, "--windows", "0"});
        m_children.push_back(child);
        TRY_COMPARE(names(), QStringList{u"Ghost"_s});
        kill(child, SIGKILL);
        TRY_COMPARE(names(), QStringList());
        QVERIFY(QFileInfo::exists(u"/proc/%1"_s.arg(child)));
    }

    void odditiesInNamesAreShownPlainly()
    {
        begin();
        m_desktop->addEntry(u"broken"_s, "Name=\xff\xfe\nExec=\"open\n");
        m_desktop->addEntry(u"long"_s, "Name=" + QByteArray(10'000, 'L') + "\nExec=long\n");
        m_desktop->start(u"long"_s);
        m_desktop->start(u"odd"_s, {u"--class"_s, u"a\nb\x01"_s + QString(2000, u'c')});
        TRY_COMPARE(names().size(), 2);
        QCOMPARE(names()[0], QString(256, u'L'));
        QVERIFY(names()[1].startsWith(u"a b c"_s));
        QVERIFY(names()[1].size() <= 256);
    }

    void windowsThatComeAndGoDoNoHarm()
    {
        begin();
        for (int round = 0; round < 8; ++round) {
            const auto id = m_desktop->start(u"brief"_s, {u"--windows"_s, u"4"_s});
            m_applications->frontmost();
            m_desktop->end(id);
            m_applications->frontmost();
            m_applications->running();
        }
        TRY_COMPARE(names(), QStringList());
        QVERIFY(m_applications->availability().works);
    }

    void aWindowManagerMayEndAndBegin()
    {
        begin();
        const auto id = m_desktop->start(u"steady"_s);
        TRY_VERIFY(m_applications->frontmost());
        m_desktop->manager().kill();
        m_desktop->manager().waitForFinished();
        TRY_VERIFY(!m_applications->frontmost());
        TRY_COMPARE(names(), QStringList{u"steady"_s});
        QVERIFY(m_desktop->startManager());
        TRY_COMPARE(names(), QStringList{u"steady"_s});
        m_applications->terminate(*named(u"steady"_s));
        TRY_VERIFY(!m_desktop->runs(id));
    }

    void aKilledServerIsSaidAndAnsweredAsUnknown()
    {
        begin();
        m_desktop->start(u"last"_s);
        const X11Idle idle(m_connection);
        TRY_VERIFY(m_applications->frontmost());
        QVERIFY(idle.sinceLastInput());
        m_desktop->server().kill();
        m_desktop->server().waitForFinished();
        QVERIFY(!m_applications->frontmost());
        QCOMPARE(names(), QStringList());
        QVERIFY(!idle.sinceLastInput());
        QCOMPARE(idle.seconds(), 0);
        QVERIFY(!m_applications->availability().works);
        QVERIFY(!m_applications->availability().reasonEnglish.isEmpty());
        QVERIFY(!m_applications->availability().reasonRussian.isEmpty());
        QVERIFY(!idle.availability().works);
        m_applications->terminate({1, {}, {}, {}});
    }

    void aServerThatHangsHoldsNobodyUpForLong()
    {
        begin();
        m_desktop->start(u"patient"_s);
        const X11Idle idle(m_connection);
        TRY_VERIFY(m_applications->frontmost());
        kill(pid_t(m_desktop->server().processId()), SIGSTOP);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!idle.sinceLastInput());
        QVERIFY2(timer.elapsed() < 400, "one wait");
        for (int second = 0; second < 10; ++second) {
            QVERIFY(!idle.sinceLastInput());
            QVERIFY(!m_applications->frontmost());
            m_applications->running();
        }
        QVERIFY2(timer.elapsed() < 600, "no further one");
        QVERIFY(!m_applications->availability().works);
        kill(pid_t(m_desktop->server().processId()), SIGCONT);
        TRY_VERIFY(idle.sinceLastInput());
        TRY_COMPARE(names(), QStringList{u"patient"_s});
        QVERIFY(m_applications->availability().works);
    }

    void withoutAServerNothingIsKnown()
    {
        X11Applications applications(std::make_shared<X11Connection>(u":4095"_s), {},
                                     OwnQuit(QDBusConnection(u"none"_s)));
        QVERIFY(!applications.availability().works);
        QVERIFY(!applications.frontmost());
        QCOMPARE(applications.running().size(), size_t(0));
    }

    void idleTimeFollowsInput()
    {
        begin();
        const X11Idle idle(m_connection);
        QTest::qWait(300);
        const auto before = idle.sinceLastInput();
        QVERIFY(before && *before >= 250ms);
        int place = 0; // another each time, else it is no input
        const auto sinceAMove = [&] {
            m_desktop->run(u"xdotool"_s, {u"mousemove"_s, QString::number(++place), u"10"_s});
            return idle.sinceLastInput().value_or(*before);
        };
        TRY_VERIFY(sinceAMove() < *before); // on a busy machine the tool takes its time to end
    }
};

QTEST_GUILESS_MAIN(TestX11Applications)
#include "tst_x11Applications.moc"
