#pragma once

#include "RecordFiles.h"

#include <map>
#include <set>
#include <vector>

/// A data folder in memory that remembers every step and fails where the test says so.
class FakeRecordFiles : public RecordFiles
{
public:
    std::map<QString, QByteArray> files;
    std::set<QString> unreadable; ///< names whose reading fails
    std::vector<QString> steps;   ///< "write NAME" and "aside NAME ASIDE", in order
    QString writeFailure;         ///< not empty: every write fails with this reason
    QString asideFailure;         ///< not empty: every keepAside() fails with this reason

    Result<std::optional<QByteArray>> read(const QString &name) override
    {
        if (unreadable.contains(name))
            return Failure{QStringLiteral("Permission denied")};
        const auto found = files.find(name);
        if (found == files.end())
            return std::optional<QByteArray>();
        return std::optional(found->second);
    }
    Result<> write(const QString &name, const QByteArray &bytes) override
    {
        if (!writeFailure.isEmpty())
            return Failure{writeFailure};
        files[name] = bytes;
        steps.push_back(QStringLiteral("write ") + name);
        return Done{};
    }
    Result<> keepAside(const QString &name, const QString &asideName) override
    {
        if (!asideFailure.isEmpty())
            return Failure{asideFailure};
        files[asideName] = files[name];
        steps.push_back(QStringLiteral("aside %1 %2").arg(name, asideName));
        return Done{};
    }
};
