#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>

#include <optional>
#include <string_view>

/// How the record files write a moment, an id and a text, and how they are read.

/// Bytes of "2026-11-20T20:15:30Z".
inline constexpr qsizetype recordTimeLength = 20;
/// Bytes of an id, such as "6F9619FF-8B86-4D01-B42D-00CF4FC964FF".
inline constexpr qsizetype recordIdLength = 36;

/// Writes a moment, cut to whole seconds, in UTC. An invalid one is written as the first second of 1970, one
/// outside the years 1 to 9999 as their first or last, so that what is written can always be read. Returns
/// the end of what was written.
char *writeRecordTime(char *to, const QDateTime &time);

/// Reads "2026-11-20T20:15:30Z", or with an offset such as "+03:00" in place of the Z. Nothing else: no
/// fraction, no missing zone, no day that the calendar has not, no leap second, no year outside 1 to 9999 in
/// UTC.
std::optional<QDateTime> readRecordTime(std::string_view text);

/// Writes an id in upper case, with hyphens, without braces. Returns the end of what was written.
char *writeRecordId(char *to, const QUuid &id);

/// Reads an id in either case, with hyphens, without braces.
std::optional<QUuid> readRecordId(std::string_view text);

/// A text of valid UTF-8, whole: also a byte order mark at its start belongs to it.
QString readRecordString(std::string_view utf8);
