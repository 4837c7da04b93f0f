#pragma once

#include <QSet>
#include <QString>

/// The seven names under which a browser runs whose tabs are looked at on every system; compared exactly.
inline const QSet<QString> &supportedBrowsers()
{
    static const QSet<QString> names{QStringLiteral("Safari"),        QStringLiteral("Google Chrome"),
                                     QStringLiteral("Brave Browser"), QStringLiteral("Microsoft Edge"),
                                     QStringLiteral("Arc"),           QStringLiteral("Chromium"),
                                     QStringLiteral("Opera")};
    return names;
}
