#include "L10n.h"
#include "L10nTable.h"
#include "addedTexts.h"
#include "suite.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;

class TestL10n : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tableHasExactly176DistinctKeys()
    {
        QSet<QString> keys;
        for (const auto &row : l10nTable)
            keys.insert(row.key.toString());
        QCOMPARE(l10nTable.size(), std::size_t(176));
        QCOMPARE(keys.size(), 176);
    }

    void keysAreLowerCaseWordsWithBothTexts()
    {
        static const QRegularExpression words(u"^[a-z]+(_[a-z]+)*$"_s);
        for (const auto &row : l10nTable) {
            QVERIFY2(words.match(row.key.toString()).hasMatch(), qPrintable(row.key.toString()));
            QVERIFY2(!row.english.isEmpty() && !row.russian.isEmpty(), qPrintable(row.key.toString()));
        }
    }

    /// The texts are promised letter for letter: whoever changes one on purpose renews this digest.
    void tableTextsAreUnchanged()
    {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        for (const auto &row : l10nTable)
            hash.addData(u"%1\t%2\t%3\n"_s.arg(row.key, row.english, row.russian).toUtf8());
        QCOMPARE(hash.result().toHex(),
                 "61a99ef7004ed9bc4e5fecedf259aeafdb1c4debfb5cfe9860d1ae72c47f9163"_ba);
    }

    void addedTextsDoNotRepeatTheTable()
    {
        QSet<QString> keys;
        for (const auto &row : l10nTable)
            keys.insert(row.key.toString());
        for (const auto &row : addedTexts()) {
            QVERIFY2(!keys.contains(row.key.toString()), qPrintable(row.key.toString()));
            keys.insert(row.key.toString());
            QVERIFY2(!row.english.isEmpty() && !row.russian.isEmpty(), qPrintable(row.key.toString()));
            QCOMPARE(L10n::t(row.key, AppLanguage::Russian), row.russian.toString());
        }
    }

    void unknownKeyGivesItselfInBothLanguages()
    {
        QCOMPARE(L10n::t(u"no_such_key", AppLanguage::English), u"no_such_key"_s);
        QCOMPARE(L10n::t(u"no_such_key", AppLanguage::Russian), u"no_such_key"_s);
        QCOMPARE(L10n::t(u"", AppLanguage::English), QString());
    }

    void dayIsLowerCase()
    {
        QCOMPARE(L10n::t(u"day", AppLanguage::Russian), u"день"_s);
        QCOMPARE(L10n::t(u"day", AppLanguage::English), u"day"_s);
    }

    void pairsWithTheSameEnglishTextStayApart()
    {
        QCOMPARE(L10n::t(u"all_topics", AppLanguage::English),
                 L10n::t(u"all_topics_value", AppLanguage::English));
        QCOMPARE(L10n::t(u"card_proofs", AppLanguage::English), u"Card proofs"_s);
        QCOMPARE(L10n::t(u"card_proofs_field", AppLanguage::English), u"Card proofs"_s);
        QCOMPARE(L10n::t(u"card_proofs", AppLanguage::Russian), u"Пруфы"_s);
        QCOMPARE(L10n::t(u"card_proofs_field", AppLanguage::Russian), u"Пруфы карточками"_s);
    }

    void languageRawValues_data()
    {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<bool>("known");
        QTest::newRow("english") << u"en"_s << true;
        QTest::newRow("russian") << u"ru"_s << true;
        QTest::newRow("upper case") << u"RU"_s << false;
        QTest::newRow("other language") << u"de"_s << false;
        QTest::newRow("empty") << QString() << false;
    }
    void languageRawValues()
    {
        QFETCH(QString, raw);
        QFETCH(bool, known);
        const auto language = appLanguageFromRawValue(raw);
        QCOMPARE(language.has_value(), known);
        if (language)
            QCOMPARE(rawValue(*language), raw);
    }

    void pickerLabels()
    {
        QCOMPARE(shortLabel(AppLanguage::English), u"ENG"_s);
        QCOMPARE(shortLabel(AppLanguage::Russian), u"RUS"_s);
    }
};

QUORVEL_TEST(TestL10n)
#include "tst_L10n.moc"
