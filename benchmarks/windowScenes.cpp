#include "windowScenes.h"

#include "ControllerHarness.h"
#include "DesktopSupport.h"
#include "measurement.h"
#include "setUpInterface.h"

#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

#include <atomic>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Json = nlohmann::json;

Q_IMPORT_QML_PLUGIN(Quorvel_UiPlugin)

namespace {

constexpr QSize windowSize(1180, 820);
constexpr int secondsMeasured = 60;
constexpr int hiddenSeconds = 30;
constexpr int framesScrolled = 300;
constexpr int pixelsAFrame = 60; // about as fast as a wheel is turned
constexpr int cardsScrolled = 100'000;
constexpr int longestWait = 20'000; // milliseconds; only for what is broken
constexpr int cardsSection = 3;

/// The frames of a window, counted as they are drawn.
class Frames : public QObject
{
public:
    explicit Frames(QQuickWindow &window)
    {
        connect(
            &window, &QQuickWindow::afterRendering, this, [this] { ++m_drawn; }, Qt::DirectConnection);
        connect(&window, &QQuickWindow::frameSwapped, this, [this] {
            ++m_seen;
            m_loop.quit();
        });
        connect(&m_patience, &QTimer::timeout, this, [] { qFatal("window: no frame came"); });
    }

    int drawn() const { return m_drawn; }

    /// Until a frame is on the screen that was asked for by `change`.
    void await(const std::function<void()> &change)
    {
        const auto before = m_seen;
        change();
        m_patience.start(longestWait);
        while (m_seen == before)
            m_loop.exec(QEventLoop::WaitForMoreEvents);
        m_patience.stop();
    }

private:
    std::atomic<int> m_drawn = 0;
    int m_seen = 0;
    QEventLoop m_loop;
    QTimer m_patience;
};

/// Nothing but what comes by itself.
void idle(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Milliseconds of processor that the process has had, on all its threads.
double processorTime()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto milliseconds = [](timeval time) {
        return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
    };
    return milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
}

double residentMegabytes()
{
    QFile file(u"/proc/self/statm"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("window: the memory cannot be read");
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6;
}

double millisecondsSinceTheStart()
{
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
    return double(now - qEnvironmentVariable("QUORVEL_STARTED").toLongLong()) / 1e3;
}

/// A window that shows a piece of QML that needs nothing of ours.
std::unique_ptr<QQuickView> plainWindow(const char *qml, const QVariantMap &properties = {})
{
    auto window = std::make_unique<QQuickView>();
    setUpInterface(*window->engine());
    window->setColor(QColor(9, 10, 18));
    QQmlComponent component(window->engine());
    component.setData(qml, QUrl(u"plain.qml"_s));
    auto *root = qobject_cast<QQuickItem *>(component.createWithInitialProperties(properties));
    if (!root)
        qFatal("window: %s", qPrintable(component.errorString()));
    root->setParentItem(window->contentItem());
    root->setSize(windowSize);
    window->resize(windowSize);
    return window;
}

/// The real root view over a real controller, on a desktop of fakes.
class RealWindow
{
public:
    RealWindow(int cards, int tasks)
    {
        m_harness.storeCards(someCards(cards));
        m_harness.storeTasks(someTasks(tasks));
        m_harness.start().continueAsGuest();
        m_harness.controller->startStudy();
        if (m_harness.controller->mode() != QuorvelController::Mode::Studying)
            qFatal("window: the session did not start");
        setUpInterface(*window.engine());
        window.setColor(QColor(9, 10, 18));
        window.setResizeMode(QQuickView::SizeRootObjectToView);
        window.setInitialProperties({{u"controller"_s, QVariant::fromValue(m_harness.controller.get())},
                                     {u"desktopSupport"_s, QVariant::fromValue(&m_support)}});
        window.setSource(QUrl(u"qrc:/qt/qml/Quorvel/Ui/ContentView.qml"_s));
        if (window.status() != QQuickView::Ready)
            qFatal("window: the root view does not load");
        window.resize(windowSize);
    }

    /// A second passes in which the user types now and then.
    void tick()
    {
        m_harness.clock.advance(1s);
        m_harness.idle.since = std::chrono::seconds(++m_seconds % 7);
        m_harness.controller->tick();
        m_harness.preferences.writes.clear();
    }

    /// Whether the digits of the clock roll when they change.
    void setCounting(bool counting)
    {
        for (auto *item : window.rootObject()->findChildren<QQuickItem *>()) {
            if (item->metaObject()->indexOfProperty("counting") >= 0)
                item->setProperty("counting", counting && item->property("pixelSize").toInt() == 68);
        }
    }

    QVariant cardModel() const { return m_harness.controller->property("studyCardModel"); }

private:
    static std::deque<StudyCard> someCards(int count)
    {
        const QDateTime began(QDate(2025, 9, 1), QTime(8, 0), Qt::UTC);
        std::deque<StudyCard> cards;
        for (int number = 0; number < count; ++number) {
            StudyCard card;
            card.id = QUuid::createUuid();
            card.topic = u"Topic %1"_s.arg(number % 40);
            card.prompt = u"Question %1: what is a derivative?"_s.arg(number);
            card.expectedAnswer = u"answer %1"_s.arg(number);
            card.createdAt = began.addSecs(number);
            cards.push_back(card);
        }
        return cards;
    }

    static std::deque<StudyTask> someTasks(int count)
    {
        std::deque<StudyTask> tasks;
        for (int number = 0; number < count; ++number) {
            StudyTask task;
            task.id = QUuid::createUuid();
            task.title = u"Solve problem %1"_s.arg(number);
            task.createdAt = QDateTime(QDate(2025, 9, 1), QTime(8, 0), Qt::UTC);
            tasks.push_back(task);
        }
        return tasks;
    }

    ControllerHarness m_harness;
    DesktopSupport m_support;
    int m_seconds = 0;

public:
    QQuickView window; // goes first, since it shows the others
};

/// When the first frame was on the screen, and what the process holds once nothing moves any more. The time
/// is taken on the thread that draws: the window's own goes on at once with what lies below the first frame.
Json startOf(QQuickWindow &&window)
{
    std::atomic<double> start = 0;
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window, [&start] { start = millisecondsSinceTheStart(); },
        static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::SingleShotConnection));
    Frames frames(window);
    frames.await([&] { window.show(); });
    idle(700ms);
    return {{"start", start.load()}, {"memory", residentMegabytes()}};
}

