#pragma once

#include <QLocale>
#include <QTime>

/// A time of day to the second in the manner of the locale and without a time zone, as "3:45:12 PM" or
/// "15:45:12".
QString eventTimeText(QTime time, const QLocale &locale);
