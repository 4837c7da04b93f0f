#include "x11Log.h"

Q_LOGGING_CATEGORY(logX11, "quorvel.platform.x11", QtInfoMsg)
