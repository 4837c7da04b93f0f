#pragma once

#include <QDate>
#include <QString>

#include <optional>

/// A calendar day as "yyyy-MM-dd": Gregorian, Western digits, whatever the user's locale.
QString dayKey(QDate day);

/// The day that `key` names; none where it is not such a text or no such day exists.
std::optional<QDate> dayFromKey(const QString &key);
