#include "dayKey.h"

QString dayKey(QDate day)
{
    return day.toString(Qt::ISODate);
}

std::optional<QDate> dayFromKey(const QString &key)
{
    if (key.size() != 10)
        return std::nullopt;
    const auto day = QDate::fromString(key, Qt::ISODate);
    return day.isValid() ? std::optional(day) : std::nullopt;
}
