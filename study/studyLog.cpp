#include "studyLog.h"

Q_LOGGING_CATEGORY(lcStudy, "quorvel.study")
