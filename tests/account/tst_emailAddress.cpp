#include "emailAddress.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestEmailAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAddressIsTrimmedAndInLowerCase_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("email");
        QTest::newRow("spaces and capitals") << u"  Ann.Lee@Example.ORG \n"_s << u"ann.lee@example.org"_s;
        QTest::newRow("other white space") << u"\u3000\ta@b.c\u2028\u00a0"_s << u"a@b.c"_s;
        QTest::newRow("space inside") << u" a b@c.d "_s << u"a b@c.d"_s;
        QTest::newRow("Cyrillic") << u"ИВАН@ПОЧТА.РФ"_s << u"иван@почта.рф"_s;
        QTest::newRow("the letter I in every country") << u"INFO@SITE.TR"_s << u"info@site.tr"_s;
        QTest::newRow("dotted capital I") << u"\u0130@a.b"_s << u"i\u0307@a.b"_s;
        QTest::newRow("empty") << u" \n "_s << QString();
    }
    void anAddressIsTrimmedAndInLowerCase()
    {
        QFETCH(QString, typed);
        QLocale::setDefault(QLocale(QLocale::Turkish, QLocale::Turkey));
        QTEST(normalizedEmail(typed), "email");
        QLocale::setDefault(QLocale::c());
    }

    void anAtSignAndAFullStopAreEnough_data()
    {
        QTest::addColumn<QString>("email");
        QTest::addColumn<bool>("isEnough");
        QTest::newRow("ordinary") << u"a@b.c"_s << true;
        QTest::newRow("nothing else") << u"@."_s << true;
        QTest::newRow("the other way round") << u".@"_s << true;
        QTest::newRow("full stop in front") << u"a.b@localhost"_s << true;
        QTest::newRow("several") << u"a@@b..c@"_s << true;
        QTest::newRow("no full stop") << u"me@localhost"_s << false;
        QTest::newRow("no at-sign") << u"example.org"_s << false;
        QTest::newRow("full-width signs") << u"a＠b．c"_s << false;
        QTest::newRow("empty") << QString() << false;
    }
    void anAtSignAndAFullStopAreEnough()
    {
        QFETCH(QString, email);
        QTEST(looksLikeEmail(email), "isEnough");
    }
};

QUORVEL_TEST(TestEmailAddress, QCoreApplication)
#include "tst_emailAddress.moc"
