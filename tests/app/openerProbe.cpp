// Opens the address that it is given, and says how many microseconds that kept it.
#include "DesktopUrlOpener.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QUrl>

#include <cstdio>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QElapsedTimer stopwatch;
    stopwatch.start();
    DesktopUrlOpener().open(QUrl::fromEncoded(application.arguments().value(1).toUtf8()));
    printf("%lld\n", static_cast<long long>(stopwatch.nsecsElapsed() / 1000));
}
