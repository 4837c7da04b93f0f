#include "ControllerHarness.h"
#include "suite.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

void addTask(QuorvelController &controller, const QString &title)
{
    controller.setNewStudyTaskText(title);
    controller.addStudyTask();
}

} // namespace

class TestTasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAddedTaskStandsInFrontTrimmedAndIsSaved()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        addTask(controller, u"first"_s);
        addTask(controller, u" \n second\u00a0"_s);
        QCOMPARE(titles(controller.studyTasks()).join(u' '), u"second first"_s);
        const auto &task = controller.studyTasks().front();
        QVERIFY(!task.id.isNull());
        QCOMPARE(task.createdAt, harness.clock.now().toUTC());
        QVERIFY(!task.completedAt && !task.completedSessionID && !task.sourceCardID);
        QCOMPARE(controller.newStudyTaskText(), QString());
        QCOMPARE(harness.storedTasks(), controller.studyTasks());
        QCOMPARE(harness.events(), QStringList({u"Task added."_s, u"Task added."_s}));
        QCOMPARE(controller.userProgress().totalXP, 0);
    }

    void onlySpacesAddNothingAndStay()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        addTask(controller, u" \u2028\t"_s);
        QCOMPARE(controller.newStudyTaskText(), u" \u2028\t"_s);
        QVERIFY(controller.studyTasks().empty());
        QVERIFY(controller.recentEvents().isEmpty());
        QVERIFY(harness.files.steps.empty());
    }

    void theFirstOpenTasksAreTheNext()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QCOMPARE(controller.studyTaskCount(), 0);
        for (const auto &title : {u"e"_s, u"d"_s, u"c"_s, u"b"_s, u"a"_s})
            addTask(controller, title);
        QCOMPARE(controller.studyTaskCount(), 5);
        QCOMPARE(controller.nextOpenTaskTitles(), QStringList({u"a"_s, u"b"_s, u"c"_s}));
        controller.completeStudyTask(controller.studyTasks()[1]);
        QCOMPARE(controller.nextOpenTaskTitles(), QStringList({u"a"_s, u"c"_s, u"d"_s}));
        controller.deleteStudyTask(controller.studyTasks()[0]);
        controller.deleteStudyTask(controller.studyTasks()[1]);
        QCOMPARE(controller.nextOpenTaskTitles(), QStringList({u"d"_s, u"e"_s}));
        QCOMPARE(controller.studyTaskCount(), 3);
    }

    void sameTitlesAreTwoTasks()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        addTask(controller, u"again"_s);
        addTask(controller, u"again"_s);
        QVERIFY(controller.studyTasks().front().id != controller.studyTasks().back().id);
        controller.completeStudyTask(controller.studyTasks().back());
        QVERIFY(!controller.studyTasks().front().completedAt);
        QVERIFY(controller.studyTasks().back().completedAt);
    }

    void tickingEarnsXPAndIsToldInOrder()
    {
        ControllerHarness harness;
        StudyTask task;
        task.id = QUuid::createUuid();
        task.title = u"read"_s;
        task.createdAt = QDateTime(QDate(2026, 9, 1), QTime(8, 0), Qt::UTC);
        task.completedSessionID = QUuid::createUuid();
        task.sourceCardID = QUuid::createUuid();
        harness.storeTasks({task});
        UserProgress progress;
        progress.totalXP = 98;
        harness.storeProgress(progress);
        auto &controller = harness.start();
        controller.completeStudyTask(task);
        auto expected = task;
        expected.completedAt = harness.clock.now().toUTC();
        expected.completedSessionID.reset();
        QCOMPARE(controller.studyTasks().front(), expected);
        QCOMPARE(harness.storedTasks().front(), expected);
        QCOMPARE(harness.storedProgress().totalXP, 101);
        QCOMPARE(harness.events(), QStringList({u"Task completed: read"_s, u"+3 XP. Study task completed."_s,
                                                u"Level up: Prep Rookie."_s}));
        QCOMPARE(harness.saves(), QStringList({u"study-tasks.json"_s, u"progress.json"_s}));
    }

    void tickingATickedTaskStampsAndEarnsAgain()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        addTask(controller, u"read"_s);
        controller.completeStudyTask(controller.studyTasks().front());
        harness.clock.advance(std::chrono::hours(1));
        controller.completeStudyTask(controller.studyTasks().front());
        QCOMPARE(controller.studyTasks().front().completedAt, std::optional(harness.clock.now().toUTC()));
        QCOMPARE(controller.userProgress().totalXP, 6);
    }

    void tickingReopeningAndTickingGivesSixXP()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        addTask(controller, u"read"_s);
        controller.completeStudyTask(controller.studyTasks().front());
        controller.reopenStudyTask(controller.studyTasks().front());
        QVERIFY(!controller.studyTasks().front().completedAt);
        QCOMPARE(controller.userProgress().totalXP, 3);
        QCOMPARE(harness.events().first(), u"Task reopened."_s);
        QCOMPARE(harness.storedTasks(), controller.studyTasks());
        controller.completeStudyTask(controller.studyTasks().front());
        QCOMPARE(controller.userProgress().totalXP, 6);
    }

    void reopeningForgetsWhenAndInWhichSessionItWasDone()
    {
        ControllerHarness harness;
        StudyTask task;
        task.id = QUuid::createUuid();
        task.title = u"read"_s;
        task.createdAt = QDateTime(QDate(2026, 9, 1), QTime(8, 0), Qt::UTC);
        task.sourceCardID = QUuid::createUuid();
        auto done = task;
        done.completedAt = task.createdAt.addSecs(60);
        done.completedSessionID = QUuid::createUuid();
        harness.storeTasks({done});
        auto &controller = harness.start();
        controller.reopenStudyTask(done);
        QCOMPARE(controller.studyTasks().front(), task);
        QCOMPARE(harness.storedTasks().front(), task);
    }

    void theRevisionGrowsWithEveryChange()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        auto before = controller.studyTasksRevision();
        const auto hasGrown = [&] {
            return controller.studyTasksRevision() > std::exchange(before, controller.studyTasksRevision());
        };
        addTask(controller, u"read"_s);
        QVERIFY(hasGrown());
        controller.completeStudyTask(controller.studyTasks().front());
        QVERIFY(hasGrown());
        controller.reopenStudyTask(controller.studyTasks().front());
        QVERIFY(hasGrown());
        controller.deleteStudyTask(controller.studyTasks().front());
        QVERIFY(hasGrown());
        controller.clearCompletedTasks();
        QVERIFY(hasGrown());
    }

    void unknownTasksAreNeitherTickedNorReopened()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        StudyTask stranger;
        stranger.id = QUuid::createUuid();
        controller.completeStudyTask(stranger);
        controller.reopenStudyTask(stranger);
        QVERIFY(controller.recentEvents().isEmpty());
        QVERIFY(harness.files.steps.empty());
    }

    void clearingKeepsTheOpenOnesInOrder_data()
    {
        QTest::addColumn<QString>("ticked"); // a letter a task, capitals are ticked
        QTest::addColumn<QString>("left");
        for (const auto *row : {"", "a", "A", "AB", "Ab", "aB", "aBcDe", "ABcdEF", "abCDEfgH"}) {
            const auto tasks = QString::fromLatin1(row);
            QStringList left;
            for (const auto letter : tasks) {
                if (letter.isLower())
                    left << QString(letter);
            }
            QTest::newRow(row) << tasks << left.join(u' ');
        }
    }
    void clearingKeepsTheOpenOnesInOrder()
    {
        QFETCH(QString, ticked);
        ControllerHarness harness;
        std::deque<StudyTask> tasks;
        for (const auto letter : ticked) {
            StudyTask task;
            task.id = QUuid::createUuid();
            task.title = letter;
            task.createdAt = QDateTime(QDate(2026, 9, 1), QTime(8, 0), Qt::UTC);
            if (letter.isUpper())
                task.completedAt = task.createdAt;
            tasks.push_back(task);
        }
        harness.storeTasks(tasks);
        auto &controller = harness.start();
        const auto completed =
            std::count_if(ticked.begin(), ticked.end(), [](QChar letter) { return letter.isUpper(); });
        QCOMPARE(controller.completedTaskCount(), completed);
        QCOMPARE(qint64(controller.completedStudyTasks().size()), completed);
        const QAbstractItemModelTester tester(controller.studyTaskModel());
        controller.clearCompletedTasks();
        QTEST(titles(controller.studyTasks()).join(u' '), "left");
        QCOMPARE(controller.completedTaskCount(), 0);
        QCOMPARE(harness.storedTasks(), controller.studyTasks());
        QCOMPARE(harness.events(), QStringList{u"Cleared %1 completed tasks."_s.arg(completed)});
        QCOMPARE(harness.saves(), QStringList{u"study-tasks.json"_s});
    }

    void deletingLogsExactlyOneEventAndTakesNoXP()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        addTask(controller, u"read"_s);
        addTask(controller, u"write"_s);
        controller.completeStudyTask(controller.studyTasks().front());
        const auto before = harness.events().size();
        controller.deleteStudyTask(controller.studyTasks().front());
        QCOMPARE(titles(controller.studyTasks()).join(u' '), u"read"_s);
        QCOMPARE(harness.events().size(), before + 1);
        QCOMPARE(harness.events().first(), u"Task deleted."_s);
        QCOMPARE(harness.storedTasks(), controller.studyTasks());
        QCOMPARE(controller.userProgress().totalXP, 3);
        QCOMPARE(controller.completedTaskCount(), 0);
    }

    void deletingRemovesEveryTaskOfThatId()
    {
        ControllerHarness harness;
        StudyTask task;
        task.id = QUuid::createUuid();
        task.title = u"twin"_s;
        task.createdAt = QDateTime(QDate(2026, 9, 1), QTime(8, 0), Qt::UTC);
        auto other = task;
        other.id = QUuid::createUuid();
        other.title = u"other"_s;
        harness.storeTasks({task, other, task});
        auto &controller = harness.start();
        controller.deleteStudyTask(controller.studyTasks().front());
        QCOMPARE(titles(controller.studyTasks()).join(u' '), u"other"_s);
    }

    void aFailedSaveIsToldAndKeepsTheTask()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.files.writeFailure = u"Input/output error"_s;
        addTask(controller, u"read"_s);
        QCOMPARE(harness.events(),
                 QStringList({u"Task added."_s, u"Could not save tasks: Input/output error"_s}));
        QCOMPARE(titles(controller.studyTasks()).join(u' '), u"read"_s);
    }

    void oneTaskWithoutATitleGivesAnEmptyPlan()
    {
        ControllerHarness harness;
        harness.files.files[u"study-tasks.json"_s] =
            R"([{"id":"B9A63B3E-3D1C-4B55-8E1F-9F3B8E4A0C11","createdAt":"2026-09-01T08:00:00Z"}])";
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"study-tasks.json could not be loaded"_s));
        const auto &controller = harness.start();
        QVERIFY(controller.studyTasks().empty());
        QVERIFY(controller.recentEvents().isEmpty());
    }

    void manyTasksAtOnceStandAsIfPutInFrontOneByOne()
    {
        StudyTaskModel oneByOne;
        StudyTaskModel atOnce;
        const QAbstractItemModelTester tester(&atOnce);
        const QSignalSpy inserted(&atOnce, &QAbstractItemModel::rowsInserted);
        std::vector<StudyTask> tasks(5);
        for (auto &task : tasks)
            task.id = QUuid::createUuid();
        for (auto *model : {&oneByOne, &atOnce})
            model->replaceAll({StudyTask()});
        for (const auto &task : tasks)
            oneByOne.insertFront(task);
        atOnce.insertAllFront(tasks);
        QCOMPARE(atOnce.tasks(), oneByOne.tasks());
        QCOMPARE(atOnce.tasks().front().id, tasks.back().id);
        QCOMPARE(inserted, (QList<QVariantList>{{QModelIndex(), 0, 4}}));
        atOnce.insertAllFront({});
        QCOMPARE(inserted.size(), 1);
    }

    void aRowThatIsGoneIsEmpty()
    {
        StudyTaskModel model;
        model.replaceAll({StudyTask()});
        const auto row = model.index(0);
        model.replaceAll({});
        QCOMPARE(model.data(row, StudyTaskModel::TaskRole), QVariant());
        QCOMPARE(model.data(QModelIndex(), StudyTaskModel::TaskRole), QVariant());
    }

    void aNewListIsThereWhenItIsAnnounced()
    {
        StudyTaskModel model;
        QList<int> rows;
        const auto count = [&] { rows.append(model.rowCount()); };
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, count);
        connect(&model, &QAbstractItemModel::modelReset, this, count);
        model.replaceAll({StudyTask(), StudyTask()});
        QCOMPARE(rows, QList<int>({0, 2}));
        QCOMPARE(model.rowCount(model.index(0)), 0); // a list, no tree
    }

    void theListNamesTheRowsThatChange()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        auto &model = *controller.studyTaskModel();
        const QAbstractItemModelTester tester(&model);
        const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        const QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        addTask(controller, u"read"_s);
        addTask(controller, u"write"_s);
        QCOMPARE(inserted.size(), 2);
        controller.completeStudyTask(controller.studyTasks().back());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex().row(), 1);
        const auto first = model.data(model.index(0), StudyTaskModel::TaskRole).value<StudyTask>();
        QCOMPARE(first, controller.studyTasks().front());
        QCOMPARE(first.title, u"write"_s);
        QVERIFY(!first.completedAt);
        QVERIFY(model.data(model.index(1), StudyTaskModel::TaskRole).value<StudyTask>().completedAt);
        QCOMPARE(model.data(model.index(7), StudyTaskModel::TaskRole), QVariant());
        controller.deleteStudyTask(controller.studyTasks().back());
        QCOMPARE(removed, (QList<QVariantList>{{QModelIndex(), 1, 1}}));
    }
};

QUORVEL_TEST(TestTasks, QCoreApplication)
#include "tst_tasks.moc"
