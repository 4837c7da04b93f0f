#include "RelayRun.h"
#include "suite.h"

#include <QDir>
#include <QTemporaryDir>
#include <QThread>

#include <cerrno>
#include <map>
#include <memory>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace Qt::StringLiterals;

namespace {

const std::string away = R"({"type":"away"})";
const std::string welcome = R"({"type":"welcome","protocol":1})";

/// `length` bytes in which every stretch is another.
std::string longMessage(std::size_t length)
{
    std::string message(length, ' ');
    std::uint32_t state = 1;
    for (auto &byte : message) {
        state = state * 1664525 + 1013904223;
        byte = char(state >> 24);
    }
    return message;
}

/// In which ways a program that was away can come.
const QStringList ways{u"binds and listens"_s, u"listens later"_s,   u"renames its socket"_s,
                       u"over a dead one"_s,   u"in a new folder"_s, u"in another folder"_s};

/// A relay whose program is away, in a runtime folder of its own.
struct WaitingRelay
{
    QTemporaryDir runtime;
    QString folder = runtime.filePath(u"quorvel"_s);
    RelayRun relay{runtime.path()};
};

std::string lengthOf(std::uint32_t length)
{
    return std::string(reinterpret_cast<const char *>(&length), sizeof length);
}

} // namespace

