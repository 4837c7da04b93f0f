#pragma once

#include "DesktopSupport.h"
#include "QuorvelController.h"
#include "StatusPlace.h"
#include "platformChoice.h"
#include "statusIcon.h"

#include <QObject>
#include <QTimer>
#include <QWindow>

#include <memory>

class QMenu;
class QQuickView;
class QSystemTrayIcon;

/// The application's delegate: owns the one controller, the main window, and the status item that shows the
/// session and offers its commands without the window.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Makes the controller, which loads all that is stored and may save.
    explicit AppDelegate(PlatformAdapters adapters, QObject *parent = nullptr);
    ~AppDelegate() override;

    /// Builds the window, the status item and the status timer, and shows the window. False where the window
    /// cannot be built; the reason is logged.
    bool applicationDidFinishLaunching();

    void createStatusItem();
    void updateStatusItem();

    /// Brings the main window to the front and gives it the focus.
    void showWindow();

    void startStudyFromMenu();
    void lockNowFromMenu();
    void stopQuorvelFromMenu();
    void quit();

    /// Takes the addresses the system was asked to open with this program, and shows the window whatever they
    /// are.
    void openUrls(const QStringList &urls);

private:
    bool createWindow();
    void updateDesktopSupport();
    void followMotionPreference();
    void followStatusPlace();
    void giveMemoryBackWhileHidden(QWindow::Visibility visibility);

    PlatformAdapters m_adapters;
    QuorvelController m_controller;
    DesktopSupport m_desktopSupport;
    std::unique_ptr<QQuickView> m_window;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_statusItem;
    std::unique_ptr<StatusPlace> m_statusPlace;
    StatusLook m_statusLook;
    QTimer m_statusTimer;
    int m_ticksSinceSupport = 0;
};
