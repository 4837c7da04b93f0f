#include "AccessMode.h"

using namespace Qt::StringLiterals;

QString rawValue(AccessMode mode)
{
    switch (mode) {
    case AccessMode::Guest:
        return u"guest"_s;
    case AccessMode::Account:
        return u"account"_s;
    case AccessMode::None:
        break;
    }
    return u"none"_s;
}

AccessMode accessModeFromRawValue(QStringView raw)
{
    if (raw == u"guest")
        return AccessMode::Guest;
    if (raw == u"account")
        return AccessMode::Account;
    return AccessMode::None;
}
