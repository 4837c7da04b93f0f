#include "FailingFileCalls.h"
#include "FolderRecordFiles.h"
#include "fileSteps.h"
#include "suite.h"
#include "testFiles.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;
using namespace TestFiles;

class tst_folderRecordFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readingCreatesNothing();
    void writesPrivately();
    void takesNamesOfAnyLanguage();
    void saysWhyAFileCannotBeRead();
    void failsForAFolder();
    void failsForAPipeAtOnce();
    void failsForAFileThatIsTooLong();
    void failsWhereReadingFails_data();
    void failsWhereReadingFails();
    void readsWhatASlowDiskGives();
    void aPlainFileInTheFoldersPlace();
    void saysWhyAFolderCannotBeWritten();
    void readsAndWritesThroughALink();
    void keepsAsideUnderTheNextFreeName();
    void makesAPrivateFolderForCopies();
    void listsPlainFilesAlone();
    void saysWhyAFolderCannotBeListed_data();
    void saysWhyAFolderCannotBeListed();
    void aFileThatGoesWhileTheFolderIsListedIsLeftOut();
    void saysWhyAFileCannotBeRemoved();
};

void tst_folderRecordFiles::readingCreatesNothing()
{
    QTemporaryDir home;
    FolderRecordFiles files(home.filePath(u"share/Quorvel"_s));
    const auto read = files.read(u"config.json"_s);
    QVERIFY(read.ok());
    QVERIFY(!read.value().has_value());
    QVERIFY(names(home.path()).isEmpty());
}

void tst_folderRecordFiles::writesPrivately()
{
    QTemporaryDir home;
    FolderRecordFiles files(home.filePath(u"share/Quorvel"_s));
    const QByteArray bytes("with \0 in it", 12);
    QVERIFY(files.write(u"config.json"_s, bytes).ok());
    QCOMPARE(files.read(u"config.json"_s).value(), std::optional(bytes));
    QVERIFY(files.write(u"config.json"_s, {}).ok());
    QCOMPARE(files.read(u"config.json"_s).value(), std::optional(QByteArray()));
    QCOMPARE(mode(home.filePath(u"share/Quorvel"_s)), 0700);
    QCOMPARE(mode(home.filePath(u"share/Quorvel/config.json"_s)), 0600);
}

void tst_folderRecordFiles::takesNamesOfAnyLanguage()
{
    QTemporaryDir home;
    FolderRecordFiles files(home.filePath(u"Рабочий стол/Quorvel"_s));
    QVERIFY(files.write(u"карточки.json"_s, "[]").ok());
    QCOMPARE(content(home.filePath(u"Рабочий стол/Quorvel/карточки.json"_s)), QByteArray("[]"));
}

void tst_folderRecordFiles::saysWhyAFileCannotBeRead()
{
    QTemporaryDir home;
    QVERIFY(::chmod(QFile::encodeName(home.path()).constData(), 0755) == 0);
    const int outcome = asOrdinaryUser(home.path(), [&] {
        FolderRecordFiles files(home.path());
        put(home.filePath(u"cards"_s), "bytes");
        if (::chmod(QFile::encodeName(home.filePath(u"cards"_s)).constData(), 0) < 0)
            return 1;
        const auto read = files.read(u"cards"_s);
        if (read.ok())
            return 2;
        return read.reason() == description(EACCES) ? 0 : 3;
    });
    QCOMPARE(outcome, 0);
}

void tst_folderRecordFiles::failsForAFolder()
{
    QTemporaryDir home;
    QVERIFY(QDir(home.path()).mkdir(u"cards"_s));
    FolderRecordFiles files(home.path());
    const auto read = files.read(u"cards"_s);
    QVERIFY(!read.ok());
    QCOMPARE(read.reason(), description(EISDIR));
    const auto written = files.write(u"cards"_s, "[]");
    QVERIFY(!written.ok());
    QCOMPARE(written.reason(), description(EISDIR));
    QCOMPARE(names(home.path()), QStringList{u"cards"_s});
}

void tst_folderRecordFiles::failsForAPipeAtOnce()
{
    QTemporaryDir home;
    QCOMPARE(::mkfifo(QFile::encodeName(home.filePath(u"cards"_s)).constData(), 0600), 0);
    const auto read = FolderRecordFiles(home.path()).read(u"cards"_s);
    QVERIFY(!read.ok());
    QCOMPARE(read.reason(), description(EOPNOTSUPP));
}

