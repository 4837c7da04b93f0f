// The coach: what it is asked, and what becomes of its suggestion.
#include "AIStudySuggestion.h"
#include "BackendClient.h"
#include "Clock.h"
#include "QuorvelController.h"
#include "commandLog.h"
#include "recordTime.h"

using namespace Qt::StringLiterals;

namespace {

/// The tasks of the titles that have a text.
std::vector<StudyTask> tasksOf(const AIStudySuggestion &suggestion, const QDateTime &createdAt)
{
    std::vector<StudyTask> tasks;
    for (const auto &suggested : suggestion.tasks) {
        StudyTask task;
        task.title = suggested.trimmed();
        if (task.title.isEmpty())
            continue;
        task.id = QUuid::createUuid();
        task.createdAt = createdAt;
        tasks.push_back(std::move(task));
    }
    return tasks;
}

/// The cards that have a question and an answer; one without a topic gets `currentTopic`, where there is one.
std::vector<StudyCard> cardsOf(const AIStudySuggestion &suggestion, const QString &currentTopic,
                               const QDateTime &createdAt)
{
    std::vector<StudyCard> cards;
    for (const auto &suggested : suggestion.cards) {
        StudyCard card;
        card.prompt = suggested.prompt.trimmed();
        card.expectedAnswer = suggested.answer.trimmed();
        if (card.prompt.isEmpty() || card.expectedAnswer.isEmpty())
            continue;
        card.id = QUuid::createUuid();
        const auto ownTopic = suggested.topic.trimmed();
        const auto topic = ownTopic.isEmpty() ? currentTopic : ownTopic;
        if (!topic.isEmpty())
            card.topic = topic;
        card.createdAt = createdAt;
        cards.push_back(std::move(card));
    }
    return cards;
}

QString counted(qsizetype count, const QString &one)
{
    return QString::number(count) + u' ' + one + (count == 1 ? u""_s : u"s"_s);
}

} // namespace

QString QuorvelController::coachTopic() const
{
    return m_aiPromptText.value().trimmed().isEmpty() ? m_currentStudyTopicText.value()
                                                      : m_aiPromptText.value();
}

void QuorvelController::generateAIPlanAndCards()
{
    qCDebug(logCommand, "generateAIPlanAndCards");
    if (m_isAICoachRunning)
        return;
    m_isAICoachRunning = true;
    m_aiOutputText = text(u"ai_thinking");
    const auto topic = coachTopic();
    if (m_accessMode != AccessMode::Account) {
        QMetaObject::invokeMethod(
            this, [this, topic] { addLocalPackOfGuest(topic); }, Qt::QueuedConnection);
        return;
    }
    const QJsonObject body{{u"topic"_s, topic},
                           {u"language"_s, rawValue(m_language)},
                           {u"progress"_s, m_progressSummaryText.value()}};
    m_ports.backend.postJSON(u"/ai/suggestions"_s, body, whileHere([this, topic](const auto &answer) {
                                 applyCoachAnswer(topic, answer);
                                 m_isAICoachRunning = false;
                             }));
}

void QuorvelController::addLocalPackOfGuest(const QString &topic)
{
    applyAISuggestion(AIStudySuggestion::fallback(topic, m_language), text(u"local_coach_source"));
    m_isAICoachRunning = false;
}

void QuorvelController::applyCoachAnswer(const QString &topic, const BackendAnswer &answer)
{
    const auto *error = std::get_if<BackendError>(&answer);
    const auto suggestion = error ? std::nullopt : suggestionFrom(std::get<QJsonObject>(answer));
    if (suggestion) {
        applyAISuggestion(*suggestion, text(u"ai_source"));
        return;
    }
    const auto reason = error ? error->description : u"The server's suggestion has an unexpected form."_s;
    applyAISuggestion(AIStudySuggestion::fallback(topic, m_language), text(u"local_coach_fallback_source"));
    m_aiOutputText = m_aiOutputText.value() + u"\n\n"_s + text(u"api_note") + u": "_s + reason;
}

void QuorvelController::addLocalCoachPack()
{
    qCDebug(logCommand, "addLocalCoachPack");
    applyAISuggestion(AIStudySuggestion::fallback(coachTopic(), m_language), text(u"local_coach_source"));
}

void QuorvelController::applyAISuggestion(const AIStudySuggestion &suggestion, const QString &source)
{
    const auto now = recordTime(m_ports.clock.now());
    m_studyTasks.insertAllFront(tasksOf(suggestion, now));
    noteTasksChanged();
    m_studyCards.insertAllFront(cardsOf(suggestion, m_currentStudyTopicText.value().trimmed(), now));
    noteCardsChanged();
    saveStudyTasks();
    saveStudyCards();
    askNextStudyCard(false);
    m_aiOutputText = aiSummaryText(source, suggestion);
    addEvent(source + u" added "_s + QString::number(suggestion.tasks.size()) + u" tasks and "_s +
             QString::number(suggestion.cards.size()) + u" cards."_s);
}

QString QuorvelController::aiSummaryText(const QString &source, const AIStudySuggestion &suggestion) const
{
    const auto tasks = suggestion.tasks.size();
    const auto cards = qsizetype(suggestion.cards.size());
    return source + u": "_s + suggestion.message + u"\n\n"_s +
           inBoth(u"Added "_s + counted(tasks, u"task"_s) + u" and "_s + counted(cards, u"card"_s) + u"."_s,
                  u"Добавлено задач: "_s + QString::number(tasks) + u". Добавлено карточек: "_s +
                      QString::number(cards) + u"."_s);
}
