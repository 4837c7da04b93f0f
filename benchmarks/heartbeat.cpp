// What the whole heartbeat of a running session costs among 400 more processes, with the built-in lists and
// the real adapters, against a scan of /proc without a memory. Both are measured in turn, one round a second
// as the program does it, so that looks that are due only every ten seconds are paid for here too. Needs
// DISPLAY with a window manager.

#include "CompanionScripting.h"
#include "CompanionServer.h"
#include "FakeBackendClient.h"
#include "FakeUrlOpener.h"
#include "FolderRecordFiles.h"
#include "QuorvelController.h"
#include "Sleepers.h"
#include "SystemClock.h"
#include "TextPreferences.h"
#include "X11Applications.h"
#include "X11Idle.h"
#include "fullProcessScan.h"
#include "jsonCodecs.h"
#include "measurement.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr int extraProcesses = 400;
constexpr int rounds = 31;
constexpr auto oldEnough = 11s; // processes younger than ten seconds are looked at more often
constexpr double largestShare = 0.5;

struct Rounds
{
    std::vector<double> heartbeat;
    std::vector<double> adapters;
    std::vector<double> plainScan;
};

Rounds measure(QuorvelController &controller, X11Applications &applications, const X11Idle &idle)
{
    Rounds taken;
    for (int round = 0; round < rounds; ++round) {
        taken.heartbeat.push_back(timed([&] { controller.tick(); }));
        taken.plainScan.push_back(timed([] { (void)fullProcessScan(); }));
        taken.adapters.push_back(timed([&] {
            (void)applications.frontmost();
            (void)applications.running();
            (void)idle.sinceLastInput();
        }));
        std::this_thread::sleep_for(1s);
    }
    return taken;
}

} // namespace

int main(int count, char **words)
{
    QCoreApplication application(count, words);
    const QTemporaryDir folder;
    const auto connection = std::make_shared<X11Connection>();
    if (count < 2 || !connection->usable()) {
        fprintf(stderr, "usage: heartbeat FILE, with DISPLAY set to an X server\n");
        return 2;
    }
    SystemClock clock;
    X11Idle idle(connection);
    X11Applications applications(connection, {});
    CompanionServer server(folder.path().toLocal8Bit());
    CompanionScripting browsers(server);
    TextPreferences preferences(folder.filePath(QStringLiteral("config")));
    FolderRecordFiles files(folder.filePath(QStringLiteral("data")));
    FakeBackendClient backend;
    FakeUrlOpener urls;
    auto settings = QuorvelConfig::defaults();
    settings.allowedStudyApps = {
        QStringLiteral("Unknown")}; // nothing is in front here, and the seconds shall count
    if (!files.write(QStringLiteral("config.json"), encodeConfig(settings)))
        return 1;
    QuorvelController controller({clock, idle, applications, browsers, preferences, files, backend, urls});

    const Sleepers sleepers(extraProcesses);
    controller.startStudy();
    std::this_thread::sleep_for(oldEnough);
    controller.tick();
    if (sleepers.count() != size_t(extraProcesses) ||
        controller.mode() != QuorvelController::Mode::Studying) {
        fprintf(stderr, "heartbeat: the session or the processes did not start\n");
        return 1;
    }

    const auto taken = measure(controller, applications, idle);
    const double plain = quantile(taken.plainScan, 0.5);
    Figures figures;
    figures.hold("heartbeat among 400 processes, median share", quantile(taken.heartbeat, 0.5) / plain,
                 "a plain scan of every process (stat, cmdline, exe, cgroup)", largestShare);
    figures.report("heartbeat among 400 processes, median", quantile(taken.heartbeat, 0.5), "ms", "nothing");
    figures.report("heartbeat among 400 processes, 95th percentile", quantile(taken.heartbeat, 0.95), "ms",
                   "nothing");
    figures.report("its applications and idle time, median", quantile(taken.adapters, 0.5), "ms", "nothing");
    figures.report("plain scan of every process, median", plain, "ms", "nothing");
    if (controller.todayStudySeconds() < rounds) {
        fprintf(stderr, "heartbeat: the seconds did not count\n");
        return 1;
    }
    return figures.writeTo(words[1]);
}
