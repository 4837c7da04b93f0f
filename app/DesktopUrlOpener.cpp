#include "DesktopUrlOpener.h"

#include <QDesktopServices>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcUrlOpener, "quorvel.app.urlopener")

void DesktopUrlOpener::open(const QUrl &url)
{
    if (!QDesktopServices::openUrl(url))
        qCWarning(lcUrlOpener) << "the desktop has nothing that opens this address; xdg-open would do";
}
