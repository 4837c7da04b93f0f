#include "copyThinning.h"
#include "recordFileNames.h"
#include "suite.h"

#include <QRandomGenerator>

#include <algorithm>
#include <map>
#include <set>

using namespace Qt::StringLiterals;

namespace {

QDateTime at(const QString &time)
{
    auto moment = QDateTime::fromString(time, u"yyyy-MM-dd HH:mm:ss"_s);
    moment.setTimeSpec(Qt::UTC);
    if (!moment.isValid())
        qFatal("the test names an impossible time");
    return moment;
}

const QString cards = u"study-cards.json"_s;

QString cardCopy(const QString &time)
{
    return rollingCopyName(cards, at(time));
}

/// A copy that was made, and the spans of Qt's calendar that it lies in.
struct Made
{
    explicit Made(const QDateTime &moment)
        : time(moment.toSecsSinceEpoch())
        , name(rollingCopyName(cards, moment))
        , day(moment.date().toJulianDay())
        , month(moment.date().year() * 12 + moment.date().month())
    {
        int year = 0;
        const int number = moment.date().weekNumber(&year);
        week = year * 100 + number;
    }

    qint64 time;
    QString name;
    qint64 day;
    int week;
    int month;
};

/// What has to be there at `now` of the copies that were ever made, worked out anew from the words of the
/// rule: all of 24 hours, the last of each day for 14 days, of each week for 8 more, of each month.
std::set<QString> promised(const std::map<qint64, Made> &made, const QDateTime &now)
{
    constexpr qint64 day = 24 * 3600;
    std::set<QString> names;
    const auto end = made.upper_bound(now.toSecsSinceEpoch());
    for (auto copy = made.begin(); copy != end; ++copy) {
        const auto next = std::next(copy);
        const auto isLast = [&](auto span) {
            return next == end || next->second.*span != copy->second.*span;
        };
        const qint64 age = now.toSecsSinceEpoch() - copy->first;
        if (age <= day || (age <= 14 * day && isLast(&Made::day)) ||
            (age <= 70 * day && isLast(&Made::week)) || isLast(&Made::month))
            names.insert(copy->second.name);
    }
    return names;
}

/// A folder of card copies as it is used, and what was ever made in it.
struct Folder
{
    std::set<QString> names;
    std::map<qint64, Made> made; ///< by time

    void add(const QDateTime &time)
    {
        const Made copy(time);
        names.insert(copy.name);
        made.insert({copy.time, copy});
    }
    void thin(const QDateTime &now)
    {
        std::vector<ListedFile> files;
        for (const auto &name : names)
            files.push_back({name, 1000});
        for (const auto &name : copiesToRemove(files, now))
            names.erase(name);
    }
    bool hasAll(const std::set<QString> &wanted) const
    {
        return std::includes(names.begin(), names.end(), wanted.begin(), wanted.end());
    }
};

} // namespace

class tst_copyThinning : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesCarryFileAndTime();
    void otherNamesAreNotOurs_data();
    void otherNamesAreNotOurs();
    void removesWhatHadItsTime_data();
    void removesWhatHadItsTime();
    void keepsWithinTheBytes_data();
    void keepsWithinTheBytes();
    void whereRoomIsShortHoursGoBeforeDaysAndDaysBeforeWeeks();
    void eachFileHasItsOwnCopies();
    void twoYearsOfDailyUse();
    void aClockThatJumps();
};

void tst_copyThinning::namesCarryFileAndTime()
{
    const auto time = at(u"2026-11-21 10:15:00"_s);
    QCOMPARE(rollingCopyName(cards, time), u"study-cards-20261121T101500Z.json"_s);
    QCOMPARE(rollingCopyName(cards, time.toOffsetFromUtc(3 * 3600)), u"study-cards-20261121T101500Z.json"_s);
    for (const auto &recordFile : RecordFileNames::all) {
        const auto name = rollingCopyName(recordFile, time);
        QCOMPARE(readRollingCopyName(name), std::optional(RollingCopy{recordFile, time}));
    }
}

