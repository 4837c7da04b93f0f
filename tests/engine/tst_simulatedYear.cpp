// A year of a student's days, one after the other on the same real files, and the program started anew each
// day: what adds up wrongly, is lost, or grows a little each day shows only so.
#include "StudentDesk.h"
#include "copyThinning.h"
#include "recordFileNames.h"
#include "suite.h"

#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QTimeZone>

#include <malloc.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int daysOfTheYear = 366; // from one autumn to the same day of the next
constexpr int settledDay = 60;
constexpr size_t mostCards = 40;
constexpr size_t mostTasks = 25;

/// What 305 more days may add in bytes while the program runs. Each day with study adds two lines to the
/// preferences: in memory 64 for the text, 96 for the key, and up to 340 for the entry in a table that
/// doubles when it is full. The backups of ten more months are forty names within 300 bytes.
constexpr qint64 mostMoreRunning = 305 * 2 * 500 + 40 * 300;
/// And where it has ended: nothing of it; only the days that the test itself counts, and what its cards and
/// tasks of that day have more in them.
constexpr qint64 mostMoreEnded = 305 * 100 + 20'000;
/// The same seen from outside, with the pages that the allocator keeps between what is in use.
constexpr qint64 mostMoreResident = 2 * 1024 * 1024;

/// Fills what the allocator keeps of freed blocks, seven of each size, and which it counts as in use: so it
/// is the same at each look.
void fillAllocatorCache()
{
    std::vector<std::unique_ptr<char[]>> blocks;
    for (size_t size = 8; size <= 1032; size += 16) {
        for (int block = 0; block < 8; ++block)
            blocks.push_back(std::make_unique<char[]>(size));
    }
}

