#include "TopicIndex.h"

#include "normalizeStudyAnswer.h"

TopicIndex::TopicIndex(const std::deque<StudyCard> &cards)
{
    for (const auto &card : cards)
        m_topics.push_back(countedTopicOf(card));
}

std::optional<TopicIndex::Number> TopicIndex::numberOf(const QString &normalizedTopic) const
{
    const auto found = m_numberOfTopic.constFind(normalizedTopic);
    return found == m_numberOfTopic.cend() ? std::nullopt : std::optional(*found);
}

void TopicIndex::insertFront(const StudyCard &card)
{
    m_topics.push_front(countedTopicOf(card));
}

void TopicIndex::removeRow(int row)
{
    const auto place = m_topics.begin() + row;
    --m_counts[std::size_t(*place)];
    m_topics.erase(place);
}

TopicIndex::Number TopicIndex::countedTopicOf(const StudyCard &card)
{
    const auto spelling = card.topic.value_or(QString());
    auto known = m_numberOfSpelling.constFind(spelling);
    if (known == m_numberOfSpelling.cend()) {
        const auto topic = normalizeStudyAnswer(spelling);
        auto numbered = m_numberOfTopic.constFind(topic);
        if (numbered == m_numberOfTopic.cend()) {
            numbered = m_numberOfTopic.insert(topic, Number(m_counts.size()));
            m_counts.push_back(0);
        }
        known = m_numberOfSpelling.insert(spelling, *numbered);
    }
    ++m_counts[std::size_t(*known)];
    return *known;
}
