#pragma once

#include <QDateTime>

/// A moment as the records hold it: in UTC, cut to whole seconds.
QDateTime recordTime(const QDateTime &moment);

/// A moment in the name of a file, in UTC: "20261121T101500Z".
QString fileNameTime(const QDateTime &moment);