void tst_copyThinning::otherNamesAreNotOurs_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"",
                             "study-cards",
                             ".json",
                             "study-cards.json",
                             "study-cards-.json",
                             "study-cards-20261121T101500Z",
                             "study-cards-20261121T101500Z.JSON",
                             "study-cards-20261121T101500Z.json-2",
                             "study-cards-20261121T101500Z.json~",
                             ".study-cards-20261121T101500Z.json",
                             "my-study-cards-20261121T101500Z.json",
                             "study-card-20261121T101500Z.json",
                             "notes-20261121T101500Z.json",
                             "study-cards-20261321T101500Z.json",
                             "study-cards-20261131T101500Z.json",
                             "study-cards-20261121T241500Z.json",
                             "study-cards-20261121T1015Z.json",
                             "study-cards-2026-11-21T10:15:00Z.json",
                             "study-cards-20261121T101500.json",
                             "study-cards-20261121t101500z.json",
                             "study-cards-00000101T000000Z.json",
                             "study-cards-mine-20261121T101500Z.json",
                             "study-cards 20261121T101500Z.json",
                             ".study-cards.json.new"})
        QTest::newRow(*name ? name : "empty") << QString::fromLatin1(name);
    QTest::newRow("other digits") << u"study-cards-٢٠٢٦1121T101500Z.json"_s;
}

void tst_copyThinning::otherNamesAreNotOurs()
{
    QFETCH(QString, name);
    QVERIFY(!readRollingCopyName(name));
    // Neither are they removed, however old and large.
    QVERIFY(copiesToRemove({{name, 10 * mostCopyBytes}, {name, 1}}, at(u"2090-01-01 00:00:00"_s)).empty());
}

void tst_copyThinning::removesWhatHadItsTime_data()
{
    QTest::addColumn<QStringList>("times");
    QTest::addColumn<QStringList>("removed");
    const auto row = [](const char *name, const QStringList &times, const QStringList &removed = {}) {
        QTest::newRow(name) << times << removed;
    };
    // It is Saturday, 2026-11-21 10:00:00.
    row("nothing", {});
    row("one very old", {u"1999-01-01 00:00:00"_s});
    row("all of 24 hours", {u"2026-11-20 10:00:00"_s, u"2026-11-20 11:00:00"_s, u"2026-11-20 23:59:59"_s,
                            u"2026-11-21 00:00:00"_s, u"2026-11-21 09:00:00"_s, u"2026-11-21 10:00:00"_s});
    row("a second more than 24 hours", {u"2026-11-20 09:59:59"_s, u"2026-11-20 10:00:00"_s},
        {u"2026-11-20 09:59:59"_s});
    row("the last of its day, more than 24 hours old", {u"2026-11-20 09:59:59"_s, u"2026-11-21 00:00:00"_s});
    row("the last of each day",
        {u"2026-11-15 08:00:00"_s, u"2026-11-15 20:00:00"_s, u"2026-11-16 08:00:00"_s,
         u"2026-11-16 09:00:00"_s, u"2026-11-16 10:00:00"_s},
        {u"2026-11-15 08:00:00"_s, u"2026-11-16 08:00:00"_s, u"2026-11-16 09:00:00"_s});
    row("14 days", {u"2026-11-07 09:59:59"_s, u"2026-11-08 10:00:00"_s, u"2026-11-07 10:00:00"_s},
        {u"2026-11-07 09:59:59"_s});
    row("a second more than 14 days", {u"2026-11-07 09:59:59"_s, u"2026-11-08 10:00:00"_s},
        {u"2026-11-07 09:59:59"_s});
    // 2026-11-02 is a Monday.
    row("the last of each week",
        {u"2026-11-01 23:00:00"_s, u"2026-11-02 00:00:00"_s, u"2026-11-03 00:00:00"_s,
         u"2026-11-06 00:00:00"_s},
        {u"2026-11-02 00:00:00"_s, u"2026-11-03 00:00:00"_s});
    row("the last of a month that is not the last of its week",
        {u"2026-09-29 00:00:00"_s, u"2026-09-30 00:00:00"_s, u"2026-10-01 00:00:00"_s,
         u"2026-10-02 00:00:00"_s},
        {u"2026-09-29 00:00:00"_s, u"2026-10-01 00:00:00"_s});
    row("a week over the turn of the year", {u"2026-09-10 00:00:00"_s, u"2026-09-13 23:59:59"_s},
        {u"2026-09-10 00:00:00"_s});
    // 8 weeks after 14 days, to the second: 2026-09-12 10:00:00, the Saturday of a week.
    row("8 weeks", {u"2026-09-12 10:00:00"_s, u"2026-09-20 00:00:00"_s});
    row("a second more than 8 weeks", {u"2026-09-12 09:59:59"_s, u"2026-09-20 00:00:00"_s},
        {u"2026-09-12 09:59:59"_s});
    row("the last of each month",
        {u"2025-01-01 00:00:00"_s, u"2025-01-31 00:00:00"_s, u"2025-02-01 00:00:00"_s,
         u"2026-01-15 00:00:00"_s},
        {u"2025-01-01 00:00:00"_s});
    row("the future stays", {u"2026-11-21 10:00:01"_s, u"2026-11-21 10:00:02"_s, u"2030-01-01 00:00:00"_s,
                             u"2030-01-01 01:00:00"_s});
    row("the future stands for nothing", {u"2026-11-21 09:00:00"_s, u"2026-11-19 09:00:00"_s,
                                          u"2026-11-22 09:00:00"_s, u"2026-11-30 09:00:00"_s});
}

