#include "emailAddress.h"

QString normalizedEmail(const QString &typed)
{
    return typed.trimmed().toLower(); // QString's own, so a Turkish desktop sends the same as any other
}

bool looksLikeEmail(const QString &email)
{
    return email.contains(u'@') && email.contains(u'.');
}
