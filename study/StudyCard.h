#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

/// A recall card: a question and the answer that is expected from memory. Times are in UTC and whole seconds,
/// as the file holds them.
struct StudyCard
{
    QUuid id;
    std::optional<QString> topic; ///< none: the card belongs to no topic
    QString prompt;
    QString expectedAnswer; ///< alternatives are separated by "|"
    QDateTime createdAt;
    qint64 correctCount = 0;
    qint64 wrongCount = 0;
    std::optional<QDateTime> lastAskedAt; ///< last time an answer was judged, right or wrong
    std::optional<QDateTime> lastCorrectAt;

    bool operator==(const StudyCard &) const = default;

    /// The normalized alternatives of the expected answer, without empty ones.
    QStringList acceptedAnswers() const;

    /// Whether `answer` matches an alternative, as text or as a number; never an empty one.
    bool accepts(const QString &answer) const;
};

/// The card after an answer was judged at `now`: one more right or wrong answer. Overflow ends the program.
StudyCard withJudgedAnswer(StudyCard card, bool correct, const QDateTime &now);

/// Whether `left` is asked before `right`: more wrong answers, then fewer right ones, then never asked or
/// longer not asked, then, where neither was asked, the older one. Cards that tie are in no order.
bool isAskedBefore(const StudyCard &left, const StudyCard &right);