void tst_folderRecordFiles::failsForAFileThatIsTooLong()
{
    QTemporaryDir home;
    put(home.filePath(u"cards"_s), {});
    QCOMPARE(::truncate(QFile::encodeName(home.filePath(u"cards"_s)).constData(), FileSteps::longestFile + 1),
             0); // a hole: takes no room
    FailingFileCalls calls;
    const auto read = FolderRecordFiles(home.path(), calls).read(u"cards"_s);
    QVERIFY(!read.ok());
    QCOMPARE(read.reason(), description(EFBIG));
    QCOMPARE(calls.steps.count("read"), 0);
}

void tst_folderRecordFiles::failsWhereReadingFails_data()
{
    QTest::addColumn<QByteArray>("call");
    for (const char *call : {"open", "fstat", "read"})
        QTest::newRow(call) << QByteArray(call);
}

void tst_folderRecordFiles::failsWhereReadingFails()
{
    QFETCH(QByteArray, call);
    QTemporaryDir home;
    put(home.filePath(u"cards"_s), "[]");
    FailingFileCalls calls;
    calls.failures[call] = EIO;
    const auto read = FolderRecordFiles(home.path(), calls).read(u"cards"_s);
    QVERIFY(!read.ok());
    QCOMPARE(read.reason(), description(EIO));
    QCOMPARE(calls.steps.count("close"), call == "open" ? 0 : 1);
}

void tst_folderRecordFiles::readsWhatASlowDiskGives()
{
    class SlowReads : public FileCalls
    {
    public:
        ssize_t read(int file, void *buffer, std::size_t size) override
        {
            return FileCalls::read(file, buffer, std::min<std::size_t>(size, 1000));
        }
        int fstat(int file, struct stat *status) override
        {
            const int result = FileCalls::fstat(file, status);
            status->st_size = 0; // as if the file grew since
            return result;
        }
    } calls;
    QTemporaryDir home;
    QByteArray bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += QByteArray::number(i);
    put(home.filePath(u"cards"_s), bytes);
    QCOMPARE(FolderRecordFiles(home.path(), calls).read(u"cards"_s).value(), std::optional(bytes));
}

void tst_folderRecordFiles::aPlainFileInTheFoldersPlace()
{
    QTemporaryDir home;
    put(home.filePath(u"Quorvel"_s), "plain");
    FolderRecordFiles files(home.filePath(u"Quorvel"_s));
    QVERIFY(!files.read(u"cards"_s).value().has_value());
    const auto written = files.write(u"cards"_s, "[]");
    QVERIFY(!written.ok());
    QCOMPARE(written.reason(), description(ENOTDIR));
}

void tst_folderRecordFiles::saysWhyAFolderCannotBeWritten()
{
    QTemporaryDir home;
    QVERIFY(::chmod(QFile::encodeName(home.path()).constData(), 0755) == 0);
    const int outcome = asOrdinaryUser(home.path(), [&] {
        FolderRecordFiles files(home.path());
        if (!files.write(u"cards"_s, "old"))
            return 1;
        if (::chmod(QFile::encodeName(home.path()).constData(), 0500) < 0)
            return 2;
        const auto written = files.write(u"cards"_s, "new");
        if (written.ok() || written.reason() != description(EACCES))
            return 3;
        return files.read(u"cards"_s).value() == std::optional<QByteArray>("old") ? 0 : 4;
    });
    ::chmod(QFile::encodeName(home.path()).constData(), 0700);
    QCOMPARE(outcome, 0);
}

void tst_folderRecordFiles::readsAndWritesThroughALink()
{
    QTemporaryDir home;
    QVERIFY(QDir(home.path()).mkpath(u"synced"_s) && QDir(home.path()).mkpath(u"data"_s));
    symbolicLink(u"../synced/cards"_s, home.filePath(u"data/cards"_s));
    FolderRecordFiles files(home.filePath(u"data"_s));
    QVERIFY(!files.read(u"cards"_s).value().has_value());
    QVERIFY(files.write(u"cards"_s, "[1]").ok());
    QCOMPARE(files.read(u"cards"_s).value(), std::optional<QByteArray>("[1]"));
    QCOMPARE(content(home.filePath(u"synced/cards"_s)), QByteArray("[1]"));
    QVERIFY(files.keepAside(u"cards"_s, u"aside"_s).ok());
    QVERIFY(files.write(u"cards"_s, "[2]").ok());
    QCOMPARE(content(home.filePath(u"data/aside"_s)), QByteArray("[1]"));
}

