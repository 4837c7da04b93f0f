#pragma once

#include <QtGlobal>

/// Signed 64-bit arithmetic that stops the program instead of wrapping round: a clock or a counter that has
/// overflowed means nothing, and going on would overwrite what the user has earned.

/// left + right, or the end of the program with a message naming `what`.
qint64 checkedAdd(qint64 left, qint64 right, const char *what);

/// Minutes in seconds, or the end of the program with a message naming `what`.
qint64 checkedSeconds(qint64 minutes, const char *what);
