#include "recordTime.h"

using namespace Qt::StringLiterals;

QDateTime recordTime(const QDateTime &moment)
{
    return QDateTime::fromSecsSinceEpoch(moment.toSecsSinceEpoch(), Qt::UTC);
}

QString fileNameTime(const QDateTime &moment)
{
    return moment.toUTC().toString(u"yyyyMMdd'T'HHmmss'Z'"_s);
}
