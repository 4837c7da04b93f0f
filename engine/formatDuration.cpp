#include "formatDuration.h"

#include <algorithm>

QString formatDuration(qint64 seconds)
{
    const qint64 whole = std::max<qint64>(seconds, 0);
    const auto hours = whole / 3600;
    const auto minutes = whole / 60 % 60;
    const auto rest = whole % 60;
    return seconds >= 3600
               ? QString::asprintf("%lld:%02d:%02d", static_cast<long long>(hours), int(minutes), int(rest))
               : QString::asprintf("%02d:%02d", int(minutes), int(rest));
}
