#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QUuid>

#include <optional>

/// A recall card: a question and the answer that is expected from memory.
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
};
