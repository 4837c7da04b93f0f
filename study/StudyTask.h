#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>

#include <optional>

/// One step of the study plan.
struct StudyTask
{
    QUuid id;
    QString title;
    QDateTime createdAt;
    std::optional<QDateTime> completedAt;    ///< none: the task is open
    std::optional<QUuid> completedSessionID; ///< kept as it was loaded, until the task is ticked or reopened
    std::optional<QUuid> sourceCardID;       ///< card that came together with this task

    bool operator==(const StudyTask &) const = default;
};
