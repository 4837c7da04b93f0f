#pragma once

#include <QStringList>
#include <QtGlobal>

/// The user's settings. The order of the fields is the order of the keys in the settings file.
struct QuorvelConfig
{
    qint64 studyMinutes = 25;
    qint64 breakMinutes = 45;
    qint64 maxIdleSeconds = 180; ///< an idle time above this pauses the study clock
    qint64 requiredProofsToUnlock =
        0;                   ///< distinct cards to answer before a break opens; 0: the timer alone opens it
    QStringList blockedApps; ///< matched as part of an application's name, id or path, in any case
    QStringList blockedDomains;
    QStringList allowedStudyDomains; ///< if not empty, the only sites that count as study in a browser
    QStringList
        allowedStudyApps; ///< matched as part of an application's name, in any case; empty allows none
    qint64 blocklistPresetVersion = 0; ///< version of the built-in lists that this record already contains

    bool operator==(const QuorvelConfig &) const = default;

    /// The settings of a fresh installation: the built-in lists and their present version.
    static const QuorvelConfig &defaults();
};

/// The user's entries in their places, then the built-in ones that the user does not have, compared exactly.
QStringList mergedWithBuiltIn(const QStringList &current, const QStringList &builtIn);

/// The settings with both blocklists merged with the built-in ones and the present preset version.
QuorvelConfig withBuiltInBlocklists(QuorvelConfig config);

/// Whether the record has not yet seen the present version of the built-in blocklists.
bool needsBlocklistMigration(const QuorvelConfig &config);
