#include "ProductSection.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class tst_ProductSection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sectionsStandInTheirOrder()
    {
        QStringList rawValues;
        for (const auto section : allProductSections)
            rawValues.append(rawValue(section));
        QCOMPARE(rawValues, QStringList({u"focus"_s, u"progress"_s, u"coach"_s, u"cards"_s, u"plan"_s,
                                         u"rules"_s, u"activity"_s}));
    }

    void rawValuesLeadBack()
    {
        for (const auto section : allProductSections)
            QCOMPARE(productSection(rawValue(section)), std::optional(section));
        for (const auto &unknown : {u""_s, u"Focus"_s, u"settings"_s})
            QCOMPARE(productSection(unknown), std::nullopt);
    }

    void titlesComeFromTheTable()
    {
        QCOMPARE(title(ProductSection::Rules, AppLanguage::English), u"Settings"_s);
        QCOMPARE(title(ProductSection::Rules, AppLanguage::Russian), u"Настройки"_s);
        QCOMPARE(title(ProductSection::Coach, AppLanguage::English), u"AI Coach"_s);
        QCOMPARE(title(ProductSection::Coach, AppLanguage::Russian), u"ИИ-тренер"_s);
        QCOMPARE(subtitle(ProductSection::Cards, AppLanguage::English),
                 u"Build topic cards that can count as proof."_s);
        for (const auto section : allProductSections) {
            for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
                QVERIFY(!title(section, language).contains(u'_')); // a missing text is its key
                QVERIFY(!subtitle(section, language).contains(u'_'));
            }
        }
    }
};

QUORVEL_TEST(tst_ProductSection, QCoreApplication)
#include "tst_ProductSection.moc"
