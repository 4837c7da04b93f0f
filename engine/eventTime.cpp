#include "eventTime.h"

QString eventTimeText(QTime time, const QLocale &locale)
{
    // The locale's long form is its medium one with the time zone: every "t" of the pattern stands for the
    // zone.
    auto pattern = locale.timeFormat(QLocale::LongFormat);
    pattern.remove(u't');
    return locale.toString(time, pattern.simplified());
}
