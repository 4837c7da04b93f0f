#pragma once

#include <QString>

/// The one form in which answers and topics are compared: lower case, without diacritics, width and
/// superfluous white space, with "ё" as "е", no space around + - * / = ^ ( ) and no . ; : ! ? at the end. May
/// be empty. The same text gives the same form on every machine: no locale takes part.
QString normalizeStudyAnswer(const QString &text);
