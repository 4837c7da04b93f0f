// The card bank: adding, deleting, and which cards the current topic means.
#include "Clock.h"
#include "QuorvelController.h"
#include "commandLog.h"
#include "recordTime.h"
#include "statusTexts.h"

using namespace Qt::StringLiterals;

void QuorvelController::addStudyCard()
{
    qCDebug(logCommand, "addStudyCard");
    const auto prompt = m_newCardPromptText.value().trimmed();
    const auto answer = m_newCardAnswerText.value().trimmed();
    auto topic = m_newCardTopicText.value().trimmed();
    if (topic.isEmpty())
        topic = m_currentStudyTopicText.value().trimmed();
    if (prompt.isEmpty() || answer.isEmpty()) {
        m_quizFeedback = text(u"card_needs_question_answer");
        return;
    }
    StudyCard card;
    card.id = QUuid::createUuid();
    if (!topic.isEmpty())
        card.topic = topic;
    card.prompt = prompt;
    card.expectedAnswer = answer;
    card.createdAt = recordTime(m_ports.clock.now());

    m_studyCards.insertFront(card);
    noteCardsChanged();
    m_newCardTopicText = QString();
    m_newCardPromptText = QString();
    m_newCardAnswerText = QString();
    saveStudyCards();
    if (!activeStudyCard())
        m_activeStudyCard = card;
    m_quizFeedback = text(u"card_added_feedback");
    addEvent(u"Card added."_s);
}

void QuorvelController::deleteStudyCard(const StudyCard &card)
{
    qCDebug(logCommand, "deleteStudyCard");
    const auto id = card.id; // the card may live in the list that shrinks
    m_studyCards.removeAllOf(id);
    noteCardsChanged();
    saveStudyCards();
    if (activeStudyCard() && activeStudyCard()->id == id) {
        m_activeStudyCard = std::nullopt;
        askNextStudyCard(false);
    }
    addEvent(u"Card deleted."_s);
}

std::vector<StudyCard> QuorvelController::cardsMatchingCurrentTopic() const
{
    return m_studyCards.bank().cardsOfTopic(m_currentStudyTopicText);
}

void QuorvelController::noteCardsChanged()
{
    m_studyCardsRevision = m_studyCardsRevision + 1;
}

void QuorvelController::bindCardFields()
{
    // Worked out when the cards or the topic change, not at a heartbeat.
    m_topicCardCount.setBinding([this] {
        (void)m_studyCardsRevision.value();
        return m_studyCards.bank().countOfTopic(m_currentStudyTopicText);
    });
    m_activeTopicDisplay.setBinding([this] {
        const auto topic = m_currentStudyTopicText.value().trimmed();
        return topic.isEmpty() ? text(u"all_topics_value") : topic;
    });
    m_cardProofText.setBinding(
        [this] { return StatusTexts::cardProof(m_requiredProofsToUnlock, m_language); });
    m_studyCardCount.setBinding([this] {
        (void)m_studyCardsRevision.value();
        return qint64(studyCards().size());
    });
    m_cardBankText.setBinding(
        [this] { return StatusTexts::cardBank(m_studyCardCount, m_topicCardCount, m_language); });
}
