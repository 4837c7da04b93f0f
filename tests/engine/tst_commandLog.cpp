#include "ControllerHarness.h"
#include "suite.h"

#include <QLoggingCategory>
#include <QMetaMethod>

using namespace Qt::StringLiterals;

namespace {

QStringList lines;
QtMessageHandler earlier = nullptr;

void keepCommand(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (qstrcmp(context.category, "quorvel.engine.command") != 0)
        earlier(type, context, text);
    else
        lines << text;
}

/// Calls an operation that QML can call, with empty values for what it takes.
bool call(QObject &object, const QMetaMethod &operation)
{
    if (operation.parameterCount() == 0)
        return operation.invoke(&object);
    const auto type = operation.parameterMetaType(0);
    const QVariant empty(type);
    return operation.parameterCount() == 1 &&
           operation.invoke(&object, QGenericArgument(type.name(), empty.constData()));
}

} // namespace

class TestCommandLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { earlier = qInstallMessageHandler(keepCommand); }
    void cleanupTestCase() { qInstallMessageHandler(earlier); }
    void init()
    {
        lines.clear();
        QLoggingCategory::setFilterRules(u"quorvel.engine.command.debug=true"_s);
    }
    void cleanup() { QLoggingCategory::setFilterRules(QString()); }

    void isOffByItself()
    {
        QLoggingCategory::setFilterRules(QString());
        ControllerHarness harness;
        harness.start().lockNow();
        QCOMPARE(lines, QStringList());
    }

    void everyOperationOfTheInterfaceWritesItsNameOnce_data()
    {
        QTest::addColumn<int>("number");
        const auto &type = QuorvelController::staticMetaObject;
        for (int number = type.methodOffset(); number < type.methodCount(); ++number) {
            if (type.method(number).methodType() == QMetaMethod::Method)
                QTest::newRow(type.method(number).name().constData()) << number;
        }
    }
    void everyOperationOfTheInterfaceWritesItsNameOnce()
    {
        QFETCH(int, number);
        const auto operation = QuorvelController::staticMetaObject.method(number);
        ControllerHarness harness;
        auto &controller = harness.start();
        QVERIFY(call(controller, operation));
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines[0].section(u'(', 0, 0), QString::fromLatin1(operation.name()));
    }

    void startAndHeartbeatWriteNothing()
    {
        ControllerHarness harness;
        harness.start();
        harness.seconds(2);
        QCOMPARE(lines, QStringList());
    }

    void argumentsThatAreNotTheUsersAreWritten()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.unlockManualBreak(15);
        controller.selectNextStudyCard(true);
        controller.setProModeEnabled(false);
        controller.setLanguage(AppLanguage::Russian);
        controller.openOAuth(u"yandex"_s);
        QCOMPARE(lines,
                 QStringList({u"unlockManualBreak(15)"_s, u"selectNextStudyCard(true)"_s,
                              u"setProModeEnabled(false)"_s, u"setLanguage(ru)"_s, u"openOAuth(yandex)"_s}));
    }

    void whatComesFromOutsideIsNotWritten()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.openOAuth(u"secret"_s);
        controller.handleAuthCallback(u"quorvel://auth?session=secret&email=secret@example.org"_s);
        harness.addCard(u"secret"_s, u"secret"_s, u"secret"_s);
        controller.deleteStudyCard(controller.activeStudyCardOrEmpty());
        QCOMPARE(lines, QStringList({u"openOAuth(google)"_s, u"handleAuthCallback"_s, u"addStudyCard"_s,
                                     u"deleteStudyCard"_s}));
    }

    void whatTheEngineDoesByItselfIsNotWritten()
    {
        ControllerHarness harness;
        harness.storeCards(
            {ControllerHarness::card(u"2 + 2"_s, u"4"_s), ControllerHarness::card(u"3 + 3"_s, u"6"_s)});
        auto &controller = harness.start();
        controller.startStudy();                                         // picks a card
        controller.deleteStudyCard(controller.activeStudyCardOrEmpty()); // picks the next
        harness.answerRightly();                                         // picks one too
        QCOMPARE(lines, QStringList({u"startStudy"_s, u"deleteStudyCard"_s, u"submitQuizAnswer"_s}));
    }

    void anAnswerOfTheBackendIsNotWritten()
    {
        ControllerHarness harness;
        harness.preferences.values[u"accessMode"_s] = u"account"_s;
        auto &controller = harness.start();
        controller.generateAIPlanAndCards();
        harness.backend.answer(
            BackendError{backendErrorDomain(), 2, u"busy"_s}); // the local pack comes instead
        QCOMPARE(controller.studyCards().empty(), false);
        QCOMPARE(lines, QStringList({u"generateAIPlanAndCards"_s}));
    }

    void anOperationThatGivesUpIsWritten()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.addStudyTask(); // nothing was typed
        controller.lockNow();
        QCOMPARE(lines, QStringList({u"addStudyTask"_s, u"lockNow"_s}));
    }
};

QUORVEL_TEST(TestCommandLog, QCoreApplication)
#include "tst_commandLog.moc"