void tst_copyThinning::removesWhatHadItsTime()
{
    QFETCH(QStringList, times);
    QFETCH(QStringList, removed);
    std::vector<ListedFile> files;
    for (const auto &time : times)
        files.push_back({cardCopy(time), 1});
    std::vector<QString> names;
    for (const auto &time : removed)
        names.push_back(cardCopy(time));
    QCOMPARE(copiesToRemove(files, at(u"2026-11-21 10:00:00"_s)), names);
    std::reverse(files.begin(), files.end());
    QCOMPARE(copiesToRemove(files, at(u"2026-11-21 10:00:00"_s)), names);
}

void tst_copyThinning::keepsWithinTheBytes_data()
{
    QTest::addColumn<QList<qint64>>("sizes"); // of copies that are one hour apart, the oldest first
    QTest::addColumn<int>("removed");
    QTest::newRow("as much as there may be") << QList<qint64>{mostCopyBytes / 2, mostCopyBytes / 2} << 0;
    QTest::newRow("a byte more") << QList<qint64>{mostCopyBytes / 2, mostCopyBytes / 2 + 1} << 1;
    QTest::newRow("the oldest go first")
        << QList<qint64>{1, 50'000'000, 50'000'000, 50'000'000, 50'000'000, 50'000'000} << 2;
    QTest::newRow("no more than needed") << QList<qint64>{100'000'000, 1, 100'000'000} << 1;
    QTest::newRow("never the newest") << QList<qint64>{1, 1, mostCopyBytes + 1} << 2;
    QTest::newRow("the only one") << QList<qint64>{mostCopyBytes + 1} << 0;
}

void tst_copyThinning::keepsWithinTheBytes()
{
    QFETCH(QList<qint64>, sizes);
    QFETCH(int, removed);
    const auto first = at(u"2026-11-21 00:00:00"_s);
    std::vector<ListedFile> files;
    std::vector<QString> names;
    for (const qint64 size : sizes) {
        files.push_back({rollingCopyName(cards, first.addSecs(qint64(files.size()) * 3600)), size});
        if (names.size() < std::size_t(removed))
            names.push_back(files.back().name);
    }
    QCOMPARE(copiesToRemove(files, at(u"2026-11-21 10:00:00"_s)), names);
}

void tst_copyThinning::whereRoomIsShortHoursGoBeforeDaysAndDaysBeforeWeeks()
{
    // A large library: five copies fill the room. Saturday, 2026-11-21.
    const auto now = at(u"2026-11-21 20:00:00"_s);
    std::vector<ListedFile> files;
    const auto add = [&](const char *time) {
        files.push_back({rollingCopyName(cards, at(QString::fromLatin1(time))), mostCopyBytes / 5});
    };
    for (const auto *time :
         {"2026-09-30 10:00:00", "2026-10-25 10:00:00", "2026-11-15 10:00:00", "2026-11-19 10:00:00",
          "2026-11-20 21:00:00", "2026-11-21 18:00:00", "2026-11-21 19:00:00", "2026-11-21 20:00:00"})
        add(time);
    const auto removed = [&] { return copiesToRemove(files, now); };
    // Of today only the last is left, then a day of this week goes; September's and October's last stay.
    QCOMPARE(removed(), (std::vector<QString>{files[3].name, files[5].name, files[6].name}));

    const auto gone = removed();
    std::erase_if(files, [&](const ListedFile &file) {
        return std::find(gone.begin(), gone.end(), file.name) != gone.end();
    });
    add("2026-11-21 19:59:59"); // one more of today: it goes at once
    QCOMPARE(removed(), std::vector<QString>{files.back().name});
}

