#include "ControllerHarness.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestLanguage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedLanguage_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<AppLanguage>("language");
        QTest::newRow("russian") << u"ru"_s << AppLanguage::Russian;
        QTest::newRow("english") << u"en"_s << AppLanguage::English;
        QTest::newRow("upper case") << u"RU"_s << AppLanguage::English;
        QTest::newRow("unknown") << u"de"_s << AppLanguage::English;
        QTest::newRow("empty") << QString() << AppLanguage::English;
    }
    void storedLanguage()
    {
        QFETCH(QString, stored);
        ControllerHarness harness;
        harness.preferences.values[u"language"_s] = stored;
        QTEST(harness.start().language(), "language");
    }

    void absentLanguageIsEnglish()
    {
        ControllerHarness harness;
        QCOMPARE(harness.start().language(), AppLanguage::English);
    }

    void startTextsComeInTheStoredLanguage()
    {
        ControllerHarness harness;
        harness.preferences.values[u"language"_s] = u"ru"_s;
        const auto &controller = harness.start();
        QCOMPARE(controller.activeAppName(), u"Неизвестно"_s);
        QCOMPARE(controller.statusMessage(), u"Готово. Блокировка выключена до старта."_s);
        QCOMPARE(controller.modeText(), u"Готов"_s);
    }

    void switchingIsStoredAndRefreshesStandingTexts()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(harness.preferences.writes,
                 std::vector<FakePreferences::Write>({{u"language"_s, u"ru"_s, Durability::AtOnce}}));
        QCOMPARE(controller.activeAppName(), u"Неизвестно"_s);
        QCOMPARE(controller.statusMessage(), u"Готово. Блокировка выключена до старта."_s);
        QCOMPARE(controller.quizFeedback(), u"Добавь карточки, затем отвечай на них во время учёбы."_s);
        QVERIFY(controller.aiOutputText().startsWith(u"ИИ-тренер может"));
        QCOMPARE(controller.primaryTimerTitle(), u"Учёбы осталось"_s);
        QVERIFY(harness.events().isEmpty());
    }

    void statusOfEachModeIsReset()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.lockNow();
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(controller.statusMessage(), u"Блокировка активна. Развлечения закрыты."_s);
        controller.startStudy();
        controller.setLanguage(AppLanguage::English);
        QCOMPARE(controller.statusMessage(),
                 u"Study timer is running. Proofs are disabled; the timer alone unlocks a break."_s);
    }

    void earnedBreakReadsAsManualAfterASwitch()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(1));
        controller.startStudy();
        harness.seconds(59);
        QCOMPARE(controller.mode(), QuorvelController::Mode::BreakTime);
        controller.setLanguage(AppLanguage::English);
        QCOMPARE(controller.statusMessage(), u"Manual break is active."_s);
    }

    void transientStatusIsReplaced()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(1, 1, 1));
        controller.startStudy();
        QVERIFY(controller.statusMessage().startsWith(u"Need 1"));
        controller.setLanguage(AppLanguage::English);
        QCOMPARE(controller.statusMessage(), u"Ready. Blocking is off until you start."_s);
    }

    void realApplicationNameStaysButUnknownIsTranslated()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.seconds(1);
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(controller.activeAppName(), u"Anki"_s);
        harness.applications.start(u"Unknown"_s); // an application of that very name
        harness.seconds(1);
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(controller.activeAppName(), u"Неизвестно"_s);
    }
};

QUORVEL_TEST(TestLanguage, QCoreApplication)
#include "tst_language.moc"
