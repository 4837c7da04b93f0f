// What 500 tabs of a real Chromium cost: a look at them against a copy of the same list, closing 20 of them
// against what an extension takes that closes them itself, and what relay and extension do while nothing
// happens. Needs Xvfb and Chromium; brings its own display.

#include "BrowserInspector.h"
#include "BrowserStage.h"
#include "CompanionScripting.h"
#include "CompanionServer.h"
#include "RealBrowser.h"
#include "domains.h"
#include "measurement.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>

#include <functional>
#include <map>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int allOpen = 500;
constexpr int toClose = 20;
constexpr int closings = 5; ///< of each kind
constexpr int looks = 2000;
constexpr auto idleTime = 60s;
constexpr auto patience = 180s;

const QString browser = u"Chromium"_s;
const QString base = u"http://base.test/"_s;
const QString blockedHost = u"blocked.test"_s;

/// A copy of the list is all that a look can cost; the rest is for finding it.
constexpr double mostLook = 2.0;
constexpr double mostFront = 1.0;
constexpr double mostClosing = 1.5;

/// The kernel counts processor time in ticks of 1/100 s, so one tick may be chance.
constexpr double mostTicks = 1.0;

class Scene
{
public:
    Scene()
        : m_server(QFile::encodeName(m_stage.programFolder()))
        , m_scripting(m_server)
        , m_chromium(RealBrowser::Kind::Chromium, m_stage,
                     QStringLiteral(QUORVEL_EXTENSION "," QUORVEL_RULER), QStringLiteral(QUORVEL_RELAY))
    {}

    bool start() { return m_stage.works() && m_server.listen().ok() && m_chromium.start({base}); }

    CompanionScripting &scripting() { return m_scripting; }

    std::vector<BrowserTab> tabsAt(const QString &host)
    {
        auto tabs = m_scripting.allTabs(browser);
        std::erase_if(tabs, [&](const BrowserTab &tab) { return hostOfUrl(tab.url) != host; });
        return tabs;
    }

    /// Opens `count` pages of a host and waits until they are told of.
    bool open(const QString &host, int count)
    {
        constexpr int atATime = 20;
        const auto before = int(tabsAt(host).size());
        for (int done = 0; done < count; done += atATime) {
            const int now = std::min(atATime, count - done);
            QStringList urls;
            for (int tab = 0; tab < now; ++tab)
                urls.append(u"http://%1/%2"_s.arg(host).arg(m_opened++));
            m_chromium.open(urls);
            if (!wait([&] { return int(tabsAt(host).size()) >= before + done + now; }))
                return false;
        }
        return true;
    }

    void openOne(const QString &url) { m_chromium.open({url}); }

    /// Turns the event loop until the condition holds.
    static bool wait(const std::function<bool()> &condition)
    {
        const QDeadlineTimer deadline(patience);
        while (!condition()) {
            if (deadline.hasExpired())
                return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
        }
        return true;
    }

