#pragma once

#include <QLoggingCategory>

/// What the connection to the X server has to say; its errors and what was lost by them.
Q_DECLARE_LOGGING_CATEGORY(logX11)
