#pragma once

#include "Availability.h"
#include "BrowserCoverage.h"
#include "publishedField.h"

#include <QList>
#include <QObject>

/// What this desktop lets the program do and asks of it, for the interface to show. The controller keeps its
/// own fields; these are about the means, not the session.
class DesktopSupport : public QObject
{
    Q_OBJECT
    using Self = DesktopSupport;

    // clang-format off
    QUORVEL_PUBLISHED(Availability, applications, Applications, Availability()) ///< seeing and quitting applications
    QUORVEL_PUBLISHED(Availability, idle, Idle, Availability())                 ///< knowing the idle time
    QUORVEL_PUBLISHED(Availability, browsers, Browsers, Availability())         ///< seeing and closing tabs
    QUORVEL_PUBLISHED(QList<BrowserCoverage>, browserCoverage, BrowserCoverage, QList<BrowserCoverage>()) ///< each running browser, by name
    QUORVEL_PUBLISHED(Availability, statusItem, StatusItem, Availability())     ///< showing the status item
    QUORVEL_PUBLISHED(Availability, preferences, Preferences, Availability())   ///< keeping counters, choices and the sign-in
    QUORVEL_PUBLISHED(bool, reducedMotion, ReducedMotion, false)                ///< the user has asked for less movement
    // clang-format on

public:
    using QObject::QObject;

    void setApplications(const Availability &availability) { m_applications = availability; }
    void setIdle(const Availability &availability) { m_idle = availability; }
    void setBrowsers(const Availability &availability) { m_browsers = availability; }
    void setBrowserCoverage(const QList<BrowserCoverage> &coverage) { m_browserCoverage = coverage; }
    void setStatusItem(const Availability &availability) { m_statusItem = availability; }
    void setPreferences(const Availability &availability) { m_preferences = availability; }
    void setReducedMotion(bool reduced) { m_reducedMotion = reduced; }
};
