#pragma once

#include <QString>

/// The one form in which answers and topics are compared: lower case, without diacritics, width and
/// superfluous white space, with "ё" as "е", no space around + - * / = ^ ( ) and no . ; : ! ? at the end. May
/// be empty. The same text gives the same form on every machine: no locale takes part. A form is its own
/// form, unless it ends with the space that stood before the punctuation: "a ;" gives "a ".
QString normalizeStudyAnswer(const QString &text);
