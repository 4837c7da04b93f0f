// What the window costs beside the least that a window of its size could cost: its start, a second of a
// session, a hidden second, scrolling, and memory. Each figure comes from a process of its own, and what is
// compared is measured in turn, so that a busy machine slows both alike.

#include "measurement.h"
#include "windowScenes.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <chrono>
#include <map>

using namespace Qt::StringLiterals;

namespace {

constexpr int startRounds = 9;
constexpr int sceneRounds = 3;
constexpr int childMilliseconds = 120'000;

constexpr double mostForStart = 2.5;
constexpr double mostForASecond = 1.5;
constexpr double mostForScrolling = 1.5;
constexpr double mostMemory = 40.0; // MB more than the bare window

using Measured = std::map<std::string, std::vector<double>>;

/// Runs this program again for one scene, and adds what it measured to `measured` as "scene.figure".
void measure(const QString &program, const std::string &scene, double rowHeight, Measured &measured)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    auto environment = QProcessEnvironment::systemEnvironment();
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    environment.insert(u"QUORVEL_STARTED"_s,
                       QString::number(std::chrono::duration_cast<std::chrono::microseconds>(now).count()));
    child.setProcessEnvironment(environment);
    child.start(program, {u"--scene"_s, QString::fromStdString(scene), QString::number(rowHeight)});
    if (!child.waitForFinished(childMilliseconds) || child.exitCode() != 0)
        qFatal("window: the scene %s did not come to its end", scene.c_str());
    const auto figures = nlohmann::json::parse(child.readAllStandardOutput().toStdString());
    for (const auto &[name, value] : figures.items())
        measured[std::string(scene).append(".").append(name)].push_back(value.get<double>());
}

void measureStart(const QString &program, Figures &figures)
{
    Measured all;
    for (int round = 0; round < startRounds; ++round) {
        for (const auto *scene : {"full", "bare"})
            measure(program, scene, 0, all);
    }
    const auto full = quantile(all["full.start"], 0.5);
    const auto bare = quantile(all["bare.start"], 0.5);
    figures.hold("start to the first frame of the dashboard", full / bare, "a bare Qt Quick window",
                 mostForStart);
    figures.report("the same, median", full, "ms", "nothing");
}

/// In Qt's own renderer, where all memory is the program's. Software OpenGL compiles its shaders inside the
/// process, which takes half as much again; so much is told, and goes where there is a graphics processor.
void measureMemory(const QString &program, Figures &figures)
{
    Measured all;
    for (int round = 0; round < sceneRounds; ++round) {
        for (const auto *scene : {"emptyInSoftware", "bareInSoftware", "empty", "bare"})
            measure(program, scene, 0, all);
    }
    const auto more = [&all](const char *full, const char *bare) {
        return quantile(all[full], 0.5) - quantile(all[bare], 0.5);
    };
    const auto own = more("emptyInSoftware.memory", "bareInSoftware.memory");
    figures.hold("memory of the window with an empty bank", own / mostMemory,
                 "40 MB over a bare Qt Quick window, both in Qt's own renderer", 1.0);
    figures.report("the same, median", own, "MB", "that bare window");
    figures.report("the same in software OpenGL", more("empty.memory", "bare.memory"), "MB",
                   "a bare window in software OpenGL");
}

void measureSeconds(const QString &program, Figures &figures)
{
    Measured all;
    for (int round = 0; round < sceneRounds; ++round) {
        for (const auto *scene : {"ticks", "label"})
            measure(program, scene, 0, all);
    }
    for (const auto *scene : {"counting", "hidden"})
        measure(program, scene, 0, all);
    const auto tick = quantile(all["ticks.processor"], 0.5);
    const auto label = quantile(all["label.processor"], 0.5);
    figures.hold("processor time of a second of a session", tick / label, "one label over one cached picture",
                 mostForASecond);
    figures.report("the same, median", tick, "ms", "nothing");
    figures.report("its frames", quantile(all["ticks.frames"], 0.5), "a second", "nothing");
    const auto counting = quantile(all["counting.processor"], 0.5);
    figures.report("the same with the digits animated", counting, "ms", "nothing");
    figures.report("its frames", quantile(all["counting.frames"], 0.5), "a second", "nothing");
    figures.report("processor time of a hidden second", quantile(all["hidden.processor"], 0.5), "ms",
                   "nothing, on a desktop of fakes");
    figures.hold("frames of a hidden window", quantile(all["hidden.frames"], 1.0),
                 "none, in 30 s of a session", 0.0);
}

void measureScrolling(const QString &program, Figures &figures)
{
    Measured all;
    for (int round = 0; round < sceneRounds; ++round) {
        measure(program, "cards", 0, all);
        measure(program, "list", all["cards.rowHeight"].back(), all);
    }
    const auto cards = quantile(all["cards.frame"], 0.5);
    const auto list = quantile(all["list.frame"], 0.5);
    figures.hold("frame while 100,000 cards scroll, 95th of 100", cards / list,
                 "a plain ListView of the same texts", mostForScrolling);
    figures.report("the same, median", cards, "ms", "nothing");
}

} // namespace

int main(int count, char **words)
{
    if (count == 4 && QByteArrayView(words[1]) == "--scene") {
        printf("%s\n", showScene(words[2], QByteArray(words[3]).toDouble()).dump().c_str());
        return 0;
    }
    if (count != 2) {
        fprintf(stderr, "usage: window FILE\n");
        return 2;
    }
    const auto program = QString::fromLocal8Bit(words[0]);
    Figures figures;
    measureStart(program, figures);
    measureMemory(program, figures);
    measureSeconds(program, figures);
    measureScrolling(program, figures);
    return figures.writeTo(words[1]);
}
