#include "CardBank.h"

#include "answerMatching.h"
#include "normalizeStudyAnswer.h"

#include <algorithm>

CardBank::CardBank(std::deque<StudyCard> cards)
    : m_cards(std::move(cards))
{}

std::optional<int> CardBank::rowOf(const QUuid &id) const
{
    const auto found =
        std::find_if(m_cards.begin(), m_cards.end(), [&](const auto &card) { return card.id == id; });
    return found == m_cards.end() ? std::nullopt : std::optional(int(found - m_cards.begin()));
}

bool CardBank::accepts(int row, const QString &answer) const
{
    Q_ASSERT(isRow(row));
    const auto &expected = m_cards[std::size_t(row)].expectedAnswer;
    auto known = m_acceptedAnswers.constFind(expected);
    if (known == m_acceptedAnswers.cend())
        known = m_acceptedAnswers.insert(expected, acceptedAnswers(expected));
    return acceptsAnswer(expected, *known, answer);
}

bool CardBank::isOfTopic(const StudyCard &card, const QString &topic)
{
    const auto wanted = normalizeStudyAnswer(topic);
    return wanted.isEmpty() || normalizeStudyAnswer(card.topic.value_or(QString())) == wanted;
}

qint64 CardBank::countOfTopic(const QString &topic) const
{
    const auto wanted = normalizeStudyAnswer(topic);
    if (wanted.isEmpty())
        return qint64(m_cards.size());
    const auto number = topics().numberOf(wanted);
    return number ? topics().count(*number) : 0;
}

std::vector<StudyCard> CardBank::cardsOfTopic(const QString &topic) const
{
    std::vector<StudyCard> cards;
    visitTopic(topic, [&](const StudyCard &card, int) { cards.push_back(card); });
    return cards;
}

std::optional<int> CardBank::weakestRow(const QString &topic, const QSet<QUuid> &counted) const
{
    const StudyCard *weakest = nullptr;
    const StudyCard *weakestCounted = nullptr;
    int row = 0;
    int rowOfCounted = 0;
    visitTopic(topic, [&](const StudyCard &card, int place) {
        if (weakest && !isAskedBefore(card, *weakest))
            return;
        if (!counted.contains(card.id)) {
            weakest = &card;
            row = place;
        } else if (!weakest && (!weakestCounted || isAskedBefore(card, *weakestCounted))) {
            weakestCounted = &card;
            rowOfCounted = place;
        }
    });
    if (weakest)
        return row;
    return weakestCounted ? std::optional(rowOfCounted) : std::nullopt;
}

void CardBank::insertFront(StudyCard card)
{
    if (m_topics)
        m_topics->insertFront(card);
    m_cards.push_front(std::move(card));
}

void CardBank::removeRow(int row)
{
    Q_ASSERT(isRow(row));
    const auto place = m_cards.begin() + row;
    if (m_topics)
        m_topics->removeRow(row);
    m_acceptedAnswers.remove(place->expectedAnswer); // another card that has the same one derives it again
    m_cards.erase(place);
}

void CardBank::judge(int row, bool correct, const QDateTime &now)
{
    Q_ASSERT(isRow(row));
    auto &card = m_cards[std::size_t(row)];
    card = withJudgedAnswer(std::move(card), correct, now);
}

const TopicIndex &CardBank::topics() const
{
    if (!m_topics)
        m_topics.emplace(m_cards);
    return *m_topics;
}

template <typename Visit>
void CardBank::visitTopic(const QString &topic, Visit visit) const
{
    const auto wanted = normalizeStudyAnswer(topic);
    int row = 0;
    if (wanted.isEmpty()) {
        for (const auto &card : m_cards)
            visit(card, row++);
        return;
    }
    const auto number = topics().numberOf(wanted);
    if (!number || topics().count(*number) == 0)
        return;
    auto topicOfCard = topics().topics().begin();
    for (const auto &card : m_cards) {
        if (*topicOfCard++ == *number)
            visit(card, row);
        ++row;
    }
}