class tst_relay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const auto &way : ways)
            m_waiting[way] = std::make_unique<WaitingRelay>();
        m_sinceStart.start();
        const auto &stale = m_waiting.at(u"over a dead one"_s);
        QCOMPARE(stale->relay.message(), away);
        Server dead(stale->folder + u"/companion"_s, false);
        QVERIFY(dead.isBound());
        stale->relay.reader = FrameReader(longestFrameToBrowser);
        stale->relay.reader.append(writeFrame(away)); // so that it is there for the test
    }
    void cleanupTestCase() { m_waiting.clear(); }

    void init()
    {
        m_runtime = std::make_unique<QTemporaryDir>();
        QVERIFY(m_runtime->isValid());
        m_folder = m_runtime->filePath(u"quorvel"_s);
        m_socket = m_folder + u"/companion"_s;
    }

    void servesItsExtensionOnly_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("none") << QStringList();
        QTest::newRow("another of Chromium's")
            << QStringList{u"chrome-extension://aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/"_s};
        QTest::newRow("another of Firefox's") << QStringList{u"/tmp/host.json"_s, u"other@example.org"_s};
    }

    void servesItsExtensionOnly()
    {
        QFETCH(QStringList, arguments);
        makeFolder();
        Server server(m_socket);
        const auto before = QDir(m_runtime->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        RelayRun relay(m_runtime->path(), arguments);
        QVERIFY(relay.process.waitForFinished());
        QCOMPARE(relay.process.exitCode(), 1);
        QCOMPARE(relay.process.readAllStandardError().count('\n'), 1);
        QCOMPARE(relay.process.readAllStandardOutput(), QByteArray());
        QVERIFY(!server.accept(0).isOpen());

        QTemporaryDir empty;
        RelayRun second(empty.path(), arguments);
        QVERIFY(second.process.waitForFinished());
        QVERIFY(QDir(empty.path()).isEmpty());
    }

    void servesFirefox()
    {
        makeFolder();
        Server server(m_socket);
        RelayRun relay(m_runtime->path(), {u"/tmp/host.json"_s, QLatin1StringView(firefoxExtensionId)});
        auto connection = server.accept();
        QVERIFY(connection.isOpen());
    }

    void passesMessagesOn()
    {
        makeFolder();
        Server server(m_socket);
        RelayRun relay(m_runtime->path());
        auto connection = server.accept();
        QVERIFY(connection.isOpen());
        for (const std::size_t length : {std::size_t(1), std::size_t(70'000), std::size_t(1024 * 1024)}) {
            const auto message = longMessage(length);
            const auto frame = writeFrame(message);
            // The relay takes in less than the longest message while nobody reads at the other end.
            std::size_t sent = 0;
            std::optional<std::string> got;
            while (sent < frame.size()) {
                sent += connection.send(std::string_view(frame).substr(sent), 50);
                got = relay.message(0);
            }
            got = got ? got : relay.message();
            QVERIFY(got == message);
        }
        for (const std::size_t length : {std::size_t(1), std::size_t(70'000), std::size_t(4 * 1024 * 1024)}) {
            const auto message = longMessage(length);
            relay.process.write(QByteArray::fromStdString(writeFrame(message)));
            std::optional<std::string> got;
            for (int turn = 0; turn < 3000 && !got; ++turn) {
                relay.process.waitForBytesWritten(1);
                got = connection.message(1);
            }
            QVERIFY(got == message);
        }
    }

    void takesMessagesInPieces()
    {
        makeFolder();
        Server server(m_socket);
        RelayRun relay(m_runtime->path());
        auto connection = server.accept();
        const auto frames = writeFrame(welcome) + writeFrame("{}");
        for (std::size_t at = 1; at < frames.size(); ++at) {
            QCOMPARE(connection.send(std::string_view(frames).substr(0, at)), at);
            QThread::msleep(1);
            connection.send(std::string_view(frames).substr(at));
            QCOMPARE(relay.message(), welcome);
            QCOMPARE(relay.message(), "{}");
            relay.send(std::string_view(frames).substr(0, at));
            QThread::msleep(1);
            relay.send(std::string_view(frames).substr(at));
            QCOMPARE(connection.message(), welcome);
            QCOMPARE(connection.message(), "{}");
        }
    }

    void findsTheProgramAtOnce_data()
    {
        QTest::addColumn<QString>("way");
        for (const auto &way : ways)
            QTest::newRow(qPrintable(way)) << way;
        while (m_sinceStart.elapsed() < 1800) // their first tries are over: only the watch can tell them
            QThread::msleep(20);
    }

    void findsTheProgramAtOnce()
    {
        QFETCH(QString, way);
        auto &relay = m_waiting.at(way)->relay;
        m_folder = m_waiting.at(way)->folder;
        m_socket = m_folder + u"/companion"_s;
        QCOMPARE(relay.message(), away);
        if (way == u"in a new folder") {
            QVERIFY(QDir(m_folder).removeRecursively());
            QThread::msleep(100);
            makeFolder();
        } else if (way == u"in another folder") {
            QVERIFY(QDir().rename(m_folder, m_folder + u".old"_s));
            QThread::msleep(100);
            makeFolder();
        }
        Server server(way == u"renames its socket" ? m_socket + u".new"_s : m_socket,
                      way != u"listens later");
        QVERIFY(server.isBound());
        QElapsedTimer stopwatch;
        stopwatch.start();
        if (way == u"renames its socket")
            QVERIFY(QFile::rename(m_socket + u".new"_s, m_socket));
        if (way == u"listens later") {
            QThread::msleep(150);
            server.listen();
        }
        auto connection = server.accept(1000);
        QVERIFY(connection.isOpen());
        qInfo("connected after %lld ms", stopwatch.elapsed());
        connection.send(writeFrame(welcome));
        QCOMPARE(relay.message(), welcome); // and no second away before it
    }

    void dropsWhatNobodyHears()
    {
        makeFolder();
        RelayRun relay(m_runtime->path());
        QCOMPARE(relay.message(), away);
        for (int turn = 0; turn < 20; ++turn)
            relay.send(writeFrame(std::string(100'000, 'x')));
        relay.process.waitForBytesWritten();
        TRY_COMPARE(relay.process.bytesToWrite(), 0);
        relay.send(writeFrame("{\"begun\":1}").substr(0, 6));
        QThread::msleep(100);
        Server server(m_socket);
        auto connection = server.accept();
        QVERIFY(connection.isOpen());
        relay.send(writeFrame("{\"begun\":1}").substr(6));
        QCOMPARE(connection.message(), "{\"begun\":1}");
    }

    void tellsThatTheProgramHasGone()
    {
        makeFolder();
        RelayRun relay(m_runtime->path());
        QCOMPARE(relay.message(), away);
        for (int turn = 0; turn < 3; ++turn) {
            auto server = std::make_unique<Server>(m_socket);
            auto connection = server->accept(1000);
            QVERIFY(connection.isOpen());
            connection.send(writeFrame(welcome));
            QCOMPARE(relay.message(), welcome);
            server.reset();
            connection.close();
            QCOMPARE(relay.message(), away);
        }
    }

    void givesNoHalfMessage()
    {
        makeFolder();
        RelayRun relay(m_runtime->path());
        QCOMPARE(relay.message(), away);
        for (const std::size_t part : {2, 5, 500'000}) {
            auto server = std::make_unique<Server>(m_socket);
            auto connection = server->accept();
            connection.send(writeFrame(welcome) + writeFrame(longMessage(600'000)).substr(0, part));
            server.reset();
            connection.close();
            QCOMPARE(relay.message(), welcome);
            QCOMPARE(relay.message(), away);
        }
    }

    void deliversTheLastWords()
    {
        // The program goes while a message to it waits and the browser has yet to read its last ones.
        makeFolder();
        auto server = std::make_unique<Server>(m_socket);
        RelayRun relay(m_runtime->path());
        auto connection = server->accept();
        const auto frame = writeFrame(std::string(996, 'x'));
        std::string frames;
        for (int turn = 0; turn < 1000; ++turn)
            frames += frame;
        const auto whole = connection.send(frames, 200) / frame.size();
        QVERIFY(whole > 0 && whole < 1000);
        server.reset();
        connection.close();
        relay.send(writeFrame("{}"));
        relay.process.waitForBytesWritten();
        QThread::msleep(100);
        for (std::size_t turn = 0; turn < whole; ++turn)
            QCOMPARE(relay.message(), frame.substr(4));
        QCOMPARE(relay.message(), away);
        QCOMPARE(relay.process.state(), QProcess::Running);
    }

    void leavesABrokenProgramAlone_data()
    {
        QTest::addColumn<quint32>("length");
        QTest::newRow("empty message") << 0U;
        QTest::newRow("too long by one") << longestFrameToBrowser + 1;
        QTest::newRow("4 GiB") << 0xffffffffU;
    }

    void leavesABrokenProgramAlone()
    {
        QFETCH(quint32, length);
        makeFolder();
        Server server(m_socket);
        RelayRun relay(m_runtime->path());
        QElapsedTimer stopwatch;
        for (const int pause : {0, 1000}) {
            stopwatch.start();
            auto connection = server.accept(5000);
            QVERIFY(connection.isOpen());
            QVERIFY2(stopwatch.elapsed() >= pause - 50, qPrintable(QString::number(stopwatch.elapsed())));
            QVERIFY2(stopwatch.elapsed() < pause + 800, qPrintable(QString::number(stopwatch.elapsed())));
            connection.send(writeFrame(welcome) + lengthOf(length) + writeFrame(welcome));
            QVERIFY(connection.ends());
            QCOMPARE(relay.message(), welcome);
            QCOMPARE(relay.message(), away);
            QVERIFY(!relay.message(0));
        }
        relay.process.closeWriteChannel();
        QVERIFY(relay.process.waitForFinished());
        QCOMPARE(relay.process.exitCode(), 0);
        QCOMPARE(relay.process.readAllStandardError().count('\n'), 2);
    }

    void endsWithABrokenBrowser_data()
    {
        QTest::addColumn<quint32>("length");
        QTest::addColumn<bool>("withProgram");
        for (const bool withProgram : {false, true}) {
            const char *where = withProgram ? "with a program" : "while it is away";
            QTest::addRow("empty message, %s", where) << 0U << withProgram;
            QTest::addRow("too long by one, %s", where) << longestFrameFromBrowser + 1 << withProgram;
        }
    }

    void endsWithABrokenBrowser()
    {
        QFETCH(quint32, length);
        QFETCH(bool, withProgram);
        makeFolder();
        const auto server = withProgram ? std::make_unique<Server>(m_socket) : nullptr;
        RelayRun relay(m_runtime->path());
        relay.send(lengthOf(length));
        QVERIFY(relay.process.waitForFinished(patience));
        QCOMPARE(relay.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(relay.process.exitCode(), 1);
        QCOMPARE(relay.process.readAllStandardError().count('\n'), 1);
    }

    void endsWithItsBrowser_data()
    {
        QTest::addColumn<bool>("withProgram");
        QTest::newRow("away") << false;
        QTest::newRow("with a program") << true;
    }

    void endsWithItsBrowser()
    {
        QFETCH(bool, withProgram);
        makeFolder();
        const auto server = withProgram ? std::make_unique<Server>(m_socket) : nullptr;
        RelayRun relay(m_runtime->path());
        if (withProgram) {
            auto connection = server->accept();
            QVERIFY(connection.isOpen());
            relay.process.closeWriteChannel();
            QVERIFY(connection.ends());
        } else {
            QCOMPARE(relay.message(), away);
            relay.process.closeWriteChannel();
        }
        verifyEndsWell(relay);
    }

    void endsWhenNobodyReads()
    {
        makeFolder();
        const auto fifo = makeFifo();
        const int output = open(QFile::encodeName(fifo).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        QVERIFY(output >= 0);
        RelayRun relay(m_runtime->path(), chromiumArguments(), {}, fifo);
        pollfd watched{output, POLLIN, 0};
        QVERIFY(poll(&watched, 1, 3000) == 1); // away
        ::close(output);
        verifyEndsWell(relay);
    }

    void waitsForASlowProgram()
    {
        makeFolder();
        Server server(m_socket);
        RelayRun relay(m_runtime->path());
        auto connection = server.accept();
        const auto message = longMessage(1'000'000);
        constexpr int messages = 96;
        for (int turn = 0; turn < messages; ++turn)
            relay.process.write(QByteArray::fromStdString(writeFrame(message)));
        while (relay.process.waitForBytesWritten(300)) // until the relay takes no more
            QVERIFY(relay.mebibytes() < 64);
        QVERIFY(relay.process.bytesToWrite() > 80'000'000);
        verifyAsleep(relay);
        qInfo("the relay has %lld MiB", relay.mebibytes());
        for (int turn = 0; turn < messages; ++turn) {
            std::optional<std::string> got;
            for (int attempt = 0; attempt < 3000 && !got; ++attempt) {
                relay.process.waitForBytesWritten(1);
                got = connection.message(1);
            }
            QVERIFY(got == message);
        }
        QVERIFY(relay.mebibytes() < 64);
    }

    void waitsForASlowBrowser()
    {
        makeFolder();
        Server server(m_socket);
        RelayRun relay(m_runtime->path());
        auto connection = server.accept();
        const auto message = longMessage(500'000);
        std::string frames;
        for (int turn = 0; turn < 100; ++turn)
            frames += writeFrame(message);
        auto sent =
            connection.send(frames, 300); // nobody reads: the process's channels wait for the event loop
        QVERIFY2(sent < 8'000'000, qPrintable(QString::number(sent)));
        QVERIFY(relay.mebibytes() < 64);
        verifyAsleep(relay);
        int whole = 0;
        while (sent < frames.size()) {
            sent += connection.send(std::string_view(frames).substr(sent), 1);
            while (const auto got = relay.message(0))
                whole += *got == message;
        }
        while (const auto got = relay.message(500))
            whole += *got == message;
        QCOMPARE(whole, 100);
    }

    void endsWithItsBrowserWhileTheProgramIsSlow()
    {
        makeFolder();
        Server server(m_socket);
        const auto fifo = makeFifo();
        const int input = open(QFile::encodeName(fifo).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        QVERIFY(input >= 0); // takes frames of up to 4096 bytes whole or not at all
        RelayRun relay(m_runtime->path(), chromiumArguments(), fifo);
        auto connection = server.accept();
        const auto frame = writeFrame(longMessage(4000));
        pollfd watched{input, POLLOUT, 0};
        while (poll(&watched, 1, 300) == 1)
            QVERIFY(write(input, frame.data(), frame.size()) > 0);
        QVERIFY(relay.process.state() == QProcess::Running);
        ::close(input);
        verifyEndsWell(relay);
    }

    void waitsForNothingWhileTheBrowserReadsNothing()
    {
        // The program goes while the browser reads nothing: the relay neither spins nor heaps up what to
        // tell.
        makeFolder();
        auto server = std::make_unique<Server>(m_socket);
        RelayRun relay(m_runtime->path());
        auto connection = server->accept();
        std::string frames;
        for (int turn = 0; turn < 100; ++turn)
            frames += writeFrame(std::string(100'000, 'x'));
        connection.send(frames, 200);
        server.reset();
        connection.close();
        verifyAsleep(relay);
    }

    void doesNothingWhileNothingHappens()
    {
        makeFolder();
        const RelayRun alone(m_runtime->path());
        QThread::msleep(1500);                 // its first tries are over
        Server server(m_folder + u"/other"_s); // what else lies in the folder is no news
        const auto switchesAlone = alone.switches();
        const QTemporaryDir otherRuntime;
        QVERIFY(QDir(otherRuntime.path()).mkdir(u"quorvel"_s));
        QVERIFY(QFile::setPermissions(otherRuntime.filePath(u"quorvel"_s),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        Server program(otherRuntime.filePath(u"quorvel/companion"_s));
        const RelayRun connected(otherRuntime.path());
        const auto connection = program.accept();
        QVERIFY(connection.isOpen());
        QThread::msleep(100);
        const auto switches = alone.switches();
        QVERIFY(switches - switchesAlone <= 1);
        verifyAsleep(connected, 3000);
        QCOMPARE(alone.switches(), switches);
        QVERIFY(alone.ticks() >= 0 && alone.ticks() <= 2);
    }

    void refusesAnotherUsersProgram()
    {
        if (geteuid() != 0)
            QSKIP("only root can become another user");
        makeFolder();
        Server server(m_socket, false);
        int ends[2];
        QVERIFY(pipe(ends) == 0);
        // Whose socket it is is decided by who listens.
        const auto child = fork();
        if (child == 0)
            listenAsNobody(server, ends[1]);
        ::close(ends[1]);
        char state = 0;
        QVERIFY(read(ends[0], &state, 1) == 1 && state == 'l');
        RelayRun relay(m_runtime->path());
        relay.send(writeFrame("secret"));
        QCOMPARE(relay.message(), away);
        QVERIFY(read(ends[0], &state, 1) == 1);
        QCOMPARE(state, 'n'); // connected, and no byte came
        ::close(ends[0]);
        waitpid(child, nullptr, 0);
        QByteArray said;
        TRY_VERIFY((relay.process.waitForReadyRead(20), said += relay.process.readAllStandardError(),
                    said.contains("another user")));
    }

private:
    void makeFolder()
    {
        // The relay may have been quicker.
        QVERIFY(mkdir(QFile::encodeName(m_folder).constData(), 0700) == 0 || errno == EEXIST);
    }

    QString makeFifo() const
    {
        const auto path = m_runtime->filePath(u"fifo"_s);
        return mkfifo(QFile::encodeName(path).constData(), 0600) == 0 ? path : QString();
    }

    static void verifyEndsWell(RelayRun &relay)
    {
        QVERIFY(relay.process.waitForFinished(patience));
        QCOMPARE(relay.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(relay.process.exitCode(), 0);
        QCOMPARE(relay.process.readAllStandardError(), QByteArray());
    }

    static void verifyAsleep(const RelayRun &relay, int milliseconds = 1000)
    {
        const auto switches = relay.switches();
        const auto ticks = relay.ticks();
        QVERIFY(switches > 0 && ticks >= 0);
        QThread::msleep(milliseconds);
        QCOMPARE(relay.ticks(), ticks);
        QCOMPARE(relay.switches(), switches);
    }

    /// In a child process: tells 'l' when it listens, then 'n' when a connection brought nothing, else 'b'.
    [[noreturn]] static void listenAsNobody(Server &server, int report)
    {
        if (setgid(65534) != 0 || setuid(65534) != 0)
            _exit(1);
        server.listen();
        if (write(report, "l", 1) != 1)
            _exit(1);
        const int socket = ::accept(server.descriptor(), nullptr, nullptr);
        char byte = 0;
        const auto got = socket < 0 ? 1 : read(socket, &byte, 1);
        _exit(write(report, got == 0 ? "n" : "b", 1) == 1 ? 0 : 1);
    }

    std::map<QString, std::unique_ptr<WaitingRelay>> m_waiting;
    QElapsedTimer m_sinceStart;
    std::unique_ptr<QTemporaryDir> m_runtime;
    QString m_folder;
    QString m_socket;
};

QUORVEL_TEST(tst_relay, QCoreApplication)
#include "tst_relay.moc"
