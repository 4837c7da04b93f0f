#include "FakeRecordFiles.h"
#include "RecordStore.h"
#include "jsonCodecs.h"
#include "randomRecords.h"
#include "recordFileNames.h"
#include "suite.h"

#include <QRegularExpression>

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
        QVERIFY(store.loadStudyTasks().empty());
        QVERIFY(store.loadStudyCards().empty());
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

    void whatCannotBeDecodedGivesAFreshStartAndStays_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray text = "\"a\"";
        QTest::newRow("empty") << ""_ba;
        QTest::newRow("NUL bytes") << QByteArray(4096, '\0');
        QTest::newRow("no JSON") << "hello"_ba;
        QTest::newRow("invalid UTF-8") << "{\"studyMinutes\":\"\xFF\"}"_ba;
        QTest::newRow("a number") << "7"_ba;
        QTest::newRow("a list of the wrong things") << "[" + text + "]";
        QTest::newRow("the wrong type") << R"({"studyMinutes":"many","totalXP":[]})"_ba;
        QTest::newRow("deep") << QByteArray("[").repeated(100'000);
        QTest::newRow("UTF-16") << QByteArray("\xFF\xFE{\0}\0", 6);
    }

    void whatCannotBeDecodedGivesAFreshStartAndStays()
    {
        QFETCH(QByteArray, bytes);
        FakeRecordFiles files;
        for (const auto &name : RecordFileNames::all) {
            files.files[name] = bytes;
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QString(name) + u" could not be loaded and is kept"_s));
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"its old content is now "_s + name));
        }
        RecordStore store(files);
        QCOMPARE(store.loadConfig(), QuorvelConfig::defaults());
        QVERIFY(store.loadStudyTasks().empty());
        QVERIFY(store.loadStudyCards().empty());
        QCOMPARE(store.loadUserProgress(), UserProgress());
        QVERIFY(files.steps.empty());

        QVERIFY(store.saveConfig(QuorvelConfig::defaults(), now).ok());
        QVERIFY(store.saveStudyTasks({}, now).ok());
        QVERIFY(store.saveStudyCards({}, now).ok());
        QVERIFY(store.saveUserProgress({}, now).ok());
        for (const auto &name : RecordFileNames::all)
            QCOMPARE(files.files.at(name + u".unreadable-20261120T201530Z"_s), bytes);
        QCOMPARE(files.files.size(), 2 * RecordFileNames::all.size());
    }

    void everyTruncationGivesAFreshStartAndStays()
    {
        const QuorvelConfig config;
        UserProgress progress;
        progress.totalXP = 7;
        RandomRecords random(7);
        const std::deque tasks(2, random.task());
        const std::deque cards(2, random.card());
        const std::map<QString, QByteArray> whole = {
            {RecordFileNames::config, encodeConfig(config)},
            {RecordFileNames::studyTasks, encodeStudyTasks(tasks)},
            {RecordFileNames::studyCards, encodeStudyCards(cards)},
            {RecordFileNames::progress, encodeUserProgress(progress)},
        };
        const auto before =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        int tried = 0;
        for (const auto &[name, bytes] : whole) {
            for (qsizetype length = 0; length < bytes.size(); ++length, ++tried) {
                FakeRecordFiles files;
                files.files[name] = bytes.left(length);
                RecordStore store(files);
                QCOMPARE(store.loadConfig(), QuorvelConfig::defaults());
                QVERIFY(store.loadStudyTasks().empty());
                QVERIFY(store.loadStudyCards().empty());
                QCOMPARE(store.loadUserProgress(), UserProgress());
                QVERIFY(files.steps.empty());
                QCOMPARE(files.files.at(name), bytes.left(length));
            }
        }
        qInstallMessageHandler(before);
        QVERIFY(tried > 500);
        FakeRecordFiles files;
        files.files = whole;
        RecordStore store(files);
        QVERIFY(store.loadConfig() == config && store.loadUserProgress() == progress);
        QVERIFY(store.loadStudyTasks() == tasks && store.loadStudyCards() == cards);
    }

    void anyRecordIsReadBack()
    {
        for (quint32 seed = 2000; seed < 2100; ++seed) {
            RandomRecords random(seed);
            const auto config = random.config();
            const auto tasks = random.tasks();
            const auto cards = random.cards();
            const auto progress = random.progress();
            FakeRecordFiles files;
            RecordStore store(files);
            QVERIFY(store.saveConfig(config, now).ok());
            QVERIFY(store.saveStudyTasks(tasks, now).ok());
            QVERIFY(store.saveStudyCards(cards, now).ok());
            QVERIFY(store.saveUserProgress(progress, now).ok());
            RecordStore next(files);
            QVERIFY(next.loadConfig() == config);
            QVERIFY(next.loadStudyTasks() == tasks);
            QVERIFY(next.loadStudyCards() == cards);
            QVERIFY(next.loadUserProgress() == progress);
        }
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

QUORVEL_TEST(TestRecordStore)
#include "tst_RecordStore.moc"
