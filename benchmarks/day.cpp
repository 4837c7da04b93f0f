// A day of studying in one go: 86,400 seconds on a fake clock, all else real - the window, the files, the
// processes, the X server. Each second is one turn of the event loop. The window is seen for the first
// minutes and hidden for the rest. Needs DISPLAY with a window manager.

#include "CompanionScripting.h"
#include "CompanionServer.h"
#include "DesktopSupport.h"
#include "FakeBackendClient.h"
#include "FakeClock.h"
#include "FakeUrlOpener.h"
#include "FolderRecordFiles.h"
#include "QuorvelController.h"
#include "TextPreferences.h"
#include "X11Applications.h"
#include "X11Idle.h"
#include "jsonCodecs.h"
#include "measurement.h"
#include "setUpInterface.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickView>
#include <QTemporaryDir>
#include <QtQml/qqmlextensionplugin.h>

#include <ctime>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_IMPORT_QML_PLUGIN(Quorvel_UiPlugin)

namespace {

constexpr int secondsOfADay = 86'400;
constexpr int secondsSeen = 180;
constexpr int secondsOfWarmth = 60; // what is made at its first use
constexpr int cardEvery = 900;
constexpr int answerEvery = 45;
constexpr double stall = 50; // milliseconds

/// Milliseconds of processor that this thread has had: another program in its way does not count.
double processorOfThread()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// What the student does in that second of the day.
void study(QuorvelController &controller, int second)
{
    if (controller.mode() == QuorvelController::Mode::Ready)
        controller.startStudy();
    if (second % cardEvery == 0) {
        controller.setNewCardTopicText(u"Topic %1"_s.arg(second / cardEvery % 7));
        controller.setNewCardPromptText(u"Question %1"_s.arg(second));
        controller.setNewCardAnswerText(u"answer"_s);
        controller.addStudyCard();
        controller.setNewStudyTaskText(u"Task %1"_s.arg(second));
        controller.addStudyTask();
    }
    if (second % answerEvery == 0) {
        controller.setQuizAnswerText(second % 2 == 0 ? u"answer"_s : u"wrong"_s);
        controller.submitQuizAnswer();
    }
}

} // namespace

int main(int count, char **words)
{
    QGuiApplication application(count, words);
    const QTemporaryDir folder;
    const auto connection = std::make_shared<X11Connection>();
    if (count < 2 || !connection->usable()) {
        fprintf(stderr, "usage: day FILE, with DISPLAY set to an X server\n");
        return 2;
    }
    FakeClock clock;
    X11Idle idle(connection);
    X11Applications applications(connection, {});
    CompanionServer server(folder.path().toLocal8Bit());
    CompanionScripting browsers(server);
    TextPreferences preferences(folder.filePath(u"config"_s));
    FolderRecordFiles files(folder.filePath(u"data"_s));
    FakeBackendClient backend;
    FakeUrlOpener urls;
    auto settings = QuorvelConfig::defaults();
    settings.allowedStudyApps = {u"unknown"_s, u"day"_s};
    settings.maxIdleSeconds = secondsOfADay;
    settings.studyMinutes = 25;
    settings.breakMinutes = 5;
    settings.requiredProofsToUnlock = 0; // no session waits
    if (!files.write(u"config.json"_s, encodeConfig(settings)))
        return 1;
    QuorvelController controller({clock, idle, applications, browsers, preferences, files, backend, urls});
    controller.continueAsGuest();

    setUpDrawing();
    DesktopSupport support;
    QQuickView window;
    setUpInterface(*window.engine());
    window.setResizeMode(QQuickView::SizeRootObjectToView);
    window.setInitialProperties({{u"controller"_s, QVariant::fromValue(&controller)},
                                 {u"desktopSupport"_s, QVariant::fromValue(&support)}});
    window.setSource(QUrl(u"qrc:/qt/qml/Quorvel/Ui/ContentView.qml"_s));
    window.resize(1180, 820);
    window.show();

    std::vector<double> turns;
    std::vector<double> processor;
    for (int second = 0; second < secondsOfADay; ++second) {
        clock.advance(1s);
        if (second == secondsSeen)
            window.hide();
        const auto before = processorOfThread();
        const auto turn = timed([&] {
            study(controller, second);
            controller.tick();
            QCoreApplication::processEvents();
        });
        if (second >= secondsOfWarmth) {
            turns.push_back(turn);
            processor.push_back(processorOfThread() - before);
        }
    }
    if (controller.userProgress().totalFocusSeconds < secondsOfADay / 2 ||
        controller.userProgress().totalCompletedSessions < secondsOfADay / 3600) {
        fprintf(stderr, "day: too little of the day counted: %lld s\n",
                static_cast<long long>(controller.userProgress().totalFocusSeconds));
        return 1;
    }
    const auto longerThanAStall = [](double time) { return time > stall; };
    Figures figures;
    figures.hold("turns of the event loop that work for more than 50 ms in a day",
                 double(std::count_if(processor.begin(), processor.end(), longerThanAStall)), "none", 0);
    figures.report("the longest, processor time", quantile(processor, 1), "ms", "nothing");
    figures.report("turns that take more than 50 ms, whatever they wait for",
                   double(std::count_if(turns.begin(), turns.end(), longerThanAStall)), "of 86,340",
                   "nothing");
    figures.report("the longest", quantile(turns, 1), "ms", "nothing");
    figures.report("99th of 100", quantile(turns, 0.99), "ms", "nothing");
    figures.report("the median", quantile(turns, 0.5), "ms", "nothing");
    return figures.writeTo(words[1]);
}
