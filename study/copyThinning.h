#pragma once

#include "RecordFiles.h"

#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

/// An older state of a record file, by its name in the folder of copies.
struct RollingCopy
{
    QString of;     ///< the record file, such as "study-cards.json"
    QDateTime time; ///< when it was made, by the name; in UTC

    bool operator==(const RollingCopy &) const = default;
};

/// The bytes that all copies together may have.
inline constexpr qint64 mostCopyBytes = 200'000'000;

/// The name of a copy that is made at `time`: "study-cards-20261121T101500Z.json".
QString rollingCopyName(const QString &recordFile, const QDateTime &time);

/// What the name of a file says; none where it is not the name of a copy of a record file.
std::optional<RollingCopy> readRollingCopyName(const QString &name);

/// The names of the copies that have had their time at `now`, oldest first; never a file with another name.
///
/// Of each record file stays: every copy of the last 24 hours, the last of each day for 14 days, of each ISO
/// week for 8 weeks more, and of each month, in UTC. Ages are measured to the second; a copy from the future
/// has none and stays. Where what stays has more than mostCopyBytes, more copies go: first those that are not
/// the last of their day, then of their week, then of their month, then the rest, each time the oldest first,
/// but never the newest of a record file that is not from the future.
std::vector<QString> copiesToRemove(const std::vector<ListedFile> &files, const QDateTime &now);
