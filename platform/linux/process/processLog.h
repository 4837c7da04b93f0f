#pragma once

#include <QLoggingCategory>

/// What the tables of processes and applications have to say.
Q_DECLARE_LOGGING_CATEGORY(logProcess)
