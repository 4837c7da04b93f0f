#include "recordTime.h"

QDateTime recordTime(const QDateTime &moment)
{
    return QDateTime::fromSecsSinceEpoch(moment.toSecsSinceEpoch(), Qt::UTC);
}
