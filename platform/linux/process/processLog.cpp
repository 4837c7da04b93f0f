#include "processLog.h"

Q_LOGGING_CATEGORY(logProcess, "quorvel.platform.process", QtInfoMsg)
