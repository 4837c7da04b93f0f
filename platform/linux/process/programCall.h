#pragma once

#include <QString>
#include <QStringList>

/// What a command line runs once wrappers ("env", "nice") and interpreters ("python3", "sh") are taken off.
struct ProgramCall
{
    QString program; ///< path or bare name; empty where an interpreter or a store runs nothing of its own
    QStringList arguments;
    bool script = false; ///< `program` is a file that an interpreter reads

    bool operator==(const ProgramCall &) const = default;
};

ProgramCall effectiveCall(const QStringList &command);

/// The last part of a path.
QString baseName(const QString &path);

/// Whether a program of that base name runs other people's programs: "bash", "python3.11", "java".
bool isInterpreter(const QString &programName);

/// Whether a program of that base name only starts another and waits: shells, "bwrap", "env".
bool isLauncher(const QString &programName);

/// Whether programs of so many authors carry that base name that it tells nothing: "main.py", "AppRun".
bool isCommonProgramName(const QString &programName);
