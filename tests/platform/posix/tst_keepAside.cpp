#include "FailingFileCalls.h"
#include "keepAside.h"
#include "suite.h"
#include "testFiles.h"

using namespace Qt::StringLiterals;
using namespace TestFiles;

namespace {

Result<QByteArray> keep(FileCalls &calls, const QTemporaryDir &home)
{
    return keepAside(calls, native(home.filePath(u"file"_s)), native(home.filePath(u"aside"_s)));
}

} // namespace

class tst_keepAside : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void givesTheFileASecondName();
    void neverReplaces_data();
    void neverReplaces();
    void keepsTheFileBehindALink();
    void copiesWhereLinksAreRefused_data();
    void copiesWhereLinksAreRefused();
    void aCopyHasItsNameOnlyOnceItIsWhole();
    void aCopyTakesAwayWhatACrashLeft();
    void keepsWhatCannotBeRead();
    void leavesNothingNewAfterAFailure_data();
    void leavesNothingNewAfterAFailure();
    void failsWithoutAFile();
    void failsForAFolder();
};

void tst_keepAside::givesTheFileASecondName()
{
    QTemporaryDir home;
    put(home.filePath(u"file"_s), "bytes");
    FailingFileCalls calls;
    const auto kept = keep(calls, home);
    QVERIFY(kept.ok());
    QCOMPARE(kept.value(), native(home.filePath(u"aside"_s)));
    QCOMPARE(content(home.filePath(u"aside"_s)), QByteArray("bytes"));
    QCOMPARE(content(home.filePath(u"file"_s)), QByteArray("bytes"));
    QCOMPARE(calls.steps.count("fsync"), 2); // the bytes and the folder
    QCOMPARE(calls.steps.count("write"), 0);
}

void tst_keepAside::neverReplaces_data()
{
    QTest::addColumn<bool>("linksWork");
    QTest::newRow("by link") << true;
    QTest::newRow("by copy") << false;
}

void tst_keepAside::neverReplaces()
{
    QFETCH(bool, linksWork);
    QTemporaryDir home;
    put(home.filePath(u"file"_s), "bytes");
    put(home.filePath(u"aside"_s), "first");
    symbolicLink(u"nowhere"_s, home.filePath(u"aside-2"_s)); // a name is taken even by a link to nothing
    FailingFileCalls calls;
    if (!linksWork)
        calls.failures["link"] = EPERM;
    const auto kept = keep(calls, home);
    QVERIFY(kept.ok());
    QCOMPARE(kept.value(), native(home.filePath(u"aside-3"_s)));
    QCOMPARE(content(home.filePath(u"aside"_s)), QByteArray("first"));
    QCOMPARE(content(home.filePath(u"aside-3"_s)), QByteArray("bytes"));
    QVERIFY(!QFile::exists(home.filePath(u"nowhere"_s)));
}

void tst_keepAside::keepsTheFileBehindALink()
{
    QTemporaryDir home;
    put(home.filePath(u"real"_s), "bytes");
    symbolicLink(u"real"_s, home.filePath(u"file"_s));
    QVERIFY(keep(FileCalls::system(), home).ok());
    QVERIFY(!QFileInfo(home.filePath(u"aside"_s)).isSymLink());
    QVERIFY(QFile::remove(home.filePath(u"real"_s)));
    QCOMPARE(content(home.filePath(u"aside"_s)), QByteArray("bytes"));
}

void tst_keepAside::copiesWhereLinksAreRefused_data()
{
    QTest::addColumn<int>("error");
    for (const int error : {EPERM, EXDEV, EMLINK, ENOSYS, EOPNOTSUPP})
        QTest::addRow("%s", std::strerror(error)) << error;
}

