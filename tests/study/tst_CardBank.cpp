#include "CardBank.h"
#include "normalizeStudyAnswer.h"
#include "secondsLater.h"
#include "suite.h"

#include <QRandomGenerator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

StudyCard cardOf(const std::optional<QString> &topic, const QString &expectedAnswer = u"a"_s)
{
    StudyCard card;
    card.id = QUuid::createUuid();
    card.topic = topic;
    card.expectedAnswer = expectedAnswer;
    card.createdAt = second(0);
    return card;
}

/// What a bank promises, worked out from scratch each time.
struct PlainCards
{
    std::vector<StudyCard> cards;

    std::vector<int> rowsOf(const QString &topic) const
    {
        const auto wanted = normalizeStudyAnswer(topic);
        std::vector<int> rows;
        for (int row = 0; row < int(cards.size()); ++row) {
            const auto own = normalizeStudyAnswer(cards[std::size_t(row)].topic.value_or(QString()));
            if (wanted.isEmpty() || own == wanted)
                rows.push_back(row);
        }
        return rows;
    }

    std::optional<int> weakestRow(const QString &topic, const QSet<QUuid> &counted) const
    {
        const auto all = rowsOf(topic);
        auto rows = all;
        std::erase_if(rows, [&](int row) { return counted.contains(cards[std::size_t(row)].id); });
        if (rows.empty())
            rows = all;
        std::stable_sort(rows.begin(), rows.end(), [&](int left, int right) {
            return isAskedBefore(cards[std::size_t(left)], cards[std::size_t(right)]);
        });
        return rows.empty() ? std::nullopt : std::optional(rows.front());
    }
};

/// A bank and plain cards to which the same happens.
class Pair
{
public:
    explicit Pair(quint32 seed)
        : m_random(seed)
    {
        for (auto &id : m_ids)
            id = QUuid::createUuid();
        for (int count = m_random.bounded(12); count > 0; --count)
            m_plain.cards.push_back(randomCard());
        m_bank = CardBank(std::deque(m_plain.cards.begin(), m_plain.cards.end()));
    }

    void change()
    {
        const auto kind = m_random.bounded(4);
        if (kind == 0 || m_plain.cards.empty()) {
            const auto card = randomCard();
            m_bank.insertFront(card);
            m_plain.cards.insert(m_plain.cards.begin(), card);
            return;
        }
        const auto row = m_random.bounded(int(m_plain.cards.size()));
        auto &card = m_plain.cards[std::size_t(row)];
        if (kind == 1) {
            m_bank.removeRow(row);
            m_plain.cards.erase(m_plain.cards.begin() + row);
            return;
        }
        const auto now = second(m_random.bounded(4));
        m_bank.judge(row, kind == 2, now);
        card = withJudgedAnswer(card, kind == 2, now);
    }

    /// Asks for a few things only, so that what is kept is made at any time or never.
    void compare()
    {
        const auto topic = randomTopic().value_or(QString());
        QSet<QUuid> counted;
        for (const auto &id : m_ids) {
            if (m_random.bounded(2))
                counted.insert(id);
        }
        QVERIFY(std::equal(m_bank.cards().begin(), m_bank.cards().end(), m_plain.cards.begin(),
                           m_plain.cards.end()));
        switch (m_random.bounded(5)) {
        case 0:
            QCOMPARE(m_bank.countOfTopic(topic), qint64(m_plain.rowsOf(topic).size()));
            break;
        case 1:
            compareCards(topic);
            break;
        case 2:
            QCOMPARE(m_bank.weakestRow(topic, counted), m_plain.weakestRow(topic, counted));
            break;
        case 3:
            compareRows();
            break;
        default:
            compareAnswers();
        }
    }

private:
    std::optional<QString> randomTopic()
    {
        const QStringList topics{u""_s,        u"Math"_s,   u"  math  "_s, u"MATH."_s, u" . "_s,
                                 u"Физика!"_s, u"физика"_s, u"History"_s,  u"none"_s};
        const auto which = m_random.bounded(int(topics.size()) + 1);
        return which == int(topics.size()) ? std::nullopt : std::optional(topics[which]);
    }

    StudyCard randomCard()
    {
        const QStringList answers{u"a|b"_s, u"3.5"_s, u"|"_s, u"Ёж."_s};
        auto card = cardOf(randomTopic(), answers[m_random.bounded(int(answers.size()))]);
        card.id = m_ids[std::size_t(m_random.bounded(int(m_ids.size())))]; // so some are there twice
        card.wrongCount = m_random.bounded(2);
        card.correctCount = m_random.bounded(2);
        card.createdAt = second(m_random.bounded(3));
        if (m_random.bounded(2))
            card.lastAskedAt = second(m_random.bounded(3));
        return card;
    }

    void compareCards(const QString &topic)
    {
        std::vector<StudyCard> wanted;
        for (const auto row : m_plain.rowsOf(topic))
            wanted.push_back(m_plain.cards[std::size_t(row)]);
        QVERIFY(m_bank.cardsOfTopic(topic) == wanted);
    }

