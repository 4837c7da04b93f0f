#include "InstanceFolder.h"
#include "SingleInstance.h"
#include "handOver.h"
#include "patience.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <fcntl.h>
#include <memory>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// A start of the probe in a runtime folder; ended with the object.
class Start
{
public:
    explicit Start(const QString &runtimeFolder, const QStringList &arguments = {})
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_RUNTIME_DIR"_s, runtimeFolder);
        process.setProcessEnvironment(environment);
        process.start(QString::fromLocal8Bit(INSTANCE_PROBE), arguments);
    }
    ~Start()
    {
        process.kill();
        process.waitForFinished();
    }

    /// The next line it prints; empty when none comes.
    QString line()
    {
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(patience))
                return {};
        }
        return QString::fromUtf8(process.readLine()).trimmed();
    }

    QProcess process;
};

QByteArray lengthOf(quint32 length)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(length, bytes.data());
    return bytes;
}

} // namespace

class tst_SingleInstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_runtime = std::make_unique<QTemporaryDir>();
        QVERIFY(m_runtime->isValid());
    }

    void laterStartHandsOver()
    {
        Start first(m_runtime->path());
        QCOMPARE(first.line(), u"first"_s);
        const QStringList arguments{u"quorvel://auth?code=1"_s, u"два слова"_s};
        Start second(m_runtime->path(), arguments);
        QCOMPARE(second.line(), u"handed over"_s);
        QVERIFY(second.process.waitForFinished());
        QCOMPARE(second.process.exitCode(), 0);
        QCOMPARE(first.line(), u"again quorvel://auth?code=1|два слова"_s);
    }

    void whatIsTooLongIsHandedOverAsAnAddressThatFails_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("line");
        const QString longText(100'000, u'x');
        const QString address = u"quorvel://auth?session="_s;
        QTest::newRow("one long address") << QStringList{address + longText} << u"again quorvel:"_s;
        QTest::newRow("among others")
            << QStringList{address + u'1', u"file"_s, longText} << u"again quorvel:"_s;
        QTest::newRow("no address") << QStringList{longText} << u"again"_s;
        QTest::newRow("ever so many") << QStringList(20'000, address) << u"again quorvel:"_s;
        const QString control(2'000, QChar(1)); // six letters each in the message
        QTest::newRow("control characters")
            << QStringList{address + control} << u"again "_s + address + control;
    }

    void whatIsTooLongIsHandedOverAsAnAddressThatFails()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, line);
        Start first(m_runtime->path());
        QCOMPARE(first.line(), u"first"_s);
        Start second(m_runtime->path(), arguments);
        QCOMPARE(second.line(), u"handed over"_s);
        QCOMPARE(first.line(), line);
    }

    void simultaneousStartsLeaveOne()
    {
        std::vector<std::unique_ptr<Start>> starts;
        for (int index = 0; index < 6; ++index)
            starts.push_back(std::make_unique<Start>(m_runtime->path()));
        int firsts = 0;
        int handedOver = 0;
        for (const auto &start : starts) {
            const auto line = start->line();
            firsts += line == u"first";
            handedOver += line == u"handed over";
        }
        QCOMPARE(firsts, 1);
        QCOMPARE(handedOver, 5);
    }

    void killedProgramIsNoObstacle()
    {
        {
            Start killed(m_runtime->path());
            QCOMPARE(killed.line(), u"first"_s);
        }
        QVERIFY(QFile::exists(m_runtime->filePath(u"quorvel/socket"_s))); // left behind
        Start next(m_runtime->path());
        QCOMPARE(next.line(), u"first"_s);
    }

    void silentHolderIsGivenUp()
    {
        QVERIFY(mkdir(QFile::encodeName(m_runtime->filePath(u"quorvel"_s)).constData(), 0700) == 0);
        const auto lockPath = QFile::encodeName(m_runtime->filePath(u"quorvel/lock"_s));
        const int lock = open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        QVERIFY(lock >= 0 && flock(lock, LOCK_EX) == 0);
        QElapsedTimer stopwatch;
        stopwatch.start();
        Start start(m_runtime->path());
        QVERIFY(start.process.waitForFinished(patience));
        QCOMPARE(start.process.exitCode(), 1);
        QVERIFY(stopwatch.elapsed() > 2500 && stopwatch.elapsed() < 5000);
        QVERIFY(start.process.readAllStandardError().contains("does not answer"));
        ::close(lock);
    }

    void nonsenseIsTurnedAway_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("too long") << lengthOf(longestHandOver + 1);
        QTest::newRow("no list") << lengthOf(2) + "{}";
        QTest::newRow("no texts") << lengthOf(3) + "[1]";
        QTest::newRow("more than said") << lengthOf(2) + "[]x";
    }

    void nonsenseIsTurnedAway()
    {
        QFETCH(QByteArray, bytes);
        Start first(m_runtime->path());
        QCOMPARE(first.line(), u"first"_s);
        QLocalSocket socket;
        socket.connectToServer(m_runtime->filePath(u"quorvel/socket"_s));
        QVERIFY(socket.waitForConnected());
        socket.write(bytes);
        QVERIFY(socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(patience));
        QCOMPARE(socket.readAll(), QByteArray());
        Start second(m_runtime->path());
        QCOMPARE(second.line(), u"handed over"_s); // the first one is none the worse
        QCOMPARE(first.line(), u"again"_s);
    }

    void otherUserIsTurnedAway()
    {
        if (geteuid() != 0)
            QSKIP("only root can become another user");
        Start first(m_runtime->path());
        QCOMPARE(first.line(), u"first"_s);
        // Doors that are never open like this, to reach the check behind them.
        for (const auto &path : {m_runtime->path(), m_runtime->filePath(u"quorvel"_s)})
            QVERIFY(chmod(QFile::encodeName(path).constData(), 0711) == 0);
        const auto socket = QFile::encodeName(m_runtime->filePath(u"quorvel/socket"_s));
        QVERIFY(chmod(socket.constData(), 0777) == 0);

        QProcess stranger;
        const auto script = u"import socket,sys\n"
                            "s = socket.socket(socket.AF_UNIX)\n"
                            "s.connect(sys.argv[1])\n"
                            "s.settimeout(30)\n"
                            "try:\n"
                            "    s.sendall(b'\\0\\0\\0\\2[]')\n"
                            "    answer = s.recv(1)\n"
                            "except ConnectionError:\n"
                            "    answer = b''\n"
                            "print('answer', answer)\n"_s;
        stranger.start(u"setpriv"_s, {u"--reuid=65534"_s, u"--regid=65534"_s, u"--clear-groups"_s,
                                      u"/usr/bin/python3"_s, u"-c"_s, script, QFile::decodeName(socket)});
        QVERIFY(stranger.waitForFinished());
        const auto complaint = stranger.readAllStandardError();
        QVERIFY2(complaint.isEmpty(), complaint.constData());
        QCOMPARE(stranger.readAllStandardOutput().trimmed(), QByteArray("answer b''"));
        QVERIFY(!first.process.canReadLine());
        QByteArray said;
        TRY_VERIFY((said += first.process.readAllStandardError()).contains("another user"));
    }

    void unsafeFolderIsRefused_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("says");
        QTest::addColumn<QString>("inRussian");
        QTest::newRow("symbolic link")
            << u"link"_s << QByteArray("symbolic link") << u"символическая ссылка"_s;
        QTest::newRow("open to others")
            << u"open"_s << QByteArray("other users have access") << u"доступ у других"_s;
        QTest::newRow("file") << u"file"_s << QByteArray("not a folder") << u"не папка"_s;
        if (geteuid() == 0)
            QTest::newRow("another user's")
                << u"owner"_s << QByteArray("another user") << u"другому пользователю"_s;
    }

    void unsafeFolderIsRefused()
    {
        QFETCH(QString, kind);
        QFETCH(QByteArray, says);
        QFETCH(QString, inRussian);
        const auto path = QFile::encodeName(m_runtime->filePath(u"quorvel"_s));
        if (kind == u"link") {
            QVERIFY(mkdir((path + ".real").constData(), 0700) == 0);
            QVERIFY(symlink((path + ".real").constData(), path.constData()) == 0);
        } else if (kind == u"file") {
            QFile file(QFile::decodeName(path));
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else {
            QVERIFY(mkdir(path.constData(), 0700) == 0);
            if (kind == u"open")
                QVERIFY(chmod(path.constData(), 0750) == 0);
            else
                QVERIFY(chown(path.constData(), 65534, 65534) == 0);
        }
        Start start(m_runtime->path());
        QVERIFY(start.process.waitForFinished());
        QCOMPARE(start.process.exitCode(), 2);
        const auto said = QString::fromUtf8(start.process.readAllStandardError());
        QVERIFY2(said.contains(QString::fromUtf8(says)), qPrintable(said));
        QVERIFY2(said.contains(inRussian), qPrintable(said));
    }

    void aLockThatCannotBeHadIsSaidInBothLanguages()
    {
        QVERIFY(QDir().mkpath(m_runtime->filePath(u"quorvel/lock"_s)));
        QFile::setPermissions(m_runtime->filePath(u"quorvel"_s), QFile::Permissions(0x7700));
        Start start(m_runtime->path());
        QVERIFY(start.process.waitForFinished(patience));
        QCOMPARE(start.process.exitCode(), 1);
        const auto said = QString::fromUtf8(start.process.readAllStandardError());
        QVERIFY2(said.startsWith(u"Cannot open \""_s), qPrintable(said));
        QVERIFY2(said.contains(u"\nНе удаётся открыть «"_s), qPrintable(said));
    }

    void aCallerThatCouldNotBeTakenIsNotTheLast()
    {
        Start first(m_runtime->path());
        QCOMPARE(first.line(), u"first"_s);
        const auto id = pid_t(first.process.processId());
        rlimit before{};
        QCOMPARE(prlimit(id, RLIMIT_NOFILE, nullptr, &before), 0);
        rlim_t next = 0; // the lowest number that is free
        while (QFileInfo(u"/proc/%1/fd/%2"_s.arg(id).arg(next)).isSymLink())
            ++next;
        const rlimit none{next, before.rlim_max};
        QCOMPARE(prlimit(id, RLIMIT_NOFILE, &none, nullptr), 0);
        QLocalSocket caller;
        caller.connectToServer(m_runtime->filePath(u"quorvel/socket"_s));
        TRY_VERIFY(!QFile::exists(m_runtime->filePath(u"quorvel/socket"_s))); // it listens no more
        QCOMPARE(prlimit(id, RLIMIT_NOFILE, &before, nullptr), 0);
        Start second(m_runtime->path());
        QCOMPARE(second.line(), u"handed over"_s);
        QCOMPARE(first.line(), u"again"_s);
        QVERIFY(first.process.readAllStandardError().contains("heard again"));
    }

    void callersBeyondTheBoundAreTurnedAway()
    {
        Start first(m_runtime->path());
        QCOMPARE(first.line(), u"first"_s);
        std::vector<std::unique_ptr<QLocalSocket>> callers;
        const auto call = [&] {
            callers.push_back(std::make_unique<QLocalSocket>());
            callers.back()->connectToServer(m_runtime->filePath(u"quorvel/socket"_s));
            return callers.back()->waitForConnected(patience);
        };
        for (int caller = 0; caller < SingleInstance::mostCallers; ++caller)
            QVERIFY(call());
        QVERIFY(call()); // by the system, which lets it wait
        QElapsedTimer timer;
        timer.start();
        QVERIFY(callers.back()->state() == QLocalSocket::UnconnectedState ||
                callers.back()->waitForDisconnected(patience));
        QVERIFY2(timer.elapsed() < 2000, "at once, and not for its silence");
        callers.pop_back();
        QCOMPARE(callers.back()->state(), QLocalSocket::ConnectedState);
        callers.clear(); // makes room
        Start second(m_runtime->path());
        QCOMPARE(second.line(), u"handed over"_s);
        QCOMPARE(first.line(), u"again"_s);
    }

    void withoutRuntimeFolder()
    {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime->filePath(u"missing"_s)));
        const auto folder = instanceFolder();
        qunsetenv("XDG_RUNTIME_DIR");
        QVERIFY2(folder.ok(), folder ? "" : qPrintable(folder.reason()));
        QCOMPARE(folder.value(), "/tmp/quorvel-" + QByteArray::number(geteuid()));
        struct stat status;
        QVERIFY(lstat(folder.value().constData(), &status) == 0);
        QCOMPARE(status.st_mode & 07777, mode_t(0700));
    }

private:
    std::unique_ptr<QTemporaryDir> m_runtime;
};

QTEST_GUILESS_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
