#pragma once

#include "BrowserStage.h"
#include "ProcessFamily.h"

/// A real browser on a stage, with a folder of its own for its profiles and the companion in it. It and all
/// that it started end with the object.
class RealBrowser
{
public:
    enum class Kind { Chromium, ChromiumHeadless, Firefox };

    /// `extension` is the companion's folder (for Chromium there may be others after it, parted by commas),
    /// `relay` the program that the browser starts for it.
    RealBrowser(Kind kind, BrowserStage &stage, const QString &extension, const QString &relay);

    /// The name under which its tabs are asked for.
    QString name() const;

    /// Whether its windows are on the desktop, and its command line reaches a browser that runs.
    bool hasWindows() const { return m_kind != Kind::ChromiumHeadless; }

    /// Starts it with a tab for each address, in one window.
    bool start(const QStringList &urls);

    /// Has the running browser open these, by its own command line: new tabs in the window used last. Without
    /// windows /remote has to be open; then the first window is taken.
    void open(const QStringList &urls);

    /// The same in a new window of a profile; an empty name stands for the first profile.
    void openWindow(const QString &url, const QString &profile = {});

    /// The same in a private window, which needs windows.
    void openPrivately(const QString &url);

    ProcessFamily &processes() { return m_processes; }

    /// What it printed.
    QString log() const { return m_stage.path(m_folder + QStringLiteral(".log")); }

private:
    void install(const QString &extension, const QString &relay) const;
    void writePreferences() const;
    QString program() const;
    QStringList arguments() const;
    QStringList ofProfile(const QString &profile = {}) const;
    void callAgain(const QStringList &words);

    Kind m_kind;
    BrowserStage &m_stage;
    QString m_folder; ///< its name on the stage
    QString m_extension;
    ProcessFamily m_processes;
};
