#include "FailingFileCalls.h"
#include "durableWrite.h"
#include "fileSteps.h"
#include "suite.h"
#include "testFiles.h"

using namespace Qt::StringLiterals;
using namespace TestFiles;

namespace {

const QByteArray oldBytes = "the old bytes";
const QByteArray newBytes = "the new bytes, a little longer";

} // namespace

class tst_durableWrite : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void createsPrivateFolderAndFile();
    void makesAnyExistingFilePrivate();
    void syncsFileBeforeRenameAndFolderAfter();
    void syncsTheParentsOfNewFolders();
    void writesThroughLinks_data();
    void writesThroughLinks();
    void doesNotMakeFoldersBehindALink();
    void givesUpOnALoopOfLinks();
    void removesWhatACrashLeft();
    void leavesOldOrNewWhateverStepFails_data();
    void leavesOldOrNewWhateverStepFails();
    void countsACloseThatFails();
    void goesOnAfterASignal_data();
    void goesOnAfterASignal();
    void acceptsFileSystemsThatCannotSyncFolders();
    void saysWhyAFolderCannotBeMade();
};

void tst_durableWrite::createsPrivateFolderAndFile()
{
    QTemporaryDir home;
    const QString folder = home.filePath(u"a/b"_s);
    QVERIFY(durableWrite(FileCalls::system(), native(folder + u"/file"_s), newBytes).ok());
    QCOMPARE(content(folder + u"/file"_s), newBytes);
    QCOMPARE(mode(home.filePath(u"a"_s)), 0700);
    QCOMPARE(mode(folder), 0700);
    QCOMPARE(mode(folder + u"/file"_s), 0600);
    QCOMPARE(names(folder), QStringList{u"file"_s});
}

void tst_durableWrite::makesAnyExistingFilePrivate()
{
    QTemporaryDir home;
    const QString path = home.filePath(u"file"_s);
    put(path, oldBytes);
    QCOMPARE(::chmod(native(path).constData(), 0644), 0);
    QVERIFY(durableWrite(FileCalls::system(), native(path), newBytes).ok());
    QCOMPARE(content(path), newBytes);
    QCOMPARE(mode(path), 0600);
}

void tst_durableWrite::syncsFileBeforeRenameAndFolderAfter()
{
    QTemporaryDir home;
    FailingFileCalls calls;
    QVERIFY(durableWrite(calls, native(home.filePath(u"file"_s)), newBytes).ok());
    const QList<QByteArray> expected = {"mkdir", "readlink", "unlink", "open",  "write", "fsync",
                                        "close", "rename",   "open",   "fsync", "close"};
    QCOMPARE(calls.steps, expected);
}

void tst_durableWrite::syncsTheParentsOfNewFolders()
{
    QTemporaryDir home;
    FailingFileCalls calls;
    QVERIFY(durableWrite(calls, native(home.filePath(u"a/b/file"_s)), newBytes).ok());
    QCOMPARE(calls.steps.count("fsync"), 4); // both parents, the file, its folder
}

void tst_durableWrite::writesThroughLinks_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("exists");

    QTest::newRow("relative") << u"../synced/real"_s << true;
    QTest::newRow("relative, nothing there yet") << u"../synced/real"_s << false;
    QTest::newRow("absolute") << u"/synced/real"_s << true; // below the test's own folder
    QTest::newRow("two links") << u"second"_s << true;
}

void tst_durableWrite::writesThroughLinks()
{
    QFETCH(QString, target);
    QFETCH(bool, exists);
    QTemporaryDir home;
    QVERIFY(QDir(home.path()).mkpath(u"data"_s) && QDir(home.path()).mkpath(u"synced"_s));
    const QString link = home.filePath(u"data/file"_s);
    const QString real = home.filePath(u"synced/real"_s);
    symbolicLink(target.startsWith(u'/') ? home.path() + target : target, link);
    symbolicLink(u"../synced/real"_s, home.filePath(u"data/second"_s));
    if (exists)
        put(real, oldBytes);

    QVERIFY(durableWrite(FileCalls::system(), native(link), newBytes).ok());
    QVERIFY(QFileInfo(link).isSymLink());
    QVERIFY(!QFileInfo(real).isSymLink());
    QCOMPARE(content(real), newBytes);
    QCOMPARE(names(home.filePath(u"synced"_s)), QStringList{u"real"_s});
    QCOMPARE(names(home.filePath(u"data"_s)), (QStringList{u"file"_s, u"second"_s}));
}

void tst_durableWrite::doesNotMakeFoldersBehindALink()
{
    QTemporaryDir home;
    symbolicLink(home.filePath(u"drive/file"_s), home.filePath(u"file"_s));
    const Result<> written = durableWrite(FileCalls::system(), native(home.filePath(u"file"_s)), newBytes);
    QVERIFY(!written.ok());
    QCOMPARE(written.reason(), description(ENOENT));
    QCOMPARE(names(home.path()), QStringList{u"file"_s});
}

void tst_durableWrite::givesUpOnALoopOfLinks()
{
    QTemporaryDir home;
    symbolicLink(u"two"_s, home.filePath(u"one"_s));
    symbolicLink(u"one"_s, home.filePath(u"two"_s));
    const Result<> written = durableWrite(FileCalls::system(), native(home.filePath(u"one"_s)), newBytes);
    QVERIFY(!written.ok());
    QCOMPARE(written.reason(), description(ELOOP));
}

