// The quiz: which card is asked, how an answer is judged, and which answers count toward the break.
#include "Clock.h"
#include "QuorvelController.h"
#include "checkedArithmetic.h"
#include "commandLog.h"
#include "recordTime.h"

using namespace Qt::StringLiterals;

namespace {

/// XP for a card that counts.
constexpr qint64 proofXP = 10;

} // namespace

void QuorvelController::selectNextStudyCard(bool log)
{
    qCDebug(logCommand, "selectNextStudyCard(%s)", log ? "true" : "false");
    askNextStudyCard(log);
}

void QuorvelController::askNextStudyCard(bool log)
{
    const auto row = m_studyCards.bank().weakestRow(m_currentStudyTopicText, m_currentSessionProofCardIDs);
    if (!row) {
        m_activeStudyCard = std::nullopt;
        m_quizRevealedAnswer = std::nullopt;
        m_quizFeedback =
            m_currentStudyTopicText.value().trimmed().isEmpty()
                ? text(u"quiz_initial")
                : inBoth(u"No cards match the current study topic."_s, u"Нет карточек по текущей теме."_s);
        return;
    }
    m_activeStudyCard = studyCards()[size_t(*row)];
    m_quizAnswerText = QString();
    m_quizRevealedAnswer = std::nullopt;
    if (log)
        m_quizFeedback = inBoth(u"Next card selected."_s, u"Следующая карточка выбрана."_s);
}

void QuorvelController::submitQuizAnswer()
{
    qCDebug(logCommand, "submitQuizAnswer");
    if (!activeStudyCard()) {
        m_quizFeedback = text(u"add_card_first");
        return;
    }
    const auto answer = m_quizAnswerText.value().trimmed();
    if (answer.isEmpty()) {
        m_quizFeedback = text(u"type_answer_first");
        return;
    }
    const auto row = m_studyCards.bank().rowOf(activeStudyCard()->id);
    if (!row) {
        m_activeStudyCard = std::nullopt;
        askNextStudyCard(false);
        return;
    }
    judgeActiveCard(*row, answer);
}

void QuorvelController::judgeActiveCard(int row, const QString &answer)
{
    const bool correct = m_studyCards.bank().accepts(row, answer);
    m_studyCards.judge(row, correct, recordTime(m_ports.clock.now()));
    noteCardsChanged();
    const auto card = studyCards()[size_t(row)];
    m_activeStudyCard = card;
    saveStudyCards();
    if (!correct) {
        m_quizRevealedAnswer = card.expectedAnswer;
        m_quizFeedback = text(u"incorrect_answer_feedback");
        addEvent(u"Quiz answer was incorrect."_s);
        return;
    }
    m_quizAnswerText = QString();
    m_quizRevealedAnswer = std::nullopt;
    addQuizProof(card);
    askNextStudyCard(false);
}

void QuorvelController::revealQuizAnswer()
{
    qCDebug(logCommand, "revealQuizAnswer");
    if (!activeStudyCard()) {
        m_quizFeedback = text(u"no_card_selected");
        return;
    }
    m_quizRevealedAnswer = activeStudyCard()->expectedAnswer;
    m_quizFeedback = text(u"answer_revealed_feedback");
}

void QuorvelController::addQuizProof(const StudyCard &card)
{
    if (m_mode != Mode::Studying || !m_currentSessionID) {
        m_quizFeedback = inBoth(u"Correct. Start a study session to count cards toward a break."_s,
                                u"Верно. Начни учебную сессию, чтобы карточки засчитывались для отдыха."_s);
        addEvent(u"Card answered correctly outside study session."_s);
    } else if (config().requiredProofsToUnlock == 0) {
        m_quizFeedback = inBoth(u"Correct. Proofs are disabled, so the timer alone controls the break."_s,
                                u"Верно. Пруфы выключены, отдых контролирует только таймер."_s);
        addEvent(u"Card answered correctly."_s);
    } else if (!CardBank::isOfTopic(card, m_currentStudyTopicText)) {
        m_quizFeedback = inBoth(u"Correct, but this card is not in the current study topic."_s,
                                u"Верно, но карточка не относится к текущей теме."_s);
        addEvent(u"Card answered correctly outside current topic."_s);
    } else if (m_currentSessionProofCardIDs.contains(card.id)) {
        m_quizFeedback = inBoth(u"Correct, but this card already counted in the current session."_s,
                                u"Верно, но эта карточка уже засчитана в текущей сессии."_s);
        addEvent(u"Card answered correctly again."_s);
    } else {
        countQuizProof(card);
    }
}

void QuorvelController::countQuizProof(const StudyCard &card)
{
    m_currentSessionProofCardIDs.insert(card.id);
    m_currentSessionCardProofCount = m_currentSessionProofCardIDs.size();
    auto progress = userProgress();
    progress.totalCardProofs = checkedAdd(progress.totalCardProofs, 1, "total card proofs");
    m_userProgress = progress;
    awardXP(proofXP, u"Card proof completed."_s);
    saveUserProgress();
    m_quizFeedback =
        inBoth(u"Correct. Card proof: "_s, u"Верно. Пруф карточками: "_s) + m_proofProgressText + u"."_s;
    addEvent(u"Card proof completed: "_s + card.prompt);
    tryUnlockBreakIfReady();
}