void tst_copyThinning::eachFileHasItsOwnCopies()
{
    const auto old = at(u"2026-11-10 08:00:00"_s);
    const auto later = at(u"2026-11-10 09:00:00"_s);
    const auto now = at(u"2026-11-21 10:00:00"_s);
    const QString tasks = u"study-tasks.json"_s;
    QCOMPARE(copiesToRemove({{rollingCopyName(cards, old), 1}, {rollingCopyName(tasks, later), 1}}, now),
             std::vector<QString>());
    // The bytes are counted together: the oldest of any file goes, but not the newest of one.
    const qint64 half = mostCopyBytes / 2;
    QCOMPARE(copiesToRemove({{rollingCopyName(tasks, old), half},
                             {rollingCopyName(cards, later), half},
                             {rollingCopyName(cards, now), half}},
                            now),
             std::vector<QString>{rollingCopyName(cards, later)});
    // Nor is a copy from the future the newest that stays.
    const auto future = at(u"2026-11-22 10:00:00"_s);
    QCOMPARE(copiesToRemove({{rollingCopyName(cards, now), half}, {rollingCopyName(cards, future), half + 1}},
                            now),
             std::vector<QString>{rollingCopyName(cards, future)});
}

void tst_copyThinning::twoYearsOfDailyUse()
{
    Folder folder;
    QRandomGenerator random(20261121);
    auto now = at(u"2026-11-21 10:00:00"_s);
    std::size_t most = 0;
    for (int day = 0; day < 730; ++day) {
        const auto morning = at(u"2026-11-21 06:00:00"_s).addDays(day);
        now = morning.addSecs(random.bounded(3600));
        const int copies = random.bounded(8) == 0 ? 0 : random.bounded(1, 7); // some days off
        for (int copy = 0; copy < copies; ++copy) {
            folder.add(now);
            folder.thin(now);
            const auto wanted = promised(folder.made, now);
            QVERIFY2(folder.hasAll(wanted), qPrintable(now.toString(Qt::ISODate)));
            most = std::max(most, folder.names.size());
            now = now.addSecs(3600 + random.bounded(7200));
        }
        // What was promised before the last day's copies is not missed after a pause either.
        QVERIFY(folder.hasAll(promised(folder.made, now.addDays(random.bounded(30)))));
    }
    qInfo() << "made" << folder.made.size() << "at most there" << most << "left" << folder.names.size();
    QVERIFY(folder.made.size() > 1500);
    // 24 hours, 14 days, 10 weeks and 24 months, of which the last overlap.
    QVERIFY(most <= 8 + 15 + 11 + 25 + 3);
    QVERIFY(folder.names.size() >= 14 - 5 + 8 + 22);
}

void tst_copyThinning::aClockThatJumps()
{
    for (quint32 seed = 0; seed < 10; ++seed) {
        Folder folder;
        QRandomGenerator random(seed);
        auto now = at(u"2026-11-21 10:00:00"_s);
        for (int step = 0; step < 150; ++step) {
            const int jump = random.bounded(10);
            if (jump == 0)
                now = now.addDays(random.bounded(1, 400));
            else if (jump == 1)
                now = now.addDays(-random.bounded(1, 400));
            else
                now = now.addSecs(3600 + random.bounded(100'000));
            folder.add(now);
            // What was already thinned by another clock cannot come back; of what is there nothing more goes
            // than the rule gives up.
            Folder before;
            for (const auto &name : folder.names)
                before.add(readRollingCopyName(name)->time);
            folder.thin(now);
            QVERIFY(folder.hasAll(promised(before.made, now)));
            QVERIFY(folder.names.contains(rollingCopyName(cards, now)));
            for (const auto &name : before.names)
                QVERIFY(folder.names.contains(name) || readRollingCopyName(name)->time < now);
        }
    }
}

QUORVEL_TEST(tst_copyThinning)
#include "tst_copyThinning.moc"
