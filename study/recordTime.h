#pragma once

#include <QDateTime>

/// A moment as the records hold it: in UTC, cut to whole seconds.
QDateTime recordTime(const QDateTime &moment);
