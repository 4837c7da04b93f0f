#pragma once

#include "QuorvelController.h"

/// What the status item says of the session: "QV Ready", "QV Locked", "QV 25:00" or "QV Break 1:02:05". In
/// English in every language. The times are in seconds; below 0 counts as 0.
QString statusTitle(QuorvelController::Mode mode, qint64 studyRemaining, qint64 breakRemaining);
