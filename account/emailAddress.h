#pragma once

#include <QString>

/// What was typed into the field for the address, as it is sent: without white space at its ends and in lower
/// case, by the mappings that no language changes.
QString normalizedEmail(const QString &typed);

/// Whether a normalized address is worth sending: it has an at-sign and a full stop, anywhere. Whether mail
/// reaches it is for the backend to find out.
bool looksLikeEmail(const QString &email);