void tst_folderRecordFiles::keepsAsideUnderTheNextFreeName()
{
    QTemporaryDir home;
    FolderRecordFiles files(home.path());
    QVERIFY(files.write(u"cards"_s, "one").ok());
    QVERIFY(files.keepAside(u"cards"_s, u"aside"_s).ok());
    QVERIFY(files.write(u"cards"_s, "two").ok());
    QVERIFY(files.keepAside(u"cards"_s, u"aside"_s).ok());
    QCOMPARE(content(home.filePath(u"aside"_s)), QByteArray("one"));
    QCOMPARE(content(home.filePath(u"aside-2"_s)), QByteArray("two"));
    QCOMPARE(names(home.path()), (QStringList{u"aside"_s, u"aside-2"_s, u"cards"_s}));
}

void tst_folderRecordFiles::makesAPrivateFolderForCopies()
{
    QTemporaryDir home;
    FailingFileCalls calls;
    FolderRecordFiles files(home.path(), calls);
    QVERIFY(files.write(u"cards"_s, "one").ok());
    calls.steps.clear();
    QVERIFY(files.keepAside(u"cards"_s, u"backups/aside"_s).ok());
    QCOMPARE(mode(home.filePath(u"backups"_s)), 0700);
    QCOMPARE(calls.steps.count("fsync"), 3); // the new folder's name, the bytes, the name in it
    calls.steps.clear();
    QVERIFY(files.keepAside(u"cards"_s, u"backups/second"_s).ok());
    QCOMPARE(calls.steps.count("fsync"), 2);
    QCOMPARE(calls.steps.count("write"), 0); // a second name costs no bytes
}

void tst_folderRecordFiles::listsPlainFilesAlone()
{
    QTemporaryDir home;
    const QString backups = home.filePath(u"backups"_s);
    QVERIFY(QDir(home.path()).mkpath(u"backups/folder"_s));
    put(backups + u"/plain"_s, "12345");
    put(backups + u"/.hidden"_s, "");
    put(backups + u"/карточки"_s, "1");
    symbolicLink(u"plain"_s, backups + u"/link"_s);
    symbolicLink(u"nowhere"_s, backups + u"/dangling"_s);
    QCOMPARE(::mkfifo(QFile::encodeName(backups + u"/pipe"_s).constData(), 0600), 0);
    auto listed = FolderRecordFiles(home.path()).list(u"backups"_s).value();
    std::sort(listed.begin(), listed.end(), [](auto &left, auto &right) { return left.name < right.name; });
    QCOMPARE(listed, (std::vector<ListedFile>{{u".hidden"_s, 0}, {u"plain"_s, 5}, {u"карточки"_s, 1}}));
}

void tst_folderRecordFiles::saysWhyAFolderCannotBeListed_data()
{
    QTest::addColumn<QByteArray>("call");
    for (const char *call : {"opendir", "readdir", "lstat"})
        QTest::newRow(call) << QByteArray(call);
    QTest::newRow("a file") << QByteArray();
}

void tst_folderRecordFiles::saysWhyAFolderCannotBeListed()
{
    QFETCH(QByteArray, call);
    QTemporaryDir home;
    FailingFileCalls calls;
    if (call.isEmpty()) {
        put(home.filePath(u"backups"_s), "plain");
    } else {
        QVERIFY(QDir(home.path()).mkdir(u"backups"_s));
        calls.failures[call] = EIO;
    }
    const auto listed = FolderRecordFiles(home.path(), calls).list(u"backups"_s);
    QVERIFY(!listed.ok());
    QCOMPARE(listed.reason(), description(call.isEmpty() ? ENOTDIR : EIO));
    QCOMPARE(calls.steps.count("closedir"), call.isEmpty() || call == "opendir" ? 0 : 1);
}

void tst_folderRecordFiles::aFileThatGoesWhileTheFolderIsListedIsLeftOut()
{
    QTemporaryDir home;
    QVERIFY(QDir(home.path()).mkdir(u"backups"_s));
    put(home.filePath(u"backups/copy"_s), "1");
    FailingFileCalls calls;
    calls.failures["lstat"] = ENOENT;
    const auto listed = FolderRecordFiles(home.path(), calls).list(u"backups"_s);
    QVERIFY(listed.ok());
    QVERIFY(listed.value().empty());
}

void tst_folderRecordFiles::saysWhyAFileCannotBeRemoved()
{
    QTemporaryDir home;
    put(home.filePath(u"cards"_s), "1");
    FailingFileCalls calls;
    calls.failures["unlink"] = EACCES;
    const auto removed = FolderRecordFiles(home.path(), calls).remove(u"cards"_s);
    QVERIFY(!removed.ok());
    QCOMPARE(removed.reason(), description(EACCES));
}

QUORVEL_TEST(tst_folderRecordFiles)
#include "tst_folderRecordFiles.moc"