void tst_keepAside::copiesWhereLinksAreRefused()
{
    QFETCH(int, error);
    QTemporaryDir home;
    const QByteArray bytes(300'000, 'x');
    put(home.filePath(u"file"_s), bytes);
    FailingFileCalls calls;
    calls.failures["link"] = error;
    QVERIFY(keep(calls, home).ok());
    QCOMPARE(content(home.filePath(u"aside"_s)), bytes);
    QCOMPARE(mode(home.filePath(u"aside"_s)), 0600);
    QCOMPARE(calls.steps.count("fsync"), 2); // the copy and the folder
}

void tst_keepAside::aCopyHasItsNameOnlyOnceItIsWhole()
{
    QTemporaryDir home;
    put(home.filePath(u"file"_s), "bytes");
    FailingFileCalls calls;
    calls.failures["link"] = EPERM;
    calls.longestWrite = 1;
    int seen = 0;
    calls.beforeStep = [&](qsizetype) {
        if (QFile::exists(home.filePath(u"aside"_s))) {
            ++seen;
            QCOMPARE(content(home.filePath(u"aside"_s)), QByteArray("bytes"));
        }
    };
    QVERIFY(keep(calls, home).ok());
    QVERIFY(seen > 0);
    QCOMPARE(names(home.path()), (QStringList{u"aside"_s, u"file"_s}));
}

void tst_keepAside::aCopyTakesAwayWhatACrashLeft()
{
    QTemporaryDir home;
    put(home.filePath(u"file"_s), "bytes");
    put(home.filePath(u".file.new"_s), "half");
    FailingFileCalls calls;
    calls.failures["link"] = EPERM;
    QVERIFY(keep(calls, home).ok());
    QCOMPARE(names(home.path()), (QStringList{u"aside"_s, u"file"_s}));
}

void tst_keepAside::keepsWhatCannotBeRead()
{
    QTemporaryDir home;
    QVERIFY(::chmod(native(home.path()).constData(), 0755) == 0);
    const int outcome = asOrdinaryUser(home.path(), [&] {
        const QString path = home.filePath(u"file"_s);
        put(path, "bytes");
        if (::chmod(native(path).constData(), 0) < 0 || QFile(path).open(QIODevice::ReadOnly))
            return 1;
        if (!keep(FileCalls::system(), home))
            return 2;
        const QString aside = home.filePath(u"aside"_s);
        if (::chmod(native(aside).constData(), 0600) < 0)
            return 3;
        return content(aside) == "bytes" ? 0 : 4;
    });
    QCOMPARE(outcome, 0);
}

void tst_keepAside::leavesNothingNewAfterAFailure_data()
{
    QTest::addColumn<bool>("linksWork");
    QTest::addColumn<int>("error");
    for (const int error : {ENOSPC, EIO, EACCES}) {
        QTest::addRow("by link, %s", std::strerror(error)) << true << error;
        QTest::addRow("by copy, %s", std::strerror(error)) << false << error;
    }
}

void tst_keepAside::leavesNothingNewAfterAFailure()
{
    QFETCH(bool, linksWork);
    QFETCH(int, error);
    int failed = 0;
    for (int step = 0;; ++step) {
        QTemporaryDir home;
        put(home.filePath(u"file"_s), "bytes");
        FailingFileCalls calls;
        calls.longestWrite = 2;
        if (!linksWork)
            calls.failures["link"] = EXDEV;
        calls.failingStep = step;
        calls.error = error;
        const auto kept = keep(calls, home);
        if (calls.steps.size() <= step)
            break;
        const QByteArray context = QByteArray::number(step) + ' ' + calls.steps.at(step);
        QCOMPARE(content(home.filePath(u"file"_s)), QByteArray("bytes"));
        if (kept.ok()) {
            QCOMPARE(content(home.filePath(u"aside"_s)), QByteArray("bytes"));
        } else {
            ++failed;
            QCOMPARE(kept.reason(), description(error));
            QVERIFY2(names(home.path()) == QStringList{u"file"_s}, context.constData());
        }
    }
    // By link: the links are followed, the link, the folder is opened and synced. By copy: many more.
    QVERIFY2(failed >= (linksWork ? 4 : 11), QByteArray::number(failed).constData());
}

void tst_keepAside::failsWithoutAFile()
{
    QTemporaryDir home;
    const auto kept = keep(FileCalls::system(), home);
    QVERIFY(!kept.ok());
    QCOMPARE(kept.reason(), description(ENOENT));
    QVERIFY(names(home.path()).isEmpty());
}

void tst_keepAside::failsForAFolder()
{
    QTemporaryDir home;
    QVERIFY(QDir(home.path()).mkdir(u"file"_s));
    const auto kept = keep(FileCalls::system(), home);
    QVERIFY(!kept.ok());
    QCOMPARE(kept.reason(), description(EISDIR));
    QCOMPARE(names(home.path()), QStringList{u"file"_s});
}

QUORVEL_TEST(tst_keepAside)
#include "tst_keepAside.moc"