/// The least that is still a window of Qt Quick: an engine, a view, and an item that draws nothing.
Json bareWindow()
{
    return startOf(std::move(*plainWindow("import QtQuick\nItem {}")));
}

/// The same after it was seen and hidden, until the program is ended from outside.
[[noreturn]] void bareAndHidden()
{
    const auto window = plainWindow("import QtQuick\nItem {}");
    Frames frames(*window);
    frames.await([&] { window->show(); });
    window->hide();
    while (true)
        idle(std::chrono::hours(1));
}

/// Processor time and frames of each change, after the first few.
Json costOf(QQuickWindow &window, int changes, const std::function<void()> &change,
            std::chrono::milliseconds rest)
{
    Frames frames(window);
    frames.await([&] { window.show(); });
    idle(500ms);
    for (int warmth = 0; warmth < 5; ++warmth)
        frames.await(change);
    idle(rest);
    const auto processor = processorTime();
    const auto drawn = frames.drawn();
    for (int number = 0; number < changes; ++number) {
        frames.await(change);
        idle(rest);
    }
    return {{"processor", (processorTime() - processor) / changes},
            {"frames", double(frames.drawn() - drawn) / changes}};
}

Json ticks(bool counting)
{
    RealWindow real(12, 5);
    real.setCounting(counting);
    return costOf(
        real.window, secondsMeasured, [&] { real.tick(); }, counting ? 400ms : 20ms);
}

/// The least that a second could cost: the background of the window with one panel on it is one picture in
/// the graphics memory, and over it stands one label of the size of the clock, whose text changes.
Json label()
{
    const auto window = plainWindow(R"(
        import QtQuick
        import Quorvel.Ui
        Item {
            property alias text: clock.text
            Item {
                anchors.fill: parent
                layer.enabled: true
                AppBackground { anchors.fill: parent }
                PanelSurface { anchors.fill: parent; anchors.margins: 30 }
            }
            Text {
                id: clock
                x: 50; y: 100
                font.pixelSize: 68
                font.bold: true
                color: "#a154ff"
            }
        })");
    auto *root = window->contentItem()->childItems().value(0);
    int seconds = 1500;
    const auto change = [&] {
        --seconds;
        root->setProperty("text", u"%1:%2"_s.arg(seconds / 60).arg(seconds % 60, 2, 10, QChar(u'0')));
    };
    return costOf(*window, secondsMeasured, change, 20ms);
}

Json hidden()
{
    RealWindow real(12, 5);
    Frames frames(real.window);
    frames.await([&] { real.window.show(); });
    real.setCounting(true);
    real.tick();
    real.window.hide();
    idle(500ms);
    const auto drawn = frames.drawn();
    const auto processor = processorTime();
    for (int second = 0; second < hiddenSeconds; ++second) {
        real.tick();
        idle(50ms);
    }
    return {{"frames", frames.drawn() - drawn}, {"processor", (processorTime() - processor) / hiddenSeconds}};
}

