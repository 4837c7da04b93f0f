// What the whole heartbeat of a running session costs among 400 and among 2,000 more processes, with the
// built-in lists and the real adapters, against reading the names in /proc and no more, and against a scan of
// all processes without a memory. They are measured in turn, one round a second as the program does it, so
// that looks that are due only now and then are paid for here too. Needs DISPLAY with a window manager.

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

#include <dirent.h>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr int fewProcesses = 400;
constexpr int manyProcesses = 2000;
constexpr int rounds = 61;
constexpr auto oldEnough = 11s; // processes younger than ten seconds are looked at more often
constexpr double largestShare = 0.5;
constexpr double mostAtTheMedian = 2;

/// Milliseconds of each round.
struct Rounds
{
    std::vector<double> heartbeat;
    std::vector<double> adapters;
    std::vector<double> names;
    std::vector<double> plainScan;
};

/// The least that tells which processes there are: the names in /proc.
size_t readNames()
{
    static DIR *listing = opendir("/proc");
    if (!listing)
        return 0;
    rewinddir(listing);
    size_t read = 0;
    while (readdir(listing))
        ++read;
    return read;
}

Rounds measure(QuorvelController &controller, X11Applications &applications, const X11Idle &idle)
{
    Rounds taken;
    for (int round = 0; round < rounds; ++round) {
        taken.names.push_back(timed([] { (void)readNames(); }));
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

void tell(const Rounds &taken, const std::string &among, Figures &figures)
{
    const auto heartbeat = "heartbeat among " + among;
    const auto median = quantile(taken.heartbeat, 0.5);
    figures.hold(heartbeat + ", median", median / quantile(taken.names, 0.5),
                 "reading the names in /proc, median", mostAtTheMedian);
    figures.report("the same", median, "ms", "nothing");
    // Once a minute a second is made durable: what that takes is the disk's. It should be three times at
    // most.
    const auto worst = quantile(taken.heartbeat, 0.99);
    figures.report(heartbeat + ", 99th of 100", worst / quantile(taken.names, 0.99), "times",
                   "reading the names in /proc, 99th of 100");
    figures.report("the same", worst, "ms", "nothing");
    figures.hold(heartbeat + ", median share", median / quantile(taken.plainScan, 0.5),
                 "a plain scan of every process (stat, cmdline, exe, cgroup)", largestShare);
    figures.report("its applications and idle time, median", quantile(taken.adapters, 0.5), "ms", "nothing");
    figures.report("names in /proc, median", quantile(taken.names, 0.5), "ms", "nothing");
    figures.report("plain scan of every process, median", quantile(taken.plainScan, 0.5), "ms", "nothing");
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

    controller.startStudy();
    Figures figures;
    for (const auto &[extra, among] :
         {std::pair(fewProcesses, "400 processes"), {manyProcesses, "2,000 processes"}}) {
        const Sleepers sleepers(extra);
        std::this_thread::sleep_for(oldEnough);
        controller.tick();
        if (sleepers.count() != size_t(extra) || controller.mode() != QuorvelController::Mode::Studying) {
            fprintf(stderr, "heartbeat: the session or the processes did not start\n");
            return 1;
        }
        tell(measure(controller, applications, idle), among, figures);
    }
    if (controller.todayStudySeconds() < 2 * rounds) {
        fprintf(stderr, "heartbeat: the seconds did not count\n");
        return 1;
    }
    return figures.writeTo(words[1]);
}
