#pragma once

#include <QLoggingCategory>

/// quorvel.engine.command: one debug line for each operation that the interface calls, off unless turned on.
/// Every operation writes its name first, with an argument only where that is a number, a flag or a name of
/// our own; never what the user has typed, and no code, token or address. The engine itself calls no
/// operation.
Q_DECLARE_LOGGING_CATEGORY(logCommand)