    void compareRows()
    {
        for (const auto &id : m_ids) {
            const auto found = std::find_if(m_plain.cards.begin(), m_plain.cards.end(),
                                            [&](const auto &card) { return card.id == id; });
            const auto row = found == m_plain.cards.end() ? std::nullopt
                                                          : std::optional(int(found - m_plain.cards.begin()));
            QCOMPARE(m_bank.rowOf(id), row);
        }
    }

    void compareAnswers()
    {
        for (int row = 0; row < int(m_plain.cards.size()); ++row) {
            for (const auto &answer : {u"B!"_s, u"3,5"_s, u"еж"_s, u""_s})
                QCOMPARE(m_bank.accepts(row, answer), m_plain.cards[std::size_t(row)].accepts(answer));
        }
    }

    QRandomGenerator m_random;
    std::array<QUuid, 12> m_ids;
    PlainCards m_plain;
    CardBank m_bank;
};

} // namespace

class TestCardBank : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithPlainCardsWhateverHappens()
    {
        for (quint32 seed = 0; seed < 60; ++seed) {
            Pair pair(seed);
            for (int step = 0; step < 60; ++step) {
                pair.compare();
                pair.change();
                if (QTest::currentTestFailed())
                    QFAIL(qPrintable(u"with seed %1 at step %2"_s.arg(seed).arg(step)));
            }
        }
    }

    void topicsMatchInNormalizedForm()
    {
        const CardBank bank({cardOf(u"math"_s), cardOf(u"MATH."_s), cardOf(u"maths"_s), cardOf({})});
        QCOMPARE(bank.countOfTopic(u"  Math  "_s), 2);
        QVERIFY(bank.cardsOfTopic(u"  Math  "_s) ==
                std::vector<StudyCard>(bank.cards().begin(), bank.cards().begin() + 2));
    }

    void anEmptyTopicStandsForAllCards()
    {
        const CardBank bank({cardOf(u"Math"_s), cardOf({}), cardOf(u"."_s)});
        for (const auto &topic : {u""_s, u" \t "_s, u". "_s, u"!?"_s}) {
            QCOMPARE(bank.countOfTopic(topic), 3);
            QCOMPARE(bank.cardsOfTopic(topic).size(), std::size_t(3));
            QCOMPARE(bank.weakestRow(topic, {}), std::optional(0));
        }
    }

    void aTopicWithoutCardsHasNone()
    {
        CardBank bank({cardOf(u"Math"_s)});
        QCOMPARE(bank.countOfTopic(u"History"_s), 0);
        QCOMPARE(bank.weakestRow(u"History"_s, {}), std::nullopt);
        bank.removeRow(0);
        QCOMPARE(bank.countOfTopic(u"Math"_s), 0);
        QCOMPARE(bank.weakestRow(u"Math"_s, {}), std::nullopt);
        QCOMPARE(bank.weakestRow(u""_s, {}), std::nullopt);
        QVERIFY(bank.cardsOfTopic(u"Math"_s).empty());
    }

    void aStrongCardThatHasNotCountedComesBeforeWeakOnesThatHave()
    {
        auto weak = cardOf({});
        weak.wrongCount = 9;
        auto weaker = cardOf({});
        weaker.wrongCount = 10;
        auto strong = cardOf({});
        strong.correctCount = 99;
        const CardBank bank({weak, weaker, strong});
        QCOMPARE(bank.weakestRow(u""_s, {weak.id, weaker.id}), std::optional(2));
        QCOMPARE(bank.weakestRow(u""_s, {weaker.id}), std::optional(0));
        QCOMPARE(bank.weakestRow(u""_s, {weak.id, weaker.id, strong.id}), std::optional(1));
    }

    void cardsThatTieAreAskedInListOrder()
    {
        const CardBank bank({cardOf(u"x"_s), cardOf({}), cardOf({})});
        QCOMPARE(bank.weakestRow(u""_s, {}), std::optional(0));
        QCOMPARE(bank.weakestRow(u""_s, {bank.cards()[0].id}), std::optional(1));
    }

    void ofCardsWithTheSameIdTheFirstIsFound()
    {
        const auto first = cardOf(u"a"_s);
        auto second = cardOf(u"b"_s);
        second.id = first.id;
        CardBank bank({cardOf({}), first, second});
        QCOMPARE(bank.rowOf(first.id), std::optional(1));
        bank.removeRow(1);
        QCOMPARE(bank.rowOf(first.id), std::optional(1));
        bank.removeRow(1);
        QCOMPARE(bank.rowOf(first.id), std::nullopt);
    }

    void answersAreJudgedByTheCardThatIsInTheRowNow()
    {
        CardBank bank({cardOf({}, u"one"_s), cardOf({}, u"two"_s)});
        QVERIFY(bank.accepts(0, u"One!"_s));
        QVERIFY(!bank.accepts(1, u"One!"_s));
        bank.removeRow(0);
        QVERIFY(!bank.accepts(0, u"one"_s));
        QVERIFY(bank.accepts(0, u"TWO"_s));
        bank.insertFront(cardOf({}, u"three"_s));
        QVERIFY(bank.accepts(0, u"three"_s));
        QVERIFY(bank.accepts(1, u"two"_s));
    }
};

QUORVEL_TEST(TestCardBank)
#include "tst_CardBank.moc"
