#include "BrowserChecks.h"

#include <QCoreApplication>
#include <QTest>

int main(int count, char **words)
{
    QCoreApplication application(count, words);
    BrowserChecks checks(RealBrowser::Kind::Firefox);
    return QTest::qExec(&checks, count, words);
}
