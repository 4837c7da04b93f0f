#include "FakeRecordFiles.h"
#include "RecordStore.h"
#include "jsonCodecs.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QDateTime now(QDate(2026, 11, 20), QTime(23, 15, 30), Qt::OffsetFromUTC, 3 * 3600);

} // namespace

class TestRecordStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void startingWithoutFilesWritesNothing()
    {
        FakeRecordFiles files;
        RecordStore store(files);
        QCOMPARE(store.loadConfig(), QuorvelConfig::defaults());
        QCOMPARE(store.loadUserProgress(), UserProgress());
        QVERIFY(files.steps.empty());
    }

    void savedRecordsAreReadBack()
    {
        FakeRecordFiles files;
        RecordStore store(files);
        auto config = QuorvelConfig::defaults();
        config.studyMinutes = 50;
        UserProgress progress;
        progress.totalXP = 120;
        progress.lastCompletedStudyDay = u"2026-11-20"_s;
        QVERIFY(store.saveConfig(config, now).ok());
        QVERIFY(store.saveUserProgress(progress, now).ok());
        QCOMPARE(files.steps, (std::vector<QString>{u"write config.json"_s, u"write progress.json"_s}));

        RecordStore next(files);
        QCOMPARE(next.loadConfig(), config);
        QCOMPARE(next.loadUserProgress(), progress);
    }

    void undecodableFileIsKeptAsideBeforeTheFirstSaveOnly()
    {
        FakeRecordFiles files;
        files.files[u"config.json"_s] = "{\"studyMinutes\": \"many\"}";
        RecordStore store(files);
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(u"config.json could not be loaded and is kept"_s));
        QCOMPARE(store.loadConfig(), QuorvelConfig::defaults());
        QVERIFY(files.steps.empty());

        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(u"its old content is now config.json.unreadable"_s));
        QVERIFY(store.saveConfig(QuorvelConfig::defaults(), now).ok());
        QVERIFY(store.saveConfig(QuorvelConfig::defaults(), now).ok());
        QCOMPARE(files.steps,
                 (std::vector<QString>{
                     u"aside config.json config.json.unreadable-20261120T201530Z"_s, u"write config.json"_s,
                     u"aside config.json backups/config-20261120T201530Z.json"_s, u"write config.json"_s}));
        QCOMPARE(files.files[u"config.json.unreadable-20261120T201530Z"_s],
                 "{\"studyMinutes\": \"many\"}"_ba);
    }

    void fileThatCannotBeReadIsKeptAsideToo()
    {
        FakeRecordFiles files;
        files.files[u"progress.json"_s] = "precious";
        files.unreadable.insert(u"progress.json"_s);
        RecordStore store(files);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Permission denied"_s));
        QCOMPARE(store.loadUserProgress(), UserProgress());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"its old content is now"_s));
        QVERIFY(store.saveUserProgress({}, now).ok());
        QCOMPARE(files.files[u"progress.json.unreadable-20261120T201530Z"_s], "precious"_ba);
    }

    void nothingIsReplacedWhenTheCopyCannotBeMade()
    {
        FakeRecordFiles files;
        files.files[u"config.json"_s] = "[]";
        files.asideFailure = u"No space left on device"_s;
        RecordStore store(files);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"could not be loaded"_s));
        (void)store.loadConfig();
        const auto saved = store.saveConfig(QuorvelConfig::defaults(), now);
        QVERIFY(!saved.ok());
        QCOMPARE(saved.reason(), u"No space left on device"_s);
        QCOMPARE(files.files[u"config.json"_s], "[]"_ba);

        // Once there is room again the next save makes up for it.
        files.asideFailure.clear();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"its old content is now"_s));
        QVERIFY(store.saveConfig(QuorvelConfig::defaults(), now).ok());
        QCOMPARE(files.files.size(), std::size_t(2));
    }

    void anUnreadableFileThatIsTakenAwayHindersNoSave()
    {
        FakeRecordFiles files;
        files.files[u"config.json"_s] = "[]";
        RecordStore store(files);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"could not be loaded and is kept"_s));
        (void)store.loadConfig();
        files.files.clear();
        QVERIFY(store.saveConfig(QuorvelConfig::defaults(), now).ok());
        QCOMPARE(files.steps, std::vector<QString>{u"write config.json"_s});
    }

    void failedWriteTellsTheReason()
    {
        FakeRecordFiles files;
        files.writeFailure = u"Read-only file system"_s;
        RecordStore store(files);
        const auto saved = store.saveConfig(QuorvelConfig::defaults(), now);
        QVERIFY(!saved.ok());
        QCOMPARE(saved.reason(), u"Read-only file system"_s);
    }
};

QTEST_APPLESS_MAIN(TestRecordStore)
#include "tst_RecordStore.moc"
