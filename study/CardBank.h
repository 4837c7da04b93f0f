#pragma once

#include "StudyCard.h"
#include "TopicIndex.h"

#include <QHash>
#include <QSet>

#include <deque>
#include <optional>
#include <vector>

/// All cards, newest first, and what is derived from them: a card's normalized topic and accepted answers are
/// worked out once, when they are first needed, and the cards of each topic are counted as they come and go.
/// Rows are places in cards(), and must be there. Topics are given as they were typed; an empty one, also
/// after normalization, stands for all cards. Built for 100,000 cards: nothing here sorts or copies the bank.
class CardBank
{
public:
    CardBank() = default;
    /// `cards` in list order. Several may have the same id: the first is the one that is found.
    explicit CardBank(std::deque<StudyCard> cards);

    const std::deque<StudyCard> &cards() const { return m_cards; }

    /// The row of the first card with that id.
    std::optional<int> rowOf(const QUuid &id) const;

    /// Whether the card of a row accepts an answer.
    bool accepts(int row, const QString &answer) const;

    /// Whether a card is of a topic.
    static bool isOfTopic(const StudyCard &card, const QString &topic);

    /// The number of cards of a topic. Costs no look at the cards when the topics are known already.
    qint64 countOfTopic(const QString &topic) const;

    /// The cards of a topic, in list order.
    std::vector<StudyCard> cardsOfTopic(const QString &topic) const;

    /// The row of the card to ask: of the topic's cards that are not in `counted`, or of all of them where
    /// that leaves none, the first by isAskedBefore(); of equals the first in the list. None where the topic
    /// has no cards. One pass.
    std::optional<int> weakestRow(const QString &topic, const QSet<QUuid> &counted) const;

    void insertFront(StudyCard card);
    void removeRow(int row);

    /// Counts a judged answer on the card of a row.
    void judge(int row, bool correct, const QDateTime &now);

private:
    bool isRow(int row) const { return row >= 0 && std::size_t(row) < m_cards.size(); }
    const TopicIndex &topics() const;
    template <typename Visit>
    void visitTopic(const QString &topic, Visit visit) const;

    std::deque<StudyCard> m_cards;
    mutable std::optional<TopicIndex> m_topics; ///< none until a topic is asked for
    /// By expected answer, of the cards that were asked.
    mutable QHash<QString, QStringList> m_acceptedAnswers;
};
