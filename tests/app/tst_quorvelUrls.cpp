#include "quorvelUrls.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_quorvelUrls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsOwnAddressesInOrder()
    {
        const QStringList texts{
            u"quorvel://auth?b=2"_s, u"https://quorvel"_s, u"Quorvel://auth"_s, u"quorvel"_s,
            u"quorvels:x"_s,         u"/quorvel:x"_s,      u" quorvel:x"_s,     u""_s,
            u"quorvel:AUTH"_s};
        QCOMPARE(quorvelUrls(texts), QStringList({u"quorvel://auth?b=2"_s, u"quorvel:AUTH"_s}));
    }
};

QTEST_GUILESS_MAIN(tst_quorvelUrls)
#include "tst_quorvelUrls.moc"