void tst_durableWrite::removesWhatACrashLeft()
{
    QTemporaryDir home;
    put(home.filePath(u".file.new"_s), "torn");
    QVERIFY(durableWrite(FileCalls::system(), native(home.filePath(u"file"_s)), newBytes).ok());
    QCOMPARE(content(home.filePath(u"file"_s)), newBytes);
    QCOMPARE(names(home.path()), QStringList{u"file"_s});
}

void tst_durableWrite::leavesOldOrNewWhateverStepFails_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("before");

    for (const int error : {ENOSPC, EIO, EACCES}) {
        for (const char *before : {"nothing", "old", "old and leftover", "link"})
            QTest::addRow("%s, %s", std::strerror(error), before) << error << QString::fromLatin1(before);
    }
}

void tst_durableWrite::leavesOldOrNewWhateverStepFails()
{
    QFETCH(int, error);
    QFETCH(QString, before);
    int failed = 0;
    for (int step = 0;; ++step) {
        QTemporaryDir home;
        const QString folder = home.filePath(u"folder"_s);
        const QString path = folder + u"/file"_s;
        const QString real = before == u"link"_s ? home.filePath(u"real"_s) : path;
        if (before != u"nothing"_s) {
            QVERIFY(QDir().mkpath(folder));
            put(real, oldBytes);
        }
        if (before == u"old and leftover"_s)
            put(folder + u"/.file.new"_s, "torn");
        if (before == u"link"_s)
            symbolicLink(u"../real"_s, path);

        FailingFileCalls calls;
        calls.longestWrite = 7;
        calls.failingStep = step;
        calls.error = error;
        const Result<> written = durableWrite(calls, native(path), newBytes);
        if (calls.steps.size() <= step) { // no step is left to fail
            QVERIFY(written.ok());
            break;
        }
        const QByteArray failedStep = calls.steps.at(step);
        const QByteArray context = QByteArray::number(step) + ' ' + failedStep;
        const QByteArray there = QFile::exists(real) ? content(real) : QByteArray();
        if (written.ok()) {
            // Removing a leftover that is not there and closing a folder that was only synced may fail.
            QVERIFY2(failedStep == "unlink" || failedStep == "close", context.constData());
            QCOMPARE(there, newBytes);
        } else {
            ++failed;
            const bool stuck = failedStep == "unlink"; // then the leftover is what stands in the way
            QCOMPARE(written.reason(), description(stuck ? EEXIST : error));
            const QByteArray old = before == u"nothing"_s ? QByteArray() : oldBytes;
            QVERIFY2(there == newBytes || there == old, context + ": " + there);
        }
        if (calls.steps.contains("unlink")) // what failed before leaves even a leftover as it was
            QVERIFY2(!QFile::exists(QFileInfo(real).path() + u"/.file.new"_s), context.constData());
        QVERIFY2(!QFile::exists(QFileInfo(real).path() + u"/.real.new"_s), context.constData());
    }
    QVERIFY2(failed >= 10, QByteArray::number(failed).constData()); // 5 writes of 7 bytes, and all around
}

void tst_durableWrite::countsACloseThatFails()
{
    QTemporaryDir home;
    put(home.filePath(u"file"_s), oldBytes);
    FailingFileCalls calls;
    calls.failures["close"] = EDQUOT; // as a network file system reports a quota
    const Result<> written = durableWrite(calls, native(home.filePath(u"file"_s)), newBytes);
    QVERIFY(!written.ok());
    QCOMPARE(written.reason(), description(EDQUOT));
    QCOMPARE(content(home.filePath(u"file"_s)), oldBytes);
    QCOMPARE(names(home.path()), QStringList{u"file"_s});
}

void tst_durableWrite::goesOnAfterASignal_data()
{
    QTest::addColumn<int>("step");

    QTest::newRow("open") << 3;
    QTest::newRow("write") << 4;
    QTest::newRow("fsync") << 5;
    QTest::newRow("open folder") << 8;
    QTest::newRow("fsync folder") << 9;
}

void tst_durableWrite::goesOnAfterASignal()
{
    QFETCH(int, step);
    QTemporaryDir home;
    FailingFileCalls calls;
    calls.failingStep = step;
    calls.error = EINTR;
    QVERIFY(durableWrite(calls, native(home.filePath(u"file"_s)), newBytes).ok());
    QCOMPARE(calls.steps.at(step), calls.steps.at(step + 1)); // made again
    QCOMPARE(content(home.filePath(u"file"_s)), newBytes);
}

void tst_durableWrite::acceptsFileSystemsThatCannotSyncFolders()
{
    QTemporaryDir home;
    FailingFileCalls calls;
    calls.failingStep = 9; // fsync of the folder
    calls.error = EINVAL;
    QVERIFY(durableWrite(calls, native(home.filePath(u"file"_s)), newBytes).ok());
    QCOMPARE(calls.steps.at(9), QByteArray("fsync"));
}

void tst_durableWrite::saysWhyAFolderCannotBeMade()
{
    QTemporaryDir home;
    put(home.filePath(u"Quorvel"_s), "a plain file in the folder's place");
    const Result<> written =
        durableWrite(FileCalls::system(), native(home.filePath(u"Quorvel/file"_s)), newBytes);
    QVERIFY(!written.ok());
    QCOMPARE(written.reason(), description(ENOTDIR));
    QCOMPARE(content(home.filePath(u"Quorvel"_s)), QByteArray("a plain file in the folder's place"));
}

QUORVEL_TEST(tst_durableWrite)
#include "tst_durableWrite.moc"
