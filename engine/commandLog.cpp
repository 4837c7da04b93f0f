#include "commandLog.h"

Q_LOGGING_CATEGORY(logCommand, "quorvel.engine.command", QtWarningMsg)
