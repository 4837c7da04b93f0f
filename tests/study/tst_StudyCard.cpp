#include "StudyCard.h"
#include "endOfProgram.h"
#include "recordTime.h"
#include "secondsLater.h"
#include "suite.h"

#include <QRandomGenerator>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

StudyCard cardWith(qint64 wrong, qint64 correct, std::optional<int> asked, int created)
{
    StudyCard card;
    card.wrongCount = wrong;
    card.correctCount = correct;
    if (asked)
        card.lastAskedAt = second(*asked);
    card.createdAt = second(created);
    return card;
}

/// Of few values, so that many cards tie.
StudyCard randomCard(QRandomGenerator &random)
{
    const auto asked = random.bounded(2) ? std::optional(random.bounded(3)) : std::nullopt;
    return cardWith(random.bounded(2), random.bounded(2), asked, random.bounded(3));
}

bool tie(const StudyCard &left, const StudyCard &right)
{
    return !isAskedBefore(left, right) && !isAskedBefore(right, left);
}

} // namespace

class TestStudyCard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theOrderOfTheQuiz_data()
    {
        QTest::addColumn<StudyCard>("first");
        QTest::addColumn<StudyCard>("second");
        QTest::newRow("more wrong answers") << cardWith(2, 9, 9, 9) << cardWith(1, 0, {}, 0);
        QTest::newRow("fewer right answers") << cardWith(1, 0, 9, 9) << cardWith(1, 1, {}, 0);
        QTest::newRow("never asked") << cardWith(1, 1, {}, 9) << cardWith(1, 1, 0, 0);
        QTest::newRow("longer not asked") << cardWith(1, 1, 1, 9) << cardWith(1, 1, 2, 0);
        QTest::newRow("older, where neither was asked") << cardWith(1, 1, {}, 1) << cardWith(1, 1, {}, 2);
    }
    void theOrderOfTheQuiz()
    {
        QFETCH(StudyCard, first);
        QFETCH(StudyCard, second);
        QVERIFY(isAskedBefore(first, second));
        QVERIFY(!isAskedBefore(second, first));
    }

    void cardsAskedInTheSameSecondTieWhateverTheirAge()
    {
        QVERIFY(tie(cardWith(0, 0, 1, 5), cardWith(0, 0, 1, 6)));
        QVERIFY(tie(cardWith(0, 0, {}, 5), cardWith(0, 0, {}, 5)));
    }

    void theOrderIsAStrictWeakOne()
    {
        QRandomGenerator random(7);
        for (int count = 0; count < 5'000; ++count) {
            const auto a = randomCard(random);
            const auto b = randomCard(random);
            const auto c = randomCard(random);
            QVERIFY(!isAskedBefore(a, a));
            QVERIFY(!isAskedBefore(a, b) || !isAskedBefore(b, a));
            QVERIFY(!isAskedBefore(a, b) || !isAskedBefore(b, c) || isAskedBefore(a, c));
            QVERIFY(!tie(a, b) || !tie(b, c) || tie(a, c));
        }
    }

    void aRightAnswerIsCounted()
    {
        const auto before = cardWith(3, 4, 1, 0);
        const auto after = withJudgedAnswer(before, true, second(10));
        auto wanted = before;
        wanted.correctCount = 5;
        wanted.lastAskedAt = second(10);
        wanted.lastCorrectAt = second(10);
        QCOMPARE(after, wanted);
    }

    void aWrongAnswerLeavesTheTimeOfTheLastRightOne()
    {
        auto before = cardWith(3, 4, 1, 0);
        before.lastCorrectAt = second(1);
        auto wanted = before;
        wanted.wrongCount = 4;
        wanted.lastAskedAt = second(10);
        QCOMPARE(withJudgedAnswer(before, false, second(10)), wanted);
    }

    void timesAreKeptAsTheFileHoldsThem()
    {
        const auto now = second(10).addMSecs(999).toOffsetFromUtc(7 * 3600);
        const auto asked = *withJudgedAnswer({}, true, now).lastAskedAt;
        QCOMPARE(asked, second(10));
        QCOMPARE(asked.timeSpec(), Qt::UTC);
    }

    void overflowEndsTheProgram()
    {
        constexpr auto largest = std::numeric_limits<qint64>::max();
        const auto full = cardWith(largest, largest, {}, 0);
        QVERIFY(messageOfAbort([&] {
                    (void)withJudgedAnswer(full, true, second(0));
                }).contains("correct answers"));
        QVERIFY(messageOfAbort([&] {
                    (void)withJudgedAnswer(full, false, second(0));
                }).contains("wrong answers"));
    }
};

QUORVEL_TEST(TestStudyCard)
#include "tst_StudyCard.moc"