/// The 95th of 100 frames while a list goes by, as from the change to the picture on the screen.
Json scrolling(QQuickWindow &window, QQuickItem &list)
{
    Frames frames(window);
    if (!window.isVisible())
        frames.await([&] { window.show(); });
    idle(500ms);
    double y = list.property("contentY").toDouble();
    const auto step = [&] {
        y += pixelsAFrame;
        list.setProperty("contentY", y);
    };
    for (int warmth = 0; warmth < 30; ++warmth)
        frames.await(step);
    std::vector<double> times;
    const auto processor = processorTime();
    for (int number = 0; number < framesScrolled; ++number)
        times.push_back(timed([&] { frames.await(step); }));
    return {{"frame", quantile(times, 0.95)}, {"processor", (processorTime() - processor) / framesScrolled}};
}

QQuickItem *longList(const QQuickItem *root)
{
    for (auto *item : root->findChildren<QQuickItem *>()) {
        if (item->inherits("QQuickListView") && item->property("count").toInt() == cardsScrolled)
            return item;
    }
    qFatal("window: there is no list of all cards");
}

Json cards()
{
    RealWindow real(cardsScrolled, 5);
    Frames frames(real.window);
    frames.await([&] { real.window.show(); });
    real.window.rootObject()->setProperty("selection", cardsSection);
    idle(500ms);
    auto *list = longList(real.window.rootObject());
    list->setProperty("contentY", 2000); // past what stands over the rows
    idle(500ms);
    QQuickItem *row = nullptr;
    QMetaObject::invokeMethod(list, "itemAt", Q_RETURN_ARG(QQuickItem *, row),
                              Q_ARG(qreal, list->width() / 2),
                              Q_ARG(qreal, list->property("contentY").toDouble() + 300));
    if (!row)
        QMetaObject::invokeMethod(list, "itemAt", Q_RETURN_ARG(QQuickItem *, row),
                                  Q_ARG(qreal, list->width() / 2),
                                  Q_ARG(qreal, list->property("contentY").toDouble() + 320));
    if (!row)
        qFatal("window: there are no rows");
    auto figures = scrolling(real.window, *list);
    figures["rowHeight"] = row->height();
    return figures;
}

/// The least that a list of the same rows could cost: a rectangle with the same four texts each, and no
/// layout.
Json list(double rowHeight)
{
    RealWindow real(cardsScrolled, 0); // for its model alone
    const auto window = plainWindow(R"(
        import QtQuick
        ListView {
            id: list
            required property var cards
            required property real rowHeight
            model: cards
            spacing: 10
            reuseItems: true
            delegate: Rectangle {
                required property var card
                width: list.width
                height: list.rowHeight
                color: "#1a1a22"
                Text { x: 14; y: 14; color: "white"; font.pixelSize: 12; font.bold: true; text: card.topic }
                Text { x: 14; y: 32; color: "white"; font.pixelSize: 16; font.weight: 600; text: card.prompt }
                Text {
                    x: 14; y: 56; color: "white"; font.pixelSize: 12
                    text: "OK " + card.correctCount + " / Miss " + card.wrongCount
                }
                Text {
                    x: list.width - 100; y: 40; color: "white"; font.pixelSize: 14; font.weight: 600
                    text: "Delete"
                }
            }
        })",
                                    {{u"cards"_s, real.cardModel()}, {u"rowHeight"_s, rowHeight}});
    auto *view = window->contentItem()->childItems().value(0);
    return scrolling(*window, *view);
}

} // namespace

Json showScene(const std::string &scene, double rowHeight)
{
    if (scene == "bareInSoftware" || scene == "emptyInSoftware")
        QQuickWindow::setSceneGraphBackend(u"software"_s);
    char name[] = "window";
    char *words[] = {name, nullptr};
    int count = 1;
    const QGuiApplication application(count, words);
    if (scene != "bare" && scene != "bareInSoftware" && scene != "bareAndHidden" && scene != "label" &&
        scene != "list")
        setUpDrawing(); // the others are Qt Quick as it comes
    if (scene == "full")
        return startOf(RealWindow(12, 5).window);
    if (scene == "empty" || scene == "emptyInSoftware")
        return startOf(RealWindow(0, 0).window);
    if (scene == "bare" || scene == "bareInSoftware")
        return bareWindow();
    if (scene == "ticks" || scene == "counting")
        return ticks(scene == "counting");
    if (scene == "bareAndHidden")
        bareAndHidden();
    if (scene == "label")
        return label();
    if (scene == "hidden")
        return hidden();
    if (scene == "cards")
        return cards();
    if (scene == "list")
        return list(rowHeight);
    qFatal("window: there is no scene %s", scene.c_str());
}
