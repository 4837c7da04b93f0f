#include "eventTime.h"

using namespace Qt::StringLiterals;

QString eventTimeText(QTime time, const QLocale &locale)
{
    // Qt has no form between the short one, without seconds, and the long one, with the time zone and in some
    // locales words around it. So the seconds join the short form with the separator that stands before its
    // minutes.
    auto pattern = locale.timeFormat(QLocale::ShortFormat);
    if (pattern.contains(u"ss"))
        return locale.toString(time, pattern);
    const auto minutes = pattern.indexOf(u"mm");
    if (minutes < 1)
        return locale.toString(time, u"HH:mm:ss"_s);
    const auto before = pattern.at(minutes - 1);
    const auto separator = before.isPunct() && before != u'\'' ? QString(before) : u":"_s;
    pattern.insert(minutes + 2, separator + u"ss"_s);
    return locale.toString(time, pattern);
}
