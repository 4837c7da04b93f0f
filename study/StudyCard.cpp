#include "StudyCard.h"

#include "answerMatching.h"
#include "checkedArithmetic.h"
#include "recordTime.h"

QStringList StudyCard::acceptedAnswers() const
{
    return ::acceptedAnswers(expectedAnswer);
}

bool StudyCard::accepts(const QString &answer) const
{
    return acceptsAnswer(expectedAnswer, acceptedAnswers(), answer);
}

StudyCard withJudgedAnswer(StudyCard card, bool correct, const QDateTime &now)
{
    card.lastAskedAt = recordTime(now);
    if (correct) {
        card.correctCount = checkedAdd(card.correctCount, 1, "correct answers");
        card.lastCorrectAt = card.lastAskedAt;
    } else {
        card.wrongCount = checkedAdd(card.wrongCount, 1, "wrong answers");
    }
    return card;
}

bool isAskedBefore(const StudyCard &left, const StudyCard &right)
{
    if (left.wrongCount != right.wrongCount)
        return left.wrongCount > right.wrongCount;
    if (left.correctCount != right.correctCount)
        return left.correctCount < right.correctCount;
    if (left.lastAskedAt.has_value() != right.lastAskedAt.has_value())
        return !left.lastAskedAt;
    return left.lastAskedAt ? *left.lastAskedAt < *right.lastAskedAt : left.createdAt < right.createdAt;
}
