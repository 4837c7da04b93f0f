#pragma once

#include "RecordFiles.h"
#include "copyThinning.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>

#include <functional>
#include <optional>
#include <vector>

/// Older states of the record files, in the folder "backups" of the data folder, so that a mistaken delete
/// can be undone by hand. Of each file a copy is made at most once an hour. What goes wrong here is logged
/// and stops nobody. The folder is listed at most once an hour.
class RollingCopies
{
public:
    using Decodes = std::function<bool(const QByteArray &)>;

    explicit RollingCopies(RecordFiles &files);

    enum class Present {
        MayBeReplaced, ///< a copy was made, or none was due, or it could not be made
        IsUnreadable,  ///< the file cannot be read, or `decodes` does not take it: no copy of it was made
    };

    /// To be called before a record file is replaced. Where the newest copy that is not from the future is an
    /// hour old, or there is none, and the file differs from it, its present bytes become a copy. That copy
    /// is read back, and only then older ones are removed whose time is over.
    Present keepBefore(const QString &recordFile, const Decodes &decodes, const QDateTime &now);

private:
    struct Copy
    {
        ListedFile file;
        RollingCopy made;
    };

    bool isDue(const QString &recordFile, const QDateTime &now);
    bool listIfNeeded(const QDateTime &now);
    const Copy *newestCopyOf(const QString &recordFile, const QDateTime &now) const;
    bool isInNewestCopy(const QString &recordFile, const QByteArray &bytes, const QDateTime &now);
    void keep(const QString &recordFile, const QByteArray &bytes, const QDateTime &now);
    bool isWhole(const QString &copy, const QByteArray &bytes);
    void thin(const QDateTime &now);

    RecordFiles &m_files;
    std::vector<Copy> m_copies; ///< what the folder held at `m_listedAt`, and what changed here since
    std::optional<QDateTime> m_listedAt;
    QHash<QString, QDateTime> m_failedAt; ///< by record file: when a copy last could not be made
};
