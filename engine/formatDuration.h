#pragma once

#include <QString>

/// Seconds as a clock shows them: "25:00" below one hour, "1:05:09" from there on. Below 0 counts as 0.
QString formatDuration(qint64 seconds);
