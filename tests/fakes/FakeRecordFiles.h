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
    std::vector<QString> steps;   ///< "write NAME", "aside NAME ASIDE" and "remove NAME", in order
    QString writeFailure;         ///< not empty: every write fails with this reason
    QString asideFailure;         ///< not empty: every keepAside() fails with this reason
    QString listFailure;          ///< not empty: every list() fails with this reason
    QString removeFailure;        ///< not empty: every remove() fails with this reason
    int listings = 0;             ///< calls of list()

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
        if (!files.contains(name))
            return Failure{QStringLiteral("No such file or directory")};
        QString kept = asideName;
        for (int number = 2; files.contains(kept); ++number)
            kept = QStringLiteral("%1-%2").arg(asideName).arg(number);
        files[kept] = files[name];
        steps.push_back(QStringLiteral("aside %1 %2").arg(name, kept));
        return Done{};
    }
    Result<std::vector<ListedFile>> list(const QString &folder) override
    {
        ++listings;
        if (!listFailure.isEmpty())
            return Failure{listFailure};
        std::vector<ListedFile> listed;
        for (const auto &[name, bytes] : files) {
            if (name.startsWith(folder + QLatin1Char('/')))
                listed.push_back({name.mid(folder.size() + 1), bytes.size()});
        }
        return listed;
    }
    Result<> remove(const QString &name) override
    {
        if (!removeFailure.isEmpty())
            return Failure{removeFailure};
        files.erase(name);
        steps.push_back(QStringLiteral("remove ") + name);
        return Done{};
    }
};