qint64 bytesInUse()
{
    fillAllocatorCache();
    malloc_trim(0);
    const auto info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

qint64 residentBytes()
{
    QFile file(u"/proc/self/statm"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("/proc/self/statm cannot be read");
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

/// Lives through a day at a desk.
class Student
{
public:
    Student(StudentDesk &desk, quint32 seed)
        : m_desk(desk)
        , m_random(seed)
    {}

    void live(QDate day, int number)
    {
        m_number = number;
        m_desk.clock.setWallClock(QDateTime(day, QTime(6 + below(4), below(60)), zone()));
        m_desk.pass(1);
        if (number % 9 == 0)
            changeSettings();
        lookAfterCards();
        lookAfterTasks();
        const int sessions = below(8) == 0 ? 0 : 1 + below(2);
        for (int session = 0; session < sessions; ++session) {
            study();
            m_desk.clock.advance(std::chrono::minutes(20 + below(200)));
            m_desk.pass(1);
        }
        spendNight(day);
    }

    static QTimeZone zone() { return QTimeZone("Europe/Berlin"); }

private:
    int below(int number) { return m_random.bounded(number); }
    QString anyTopic() { return QStringList{u""_s, u"sums"_s, u"латынь"_s}[below(3)]; }

    void changeSettings()
    {
        if (below(12) == 0)
            m_desk.restoreDefaultSettings();
        else
            m_desk.configure(1 + below(3), 1 + below(2), below(4),
                             {u"day%1.example"_s.arg(m_number), u"games.example"_s});
        m_desk.speak(below(2) ? AppLanguage::English : AppLanguage::Russian);
        m_desk.setProMode(below(2) == 0);
    }
    void lookAfterCards()
    {
        for (int left = below(4); left > 0; --left)
            m_desk.addCard(u"Question %1 of day %2?"_s.arg(left).arg(m_number),
                           u"Answer %1|%2,5"_s.arg(left).arg(m_number), anyTopic());
        while (m_desk.expected.cards.size() > mostCards)
            m_desk.deleteOldestCard();
        m_desk.setTopic(anyTopic());
        m_desk.answer(below(3) > 0); // before the session, where it proves nothing
    }
    void lookAfterTasks()
    {
        for (int left = below(4); left > 0; --left)
            m_desk.addTask(u"Step %1 of day %2"_s.arg(left).arg(m_number));
        if (!m_desk.expected.tasks.empty()) {
            const auto row = size_t(below(int(m_desk.expected.tasks.size())));
            switch (below(4)) {
            case 0:
                m_desk.deleteTask(row);
                break;
            case 1:
                m_desk.completeTask(row);
                m_desk.reopenTask(row);
                break;
            default:
                m_desk.completeTask(row);
            }
        }
        if (m_desk.expected.tasks.size() > mostTasks || below(30) == 0)
            m_desk.clearCompletedTasks();
        while (m_desk.expected.tasks.size() > mostTasks)
            m_desk.deleteTask(m_desk.expected.tasks.size() - 1);
    }

    void study()
    {
        if (!m_desk.startStudy())
            return;
        m_desk.pass(1 + below(70));
        beDistracted();
        switch (below(8)) {
        case 0:
            m_desk.stop();
            break;
        case 1:
            m_desk.lock();
            m_desk.pass(5);
            m_desk.stop();
            break;
        case 2:
            m_desk.takeBreak(1 + below(15));
            break;
        default:
            finish();
        }
        if (m_desk.expected.mode == StudentRecords::Mode::BreakTime && below(4) > 0)
            m_desk.pass(m_desk.expected.breakRemaining);
        else
            m_desk.stop();
    }
    /// Something for which the clock stands still, or which moves another clock than the session's.
    void beDistracted()
    {
        switch (below(6)) {
        case 0:
            leaveFor(m_desk.applications.start(u"Steam"_s), 1);
            break;
        case 1: // asked at the first heartbeat, forced after more than five seconds, gone at the next
            leaveFor(m_desk.applications.startStubborn(u"Discord"_s), 7);
            break;
        case 2:
            m_desk.idle.since = 181s;
            m_desk.pass(20, false);
            m_desk.idle.since = 0s;
            break;
        case 3:
            leaveFor(m_desk.applications.start(u"Solitaire"_s), 10);
            break;
        case 4:
            m_desk.clock.suspend(std::chrono::minutes(-below(26 * 60)));
            m_desk.pass(3);
            break;
        default:
            m_desk.pass(3);
        }
    }
    /// For that many heartbeats the session's clock stands still; a break that has begun meanwhile goes on.
    void leaveFor(qint32 application, qint64 seconds)
    {
        m_desk.pass(seconds, false);
        m_desk.applications.end(application); // if Quorvel has not
        m_desk.applications.bringToFront(m_studyApplication);
        m_desk.pass(2);
    }
    void finish()
    {
        m_desk.pass(m_desk.expected.studyRemaining / 2);
        for (int tries = 0; tries < 40 && m_desk.expected.mode == StudentRecords::Mode::Studying; ++tries) {
            m_desk.answer(below(4) > 0);
            m_desk.pass(1 + m_desk.expected.studyRemaining / 4);
        }
    }

    /// Mostly with the program ended; else over midnight at work, or with the lid closed in mid-session.
    void spendNight(QDate day)
    {
        if (below(12) == 0) {
            m_desk.clock.setWallClock(QDateTime(day, QTime(23, 59, 20), zone()));
            m_desk.pass(1);
            if (m_desk.startStudy())
                m_desk.pass(70);
        } else if (below(8) == 0 && m_desk.startStudy()) {
            m_desk.pass(30);
            m_desk.clock.suspend(9h);
            m_desk.idle.since = 9h;
            m_desk.pass(1, false);
            m_desk.idle.since = 0s;
            m_desk.pass(40);
        }
    }

    StudentDesk &m_desk;
    QRandomGenerator m_random;
    int m_number = 0;
    qint32 m_studyApplication = m_desk.applications.start(u"Anki"_s);
};

/// How many there may be by their age in UTC: what the rule of the backups leaves of a file is one for each
/// hour of the last day, 14 days, 8 more weeks, and the months; and what the month's end adds among them.
void checkCopies(const QStringList &names, const QDateTime &now)
{
    std::map<QString, int> recent;
    std::set<QString> days;
    for (const auto &name : names) {
        const auto copy = readRollingCopyName(name);
        QVERIFY2(copy, qPrintable(name));
        const auto age = copy->time.secsTo(now);
        if (age <= 2 * 86400)
            ++recent[copy->of];
        else
            QVERIFY2(days.insert(copy->of + copy->time.date().toString(Qt::ISODate)).second,
                     qPrintable(name));
    }
    for (const auto &[file, count] : recent)
        QVERIFY2(count <= 2 * 25, qPrintable(file));
    QVERIFY2(days.size() <= 4 * (14 + 9 + 14), qPrintable(QString::number(days.size())));
}

void checkFiles(const StudentDesk &desk)
{
    const auto names = QDir(desk.dataFolder()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    QStringList known(RecordFileNames::all.begin(), RecordFileNames::all.end());
    for (const auto &name : names)
        QVERIFY2(known.contains(name), qPrintable(name)); // nothing kept aside, nothing half written
    qint64 largest = 0;
    for (const auto &name : names)
        largest = std::max(largest, QFileInfo(desk.dataFolder() + u'/' + name).size());
    QVERIFY2(largest < 16'000, qPrintable(QString::number(largest))); // 40 cards within 400 bytes each

    QDirIterator copies(desk.dataFolder() + u"/backups"_s, QDir::Files | QDir::Hidden);
    QStringList copyNames;
    while (copies.hasNext()) {
        copies.next();
        copyNames.append(copies.fileName());
        QVERIFY2(copies.fileInfo().size() < 16'000, qPrintable(copies.fileName()));
    }
    checkCopies(copyNames, desk.clock.now());
}

/// Every day's counters are there, and besides them nothing but the two settings that are kept here.
void checkPreferences(const StudentDesk &desk)
{
    const auto &days = desk.expected.days;
    for (const auto &[date, day] : days) {
        const auto key = date.toString(Qt::ISODate);
        QCOMPARE(desk.preferences->get<qint64>(u"studySeconds-"_s + key), day.studySeconds);
        QCOMPARE(desk.preferences->get<qint64>(u"completedSessions-"_s + key), day.completedSessions);
    }
    const QDir folder(desk.preferencesFolder());
    for (const auto &name : folder.entryList(QDir::Files | QDir::Hidden))
        QVERIFY2(name == u"preferences" || name == u"preferences.journal", qPrintable(name));
    QFile file(folder.filePath(u"preferences"_s));
    if (!file.open(QIODevice::ReadOnly))
        return; // nothing to write yet
    const auto lines = file.readAll().count('\n');
    QVERIFY2(lines <= qsizetype(2 * days.size() + 2), qPrintable(QString::number(lines)));
    QVERIFY2(file.size() <= lines * 50, qPrintable(QString::number(file.size())));
}

void compare(const StudentDesk &desk)
{
    const auto &controller = *desk.controller;
    const auto &expected = desk.expected;
    QCOMPARE(int(controller.mode()), int(expected.mode));
    QCOMPARE(controller.studyRemaining(), expected.studyRemaining);
    QCOMPARE(controller.breakRemaining(), expected.breakRemaining);
    QCOMPARE(controller.currentSessionCardProofCount(), qint64(expected.proven.size()));
    QCOMPARE(controller.todayStudySeconds(), expected.today().studySeconds);
    QCOMPARE(controller.completedSessions(), expected.today().completedSessions);
    QCOMPARE(controller.userProgress(), expected.progress);
    QCOMPARE(controller.topicCardCount(), expected.matchingCards());
    QCOMPARE(controller.studyCards(), expected.cards);
    QCOMPARE(controller.studyTasks(), expected.tasks);
    QCOMPARE(controller.config(), expected.config);
    QCOMPARE(controller.language(), expected.language);
    QCOMPARE(controller.proModeEnabled(), expected.proMode);
    QCOMPARE(controller.unsavedText(), QString());
}

} // namespace

class TestSimulatedYear : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aYearOfDaysAddsUpAndNothingGrows_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::newRow("one student") << 1U;
        QTest::newRow("another") << 2U;
    }
    void aYearOfDaysAddsUpAndNothingGrows()
    {
        QFETCH(quint32, seed);
        StudentDesk desk;
        desk.clock.setTimeZone(Student::zone());
        Student student(desk, seed);
        const QDate firstDay(2026, 10, 20);
        desk.clock.setWallClock(QDateTime(firstDay, QTime(5, 0), Student::zone()));
        Memory settled;
        for (int number = 0; number < daysOfTheYear; ++number) {
            QCOMPARE(desk.calls.openFiles, 0);
            const auto ended = bytesInUse();
            desk.start();
            compare(desk);
            checkFiles(desk);
            checkPreferences(desk);
            if (number == settledDay)
                settled = {ended, bytesInUse(), residentBytes()};
            if (number + 1 == daysOfTheYear) {
                checkGrowth(settled, {ended, bytesInUse(), residentBytes()});
                break;
            }
            student.live(firstDay.addDays(number), number);
            compare(desk);
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(u"on day %1, %2"_s.arg(number).arg(desk.clock.now().toString(Qt::ISODate))));
            number % 5 == 0 ? desk.endByForce() : desk.end();
        }
        checkItWasAYear(desk);
    }

private:
    struct Memory
    {
        qint64 ended = 0;
        qint64 running = 0;
        qint64 resident = 0;
    };

    static void checkGrowth(const Memory &settled, const Memory &now)
    {
        qInfo("more in use: %lld bytes ended, %lld running; %lld more resident", now.ended - settled.ended,
              now.running - settled.running, now.resident - settled.resident);
        QVERIFY(now.ended - settled.ended <= mostMoreEnded);
        QVERIFY(now.running - settled.running <= mostMoreRunning);
        QVERIFY(now.resident - settled.resident <= mostMoreResident);
    }
    /// That the days were such as they are meant to be.
    static void checkItWasAYear(const StudentDesk &desk)
    {
        const auto &progress = desk.expected.progress;
        qInfo("%lld sessions, %lld proofs, %lld seconds, best streak %lld, %zu days with study",
              progress.totalCompletedSessions, progress.totalCardProofs, progress.totalFocusSeconds,
              progress.longestStreak, desk.expected.days.size());
        QVERIFY(progress.totalCompletedSessions > 200);
        QVERIFY(progress.totalCardProofs > 100);
        QVERIFY(progress.longestStreak > 5);
        QVERIFY(desk.expected.days.size() > 250);
    }
};

QUORVEL_TEST(TestSimulatedYear, QCoreApplication)
#include "tst_simulatedYear.moc"
