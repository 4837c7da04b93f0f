#pragma once

#include "StudyCard.h"

#include <QHash>
#include <QtGlobal>

#include <deque>
#include <optional>
#include <vector>

/// Which topic each card has and how many cards each topic has. Topics are compared in their normalized form,
/// which is worked out once for each spelling; a card costs four bytes. A card without a topic has the empty
/// one. Rows are places in the list of cards, which the owner of both keeps in step.
class TopicIndex
{
public:
    /// Stands for a normalized topic that some card has had.
    using Number = qint32;

    explicit TopicIndex(const std::deque<StudyCard> &cards);

    /// None where no card has had that topic.
    std::optional<Number> numberOf(const QString &normalizedTopic) const;
    qint64 count(Number topic) const { return m_counts[std::size_t(topic)]; }

    /// The topics of the cards, row by row.
    const std::deque<Number> &topics() const { return m_topics; }

    void insertFront(const StudyCard &card);
    void removeRow(int row);

private:
    Number countedTopicOf(const StudyCard &card);

    QHash<QString, Number> m_numberOfSpelling;
    QHash<QString, Number> m_numberOfTopic;
    std::vector<qint64> m_counts; ///< by number
    std::deque<Number> m_topics;  ///< by row
};
