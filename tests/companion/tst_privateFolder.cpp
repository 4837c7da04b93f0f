#include "privateFolder.h"
#include "suite.h"

#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>

// How a folder that is not safe is refused, and what stands in for a missing runtime folder, is tested at the
// program's start.
class tst_privateFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { qunsetenv("XDG_RUNTIME_DIR"); }

    void isMadeForItsUserAlone()
    {
        const QTemporaryDir runtime;
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
        const auto before = umask(0);
        const auto made = privateFolder();
        umask(before);
        QVERIFY2(made.usable(), made.problem.c_str());
        QCOMPARE(made.path, runtime.filePath(QStringLiteral("quorvel")).toStdString());
        struct stat status;
        QVERIFY(lstat(made.path.c_str(), &status) == 0);
        QCOMPARE(status.st_mode & 07777, mode_t(0700));
        QVERIFY(privateFolder().usable()); // one that is there already is taken as it is
    }

    void runtimeFolderIsAbsoluteAndAFolder_data()
    {
        QTest::addColumn<QByteArray>("given");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("relative") << QByteArray(".");
        QTest::newRow("a file") << QByteArray("/proc/self/status");
    }

    void runtimeFolderIsAbsoluteAndAFolder()
    {
        QFETCH(QByteArray, given);
        qputenv("XDG_RUNTIME_DIR", given);
        QCOMPARE(privateFolder().path.substr(0, 13), "/tmp/quorvel-");
    }

    void tellsWhereItWouldBe()
    {
        const QTemporaryDir runtime;
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
        QFile file(runtime.filePath(QStringLiteral("quorvel")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const auto folder = privateFolder();
        QVERIFY(!folder.usable());
        QCOMPARE(folder.path, QFile::encodeName(file.fileName()).toStdString());
    }
};

QUORVEL_TEST(tst_privateFolder)
#include "tst_privateFolder.moc"
