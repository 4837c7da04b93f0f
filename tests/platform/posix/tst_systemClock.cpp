#include "SystemClock.h"
#include "suite.h"
#include "testFiles.h"

#include <QtEndian>

#include <cstdlib>
#include <ctime>
#include <sched.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace TestFiles;

namespace {

/// A time zone file with one fixed offset, in seconds east of UTC.
QByteArray zoneFile(qint32 offset)
{
    QByteArray bytes("TZif");
    bytes += QByteArray(16, '\0'); // version 1, reserved
    const auto add = [&](qint32 number) {
        char big[4];
        qToBigEndian(number, big);
        bytes.append(big, 4);
    };
    for (const qint32 count : {0, 0, 0, 0, 1, 4}) // one type, four characters of names
        add(count);
    add(offset);
    bytes += QByteArray("\0\0TST\0", 6); // no summer time, name at 0
    return bytes;
}

/// The machine moves: as tools do it, another file takes the name.
void moveTo(qint32 offset)
{
    put(u"/etc/localtime.new"_s, zoneFile(offset));
    if (::rename("/etc/localtime.new", "/etc/localtime") < 0)
        qFatal("the test cannot change the time zone of its own root folder");
}

constexpr int notAllowed = 99;

/// Lives in a root folder of its own, whose time zone it may change. Returns 0 or what went wrong.
int travel(const QByteArray &root)
{
    if (::chroot(root.constData()) < 0 && (::unshare(CLONE_NEWUSER) < 0 || ::chroot(root.constData()) < 0))
        return notAllowed;
    if (::chdir("/") < 0)
        return notAllowed;
    ::unsetenv("TZ");
    const SystemClock clock;
    moveTo(9 * 3600);
    if (clock.now().offsetFromUtc() != 9 * 3600)
        return 1;
    const QDateTime before = clock.now();
    moveTo(-5 * 3600);
    const QDateTime after = clock.now();
    if (after.offsetFromUtc() != -5 * 3600)
        return 2;
    if (before.secsTo(after) < 0 || before.secsTo(after) > 5)
        return 3;
    const qint64 shown =
        QDateTime(before.date(), before.time()).secsTo(QDateTime(after.date(), after.time()));
    if (shown > -14 * 3600 + 5 || shown < -14 * 3600)
        return 4;
    if (QDateTime::fromSecsSinceEpoch(0).time() != QTime(19, 0)) // what Qt makes of any moment follows too
        return 5;
    return 0;
}

} // namespace

class tst_systemClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsThisMoment();
    void followsTheTimeZone();
    void measuresTime();
};

void tst_systemClock::tellsThisMoment()
{
    const qint64 before = ::time(nullptr);
    const QDateTime now = SystemClock().now();
    QVERIFY(now.toSecsSinceEpoch() >= before && now.toSecsSinceEpoch() <= before + 5);
    QCOMPARE(now.time().hour(), QDateTime::fromSecsSinceEpoch(now.toSecsSinceEpoch()).time().hour());
    QCOMPARE(now.offsetFromUtc(), now.toLocalTime().offsetFromUtc());
}

void tst_systemClock::followsTheTimeZone()
{
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkdir(u"etc"_s));
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(travel(QFile::encodeName(root.path())));
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    if (WEXITSTATUS(status) == notAllowed)
        QSKIP("not run: this user may not have a root folder of its own");
    QCOMPARE(WEXITSTATUS(status), 0);
}

void tst_systemClock::measuresTime()
{
    const SystemClock clock;
    const auto start = clock.elapsed();
    QTest::qSleep(20);
    const auto passed = clock.elapsed() - start;
    QVERIFY(passed >= 20ms);
    QVERIFY(passed < 10s);

    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    const auto difference = std::chrono::seconds(time.tv_sec) - start;
    QVERIFY(difference >= -1s && difference < 10s);
}

QUORVEL_TEST(tst_systemClock)
#include "tst_systemClock.moc"