    /// Lets whatever was begun come to its end.
    static void settle(std::chrono::milliseconds time)
    {
        const QDeadlineTimer deadline(time);
        while (!deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }

    PageServer &pages() { return m_stage.pages(); }

    /// The browser's processes whose command line has that word, or whose program has that path.
    std::vector<pid_t> processes(const QByteArray &word) const
    {
        auto members = m_chromium.processes().members();
        std::erase_if(members, [&](pid_t id) {
            QFile line(u"/proc/%1/cmdline"_s.arg(id));
            return !line.open(QIODevice::ReadOnly) || !line.readAll().contains(word);
        });
        return members;
    }

private:
    BrowserStage m_stage;
    CompanionServer m_server;
    CompanionScripting m_scripting;
    mutable RealBrowser m_chromium;
    int m_opened = 0;
};

/// Ticks of processor time that a process has taken so far, all threads; none where there is no such process.
std::optional<qint64> ticks(pid_t id)
{
    QFile file(u"/proc/%1/stat"_s.arg(id));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto text = file.readAll();
    const auto fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.value(11).toLongLong() + fields.value(12).toLongLong();
}

/// What those that are still there at the end have taken; none where none is.
std::optional<qint64> ticksDuring(const std::vector<pid_t> &processes, const std::function<void()> &meanwhile)
{
    std::map<pid_t, std::optional<qint64>> before;
    for (const auto id : processes)
        before[id] = ticks(id);
    meanwhile();
    std::optional<qint64> sum;
    for (const auto &[id, first] : before) {
        if (const auto last = ticks(id); first && last)
            sum = sum.value_or(0) + *last - *first;
    }
    return sum;
}

void measureLooks(Scene &scene, Figures &figures)
{
    const BrowserInspector inspector(scene.scripting());
    const auto list = inspector.allTabs(browser);
    std::vector<double> copies;
    std::vector<double> lookTimes;
    std::vector<double> frontTimes;
    std::size_t seen = 0; // so that nothing is left out
    for (int round = 0; round < looks; ++round) {
        copies.push_back(timed([&] { seen += std::vector<BrowserTab>(list).size(); }));
        lookTimes.push_back(timed([&] { seen += scene.scripting().allTabs(browser).size(); }));
        frontTimes.push_back(
            timed([&] { seen += std::size_t(scene.scripting().frontTabURL(browser).has_value()); }));
    }
    const double copy = quantile(copies, 0.5);
    const auto against = "a copy of the list (" + std::to_string(seen / looks / 2) + " tabs)";
    figures.hold("all tabs of 500", quantile(lookTimes, 0.5) / copy, against, mostLook);
    figures.hold("front tab of 500", quantile(frontTimes, 0.5) / copy, against, mostFront);
    figures.report("all tabs of 500, median", quantile(lookTimes, 0.5), "ms", "nothing");
    figures.report("a copy of the list, median", copy, "ms", "nothing");
}

std::optional<double> closeThem(Scene &scene)
{
    if (!scene.open(blockedHost, toClose))
        return std::nullopt;
    scene.settle(2s);
    const BrowserInspector inspector(scene.scripting());
    const auto tabs = scene.tabsAt(blockedHost);
    bool gone = false;
    const double took = timed([&] {
        inspector.closeTabs(tabs, browser);
        gone = scene.wait([&] { return scene.tabsAt(blockedHost).empty(); });
    });
    return gone && int(tabs.size()) == toClose ? std::optional(took) : std::nullopt;
}

std::optional<double> letTheRulerCloseThem(Scene &scene)
{
    if (!scene.open(blockedHost, toClose))
        return std::nullopt;
    scene.settle(2s);
    const auto before = scene.pages().asked().size();
    const auto prefix = u"ruler.test/closed/%1/"_s.arg(toClose);
    QStringList answers;
    scene.openOne(u"http://ruler.test/close/"_s + blockedHost);
    const bool told = scene.wait([&] {
        answers = scene.pages().asked().mid(before).filter(prefix);
        return !answers.isEmpty();
    });
    scene.settle(1s);
    return told ? std::optional(answers.constFirst().mid(prefix.size()).toDouble()) : std::nullopt;
}

bool measureClosing(Scene &scene, Figures &figures)
{
    std::vector<double> ours;
    std::vector<double> rulers;
    for (int round = 0; round < closings; ++round) {
        const auto our = closeThem(scene);
        const auto ruler = letTheRulerCloseThem(scene);
        if (!our || !ruler)
            return false;
        ours.push_back(*our);
        rulers.push_back(*ruler);
    }
    const double our = quantile(ours, 0.5);
    const double ruler = quantile(rulers, 0.5);
    figures.hold("closing 20 of 500 tabs, from the order to the last one gone", our / ruler,
                 "an extension that closes 20 at once", mostClosing);
    figures.report("closing 20 of 500 tabs, median", our, "ms", "nothing");
    figures.report("an extension closing 20 of 500, median", ruler, "ms", "nothing");
    return true;
}

bool measureIdle(Scene &scene, Figures &figures)
{
    scene.settle(40s); // the ruler, which has nothing to do any more, is ended by its browser
    const auto relays = scene.processes(QStringLiteral(QUORVEL_RELAY).toUtf8());
    const auto extensions = scene.processes("--extension-process");
    std::optional<qint64> ofRelay;
    std::optional<qint64> ofExtension;
    const auto quiet = [](std::optional<qint64> taken) { return taken && double(*taken) <= mostTicks; };
    // Now and then the browser tidies up in its own processes; what the extension did would be there each
    // time.
    for (int minute = 0; minute < 2 && !(quiet(ofRelay) && quiet(ofExtension)); ++minute) {
        ofRelay = ticksDuring(
            relays, [&] { ofExtension = ticksDuring(extensions, [&] { scene.settle(idleTime); }); });
    }
    if (relays.size() != 1 || !ofRelay || !ofExtension)
        return false;
    const auto against = "one tick (1/100 s) of processor time";
    figures.hold("relay in an idle minute", double(*ofRelay), against, mostTicks);
    figures.hold("extension in an idle minute", double(*ofExtension), against, mostTicks);
    return true;
}

} // namespace

int main(int count, char **words)
{
    QCoreApplication application(count, words);
    if (count < 2) {
        fprintf(stderr, "usage: browserTabs FILE\n");
        return 2;
    }
    Scene scene;
    Figures figures;
    const auto step = [](bool done, const char *what) {
        if (!done)
            fprintf(stderr, "browserTabs: %s failed\n", what);
        return done;
    };
    if (!step(scene.start(), "starting Chromium") ||
        !step(scene.wait([&] { return !scene.tabsAt(u"base.test"_s).empty(); }), "seeing the first tab") ||
        !step(scene.open(u"page.test"_s, allOpen - 1), "opening the tabs"))
        return 1;
    scene.settle(3s);
    measureLooks(scene, figures);
    if (!step(measureClosing(scene, figures), "closing tabs") ||
        !step(measureIdle(scene, figures), "the idle minute"))
        return 1;
    return figures.writeTo(words[1]);
}
