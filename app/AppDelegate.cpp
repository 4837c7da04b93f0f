#include "AppDelegate.h"

#include "quorvelUrls.h"
#include "sessionBus.h"
#include "setUpInterface.h"
#include "statusTitle.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMenu>
#include <QQmlEngine>
#include <QQuickView>
#include <QScreen>
#include <QSystemTrayIcon>

#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Q_LOGGING_CATEGORY(lcDelegate, "quorvel.app.delegate")

namespace {

constexpr QSize windowSize(1180, 820);
constexpr QSize smallestWindow(900, 640);

/// Status ticks between two looks at what the desktop offers, that is seconds.
constexpr int supportInterval = 5;

} // namespace

AppDelegate::AppDelegate(PlatformAdapters adapters, QObject *parent)
    : QObject(parent)
    , m_adapters(std::move(adapters))
    , m_controller(m_adapters.ports())
{}

AppDelegate::~AppDelegate()
{
    if (m_window)
        m_window->disconnect(this); // its end hides it
}

bool AppDelegate::applicationDidFinishLaunching()
{
    if (!createWindow())
        return false;
    createStatusItem();
    updateDesktopSupport();
    followMotionPreference();
    followStatusPlace();
    showWindow();

    m_statusTimer.setInterval(1s);
    connect(&m_statusTimer, &QTimer::timeout, this, [this] {
        updateStatusItem();
        if (++m_ticksSinceSupport >= supportInterval)
            updateDesktopSupport();
    });
    m_statusTimer.start();
    return true;
}

bool AppDelegate::createWindow()
{
    setUpDrawing();
    m_window = std::make_unique<QQuickView>();
    setUpInterface(*m_window->engine());
    connect(m_window->engine(), &QQmlEngine::quit, this, &AppDelegate::quit);
    m_window->setColor(QColor(9, 10, 18)); // what shows before the first frame
    m_window->setPersistentSceneGraph(false);
    m_window->setPersistentGraphics(false);
    connect(m_window.get(), &QWindow::visibilityChanged, this, &AppDelegate::giveMemoryBackWhileHidden);
    m_window->setTitle(u"Quorvel"_s);
    m_window->setResizeMode(QQuickView::SizeRootObjectToView);
    m_window->setMinimumSize(smallestWindow);
    m_window->setInitialProperties({{u"controller"_s, QVariant::fromValue(&m_controller)},
                                    {u"desktopSupport"_s, QVariant::fromValue(&m_desktopSupport)}});
    m_window->setSource(QUrl(u"qrc:/qt/qml/Quorvel/Ui/ContentView.qml"_s));
    if (m_window->status() != QQuickView::Ready) {
        for (const auto &error : m_window->errors())
            qCCritical(lcDelegate).noquote() << error.toString();
        return false;
    }
    const auto place = m_window->screen()->availableGeometry();
    QRect frame(QPoint(), windowSize.boundedTo(place.size()).expandedTo(smallestWindow));
    frame.moveCenter(place.center());
    m_window->setGeometry(frame);
    return true;
}

void AppDelegate::createStatusItem()
{
    m_menu = std::make_unique<QMenu>();
    m_menu->addAction(u"Show Quorvel"_s, this, &AppDelegate::showWindow);
    m_menu->addAction(u"Start Study"_s, this, &AppDelegate::startStudyFromMenu);
    m_menu->addAction(u"Lock Now"_s, this, &AppDelegate::lockNowFromMenu);
    m_menu->addAction(u"Stop Quorvel"_s, this, &AppDelegate::stopQuorvelFromMenu);
    m_menu->addSeparator();
    m_menu->addAction(u"Quit"_s, QKeySequence(u"Ctrl+Q"_s), this, &AppDelegate::quit);

    m_statusItem = std::make_unique<QSystemTrayIcon>();
    m_statusItem->setContextMenu(m_menu.get());
    connect(m_statusItem.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger)
                    showWindow();
            });
    m_statusLook =
        statusLook(m_controller.mode(), m_controller.studyRemaining(), m_controller.breakRemaining());
    m_statusItem->setIcon(drawStatusIcon(m_statusLook));
    updateStatusItem();
    m_statusItem->show();
}

void AppDelegate::updateStatusItem()
{
    if (!m_statusItem)
        return;
    const auto mode = m_controller.mode();
    const auto study = m_controller.studyRemaining();
    const auto rest = m_controller.breakRemaining();
    const auto title = statusTitle(mode, study, rest);
    if (m_statusItem->toolTip() != title)
        m_statusItem->setToolTip(title); // a StatusNotifierItem shows it as its title too
    const auto look = statusLook(mode, study, rest);
    if (look == m_statusLook)
        return;
    m_statusLook = look;
    m_statusItem->setIcon(drawStatusIcon(look));
}

void AppDelegate::showWindow()
{
    if (!m_window)
        return;
    if (m_window->windowStates().testFlag(Qt::WindowMinimized))
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void AppDelegate::giveMemoryBackWhileHidden(QWindow::Visibility visibility)
{
    if (visibility != QWindow::Hidden)
        return;
    m_window->releaseResources();
    // Once what the frames needed has gone; the allocator would keep its pages for the next ones.
    QTimer::singleShot(1s, this, [this] {
        if (!m_window->isVisible())
            malloc_trim(0);
    });
}

void AppDelegate::startStudyFromMenu()
{
    m_controller.startStudy();
    showWindow();
}

void AppDelegate::lockNowFromMenu()
{
    m_controller.lockNow();
}

void AppDelegate::stopQuorvelFromMenu()
{
    m_controller.stopQuorvel();
}

void AppDelegate::quit()
{
    QCoreApplication::exit(0);
}

void AppDelegate::openUrls(const QStringList &urls)
{
    // Signing in through the browser ends in such an address; its text is a secret and is not logged.
    for (const auto &url : quorvelUrls(urls))
        m_controller.handleAuthCallback(url);
    showWindow();
}

void AppDelegate::updateDesktopSupport()
{
    m_ticksSinceSupport = 0;
    m_desktopSupport.setApplications(m_adapters.applications->availability());
    m_desktopSupport.setIdle(m_adapters.idle->availability());
    m_desktopSupport.setBrowsers(m_adapters.browsers->availability());
    const auto coverage = m_adapters.coverage->coverage(m_adapters.applications->running());
    m_desktopSupport.setBrowserCoverage({coverage.begin(), coverage.end()});
    m_desktopSupport.setPreferences(m_adapters.preferences->availability());
}

void AppDelegate::followMotionPreference()
{
    const auto follow = [this] {
        m_desktopSupport.setReducedMotion(m_adapters.motion->motion() == MotionPreference::Motion::Reduced);
    };
    m_adapters.motion->whenChanged(follow);
    follow();
}

void AppDelegate::followStatusPlace()
{
    m_statusPlace =
        std::make_unique<StatusPlace>(sessionBusIfThere(), &QSystemTrayIcon::isSystemTrayAvailable);
    const auto follow = [this] { m_desktopSupport.setStatusItem(m_statusPlace->availability()); };
    connect(m_statusPlace.get(), &StatusPlace::changed, this, follow);
    follow();
}
