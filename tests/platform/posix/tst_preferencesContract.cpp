#include "FakePreferences.h"
#include "TextPreferences.h"
#include "suite.h"

#include <QTemporaryDir>

#include <memory>

using namespace Qt::StringLiterals;

/// What every Preferences does, the fake that other tests trust included.
class tst_preferencesContract : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void givesBackWhatWasSet_data() { adapters(); }
    void givesBackWhatWasSet();
    void aTypeIsAsked_data() { adapters(); }
    void aTypeIsAsked();
    void removes_data() { adapters(); }
    void removes();

private:
    static void adapters();
    std::unique_ptr<Preferences> make();

    std::unique_ptr<QTemporaryDir> m_home;
};

void tst_preferencesContract::adapters()
{
    QTest::addColumn<bool>("real");
    QTest::newRow("fake") << false;
    QTest::newRow("text") << true;
}

std::unique_ptr<Preferences> tst_preferencesContract::make()
{
    QFETCH(bool, real);
    m_home = std::make_unique<QTemporaryDir>();
    if (real)
        return std::make_unique<TextPreferences>(m_home->filePath(u"folder"_s));
    return std::make_unique<FakePreferences>();
}

void tst_preferencesContract::givesBackWhatWasSet()
{
    const auto preferences = make();
    QVERIFY(preferences->availability().works);
    QVERIFY(!preferences->value(u"language"_s));
    for (const Durability durability : {Durability::Soon, Durability::AtOnce}) {
        preferences->setValue(u"language"_s, u"ru"_s, durability);
        preferences->setValue(u"proModeEnabled"_s, true, durability);
        preferences->setValue(u"studySeconds-2026-11-20"_s, qint64(1500), durability);
        QVERIFY(preferences->value(u"language"_s) == PreferenceValue(u"ru"_s));
        QVERIFY(preferences->value(u"proModeEnabled"_s) == PreferenceValue(true));
        QVERIFY(preferences->value(u"studySeconds-2026-11-20"_s) == PreferenceValue(qint64(1500)));
        preferences->setValue(u"language"_s, u"en"_s, durability);
        QVERIFY(preferences->value(u"language"_s) == PreferenceValue(u"en"_s));
    }
}

void tst_preferencesContract::aTypeIsAsked()
{
    const auto preferences = make();
    preferences->setValue(u"a"_s, qint64(1), Durability::Soon);
    QCOMPARE(preferences->get<qint64>(u"a"_s), std::optional<qint64>(1));
    QCOMPARE(preferences->get<bool>(u"a"_s), std::optional<bool>());
    preferences->setValue(u"a"_s, true, Durability::Soon);
    QCOMPARE(preferences->get<bool>(u"a"_s), std::optional<bool>(true));
    QCOMPARE(preferences->get<qint64>(u"a"_s), std::optional<qint64>());
}

void tst_preferencesContract::removes()
{
    const auto preferences = make();
    preferences->remove(u"a"_s);
    preferences->setValue(u"a"_s, qint64(1), Durability::AtOnce);
    preferences->remove(u"a"_s);
    QVERIFY(!preferences->value(u"a"_s));
}

QUORVEL_TEST(tst_preferencesContract, QCoreApplication)
#include "tst_preferencesContract.moc"
