#include "UserProgress.h"
#include "checkedArithmetic.h"
#include "dayKey.h"
#include "endOfProgram.h"
#include "jsonCodecs.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

UserProgress afterDays(std::initializer_list<QDate> days)
{
    UserProgress progress;
    for (const auto &day : days)
        progress = withCompletedStudyDay(progress, day);
    return progress;
}

constexpr qint64 largestCount = std::numeric_limits<qint64>::max();

} // namespace

class TestUserProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void levels_data()
    {
        QTest::addColumn<qint64>("totalXP");
        QTest::addColumn<qint64>("level");
        QTest::addColumn<qint64>("within");
        QTest::newRow("start") << qint64{0} << qint64{1} << qint64{0};
        QTest::newRow("end of level 1") << qint64{99} << qint64{1} << qint64{99};
        QTest::newRow("level 2") << qint64{100} << qint64{2} << qint64{0};
        QTest::newRow("level 3") << qint64{205} << qint64{3} << qint64{5};
        QTest::newRow("negative") << qint64{-250} << qint64{1} << qint64{-50};
        QTest::newRow("largestCount") << largestCount << largestCount / 100 + 1 << largestCount % 100;
    }
    void levels()
    {
        QFETCH(qint64, totalXP);
        QTEST(levelFor(totalXP), "level");
        QTEST(xpWithinLevel(totalXP), "within");
    }

    void titlesFollowXP_data()
    {
        QTest::addColumn<qint64>("totalXP");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("russian");
        QTest::addColumn<QString>("symbol");
        const auto row = [](qint64 xp, QStringView english, QStringView russian, QStringView symbol) {
            QTest::addRow("%lld XP", static_cast<long long>(xp))
                << xp << english.toString() << russian.toString() << symbol.toString();
        };
        row(-1, u"Prep Rookie", u"Новичок подготовки", u"figure.walk");
        row(0, u"Prep Rookie", u"Новичок подготовки", u"figure.walk");
        row(199, u"Prep Rookie", u"Новичок подготовки", u"figure.walk");
        row(200, u"Focus Scout", u"Разведчик фокуса", u"bolt.fill");
        row(499, u"Focus Scout", u"Разведчик фокуса", u"bolt.fill");
        row(500, u"Exam Runner", u"Экзамен-раннер", u"flame.fill");
        row(899, u"Exam Runner", u"Экзамен-раннер", u"flame.fill");
        row(900, u"Deep Work Adept", u"Адепт deep work", u"brain.head.profile");
        row(1399, u"Deep Work Adept", u"Адепт deep work", u"brain.head.profile");
        row(1400, u"Knowledge Knight", u"Рыцарь знаний", u"shield.lefthalf.filled");
        row(2399, u"Knowledge Knight", u"Рыцарь знаний", u"shield.lefthalf.filled");
        row(2400, u"Exam Quorvelian", u"Страж экзамена", u"crown.fill");
        row(largestCount, u"Exam Quorvelian", u"Страж экзамена", u"crown.fill");
    }
    void titlesFollowXP()
    {
        QFETCH(qint64, totalXP);
        const auto title = characterTitleFor(totalXP);
        QTEST(title.english, "english");
        QTEST(title.russian, "russian");
        QTEST(title.avatarSymbol, "symbol");
    }

    void awardBelowOneChangesNothing()
    {
        UserProgress progress;
        progress.totalXP = 7;
        QCOMPARE(withAwardedXP(progress, 0), progress);
        QCOMPARE(withAwardedXP(progress, -5), progress);
        QCOMPARE(withAwardedXP(progress, 1).totalXP, 8);
    }

    void streakGrowsDayByDay()
    {
        const auto progress = afterDays({QDate(2026, 3, 9), QDate(2026, 3, 10)});
        QCOMPARE(progress.currentStreak, 2);
        QCOMPARE(progress.longestStreak, 2);
        QCOMPARE(*progress.lastCompletedStudyDay, u"2026-03-10"_s);
    }

    void secondSessionOfADayLeavesTheStreak()
    {
        QCOMPARE(afterDays({QDate(2026, 3, 9), QDate(2026, 3, 10), QDate(2026, 3, 10)}),
                 afterDays({QDate(2026, 3, 9), QDate(2026, 3, 10)}));
    }

    void skippedDayStartsAgainAndKeepsTheLongest()
    {
        const auto progress = afterDays({QDate(2026, 3, 9), QDate(2026, 3, 10), QDate(2026, 3, 12)});
        QCOMPARE(progress.currentStreak, 1);
        QCOMPARE(progress.longestStreak, 2);
    }

    void streakCrossesMonthsYearsAndLeapDays()
    {
        QCOMPARE(afterDays({QDate(2027, 12, 31), QDate(2028, 1, 1)}).currentStreak, 2);
        QCOMPARE(afterDays({QDate(2028, 2, 28), QDate(2028, 2, 29), QDate(2028, 3, 1)}).currentStreak, 3);
        QCOMPARE(afterDays({QDate(2026, 2, 28), QDate(2026, 3, 1)}).currentStreak, 2);
    }

    void lastDayThatDoesNotContinueStartsAgain_data()
    {
        QTest::addColumn<QString>("lastDay");
        QTest::newRow("in the future") << u"2026-03-11"_s;
        QTest::newRow("far in the future") << u"2030-01-01"_s;
        QTest::newRow("not a day") << u"2026-02-30"_s;
        QTest::newRow("other form") << u"9.3.2026"_s;
        QTest::newRow("with time") << u"2026-03-09T10:00"_s;
        QTest::newRow("empty") << QString();
    }
    void lastDayThatDoesNotContinueStartsAgain()
    {
        QFETCH(QString, lastDay);
        UserProgress progress;
        progress.currentStreak = 5;
        progress.longestStreak = 5;
        progress.lastCompletedStudyDay = lastDay;
        progress = withCompletedStudyDay(progress, QDate(2026, 3, 10));
        QCOMPARE(progress.currentStreak, 1);
        QCOMPARE(progress.longestStreak, 5);
        QCOMPARE(*progress.lastCompletedStudyDay, u"2026-03-10"_s);
    }

    void dayKeysAreIsoDaysWithWesternDigits()
    {
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
        QCOMPARE(dayKey(QDate(2025, 3, 7)), u"2025-03-07"_s);
        QLocale::setDefault(QLocale::c());
        QCOMPARE(dayFromKey(u"2025-03-07"_s), std::optional(QDate(2025, 3, 7)));
        QVERIFY(!dayFromKey(u"2025-3-7"_s));
    }

    void progressWithoutLastDayLoads()
    {
        const auto decoded = decodeUserProgress(
            R"({"totalXP":1,"totalFocusSeconds":2,"totalCompletedSessions":3,"totalCardProofs":4,"currentStreak":5,"longestStreak":6,"earnedTitles":["x"]})");
        QVERIFY(decoded.ok());
        QCOMPARE(decoded.value().longestStreak, 6);
        QCOMPARE(decoded.value().earnedTitles, QStringList({u"x"_s}));
        QVERIFY(!decoded.value().lastCompletedStudyDay);
        QCOMPARE(withCompletedStudyDay(decoded.value(), QDate(2026, 3, 10)).currentStreak, 1);
    }

    void progressWithoutARequiredKeyFails_data()
    {
        QTest::addColumn<QByteArray>("key");
        for (const auto *key : {"totalXP", "totalFocusSeconds", "totalCompletedSessions", "totalCardProofs",
                                "currentStreak", "longestStreak", "earnedTitles"})
            QTest::newRow(key) << QByteArray(key);
    }
    void progressWithoutARequiredKeyFails()
    {
        QFETCH(QByteArray, key);
        auto json = encodeUserProgress({});
        QVERIFY(json.contains('"' + key + '"'));
        json.replace('"' + key + '"', "\"other\"");
        const auto decoded = decodeUserProgress(json);
        QVERIFY(!decoded.ok());
        QVERIFY(decoded.reason().contains(QString::fromUtf8(key)));
    }

    void encodedProgressDecodesEqual()
    {
        UserProgress progress;
        progress.totalXP = largestCount;
        progress.totalFocusSeconds = 1;
        progress.earnedTitles = {u"Титул"_s};
        QCOMPARE(
            encodeUserProgress(progress),
            "{\"totalXP\":9223372036854775807,\"totalFocusSeconds\":1,\"totalCompletedSessions\":0,"
            "\"totalCardProofs\":0,\"currentStreak\":0,\"longestStreak\":0,\"earnedTitles\":[\"Титул\"]}"_ba);
        progress.lastCompletedStudyDay = u"2026-03-10"_s;
        QCOMPARE(decodeUserProgress(encodeUserProgress(progress)).value(), progress);
    }

    void overflowEndsTheProgram()
    {
        QVERIFY(
            messageOfAbort([] { (void)checkedAdd(largestCount, 1, "the counter"); }).contains("the counter"));
        QVERIFY(messageOfAbort([] {
                    (void)checkedSeconds(largestCount / 60 + 1, "the minutes");
                }).contains("the minutes"));
        QVERIFY(messageOfAbort([] { (void)checkedAdd(largestCount - 1, 1, "the counter"); }).isNull());
        QVERIFY(messageOfAbort([] { (void)checkedSeconds(largestCount / 60, "the minutes"); }).isNull());
        UserProgress progress;
        progress.totalXP = largestCount;
        QVERIFY(messageOfAbort([&] { (void)withAwardedXP(progress, 1); }).contains("total XP"));
    }
};

QUORVEL_TEST(TestUserProgress)
#include "tst_UserProgress.moc"
