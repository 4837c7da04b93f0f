#pragma once

#include "BackendClient.h"
#include "BrowserCoverage.h"
#include "BrowserScripting.h"
#include "Clock.h"
#include "MotionPreference.h"
#include "Preferences.h"
#include "QuorvelController.h"
#include "RecordFiles.h"
#include "RunningApplications.h"
#include "SystemIdle.h"
#include "UrlOpener.h"

#include <QByteArray>

#include <memory>

/// The adapters of one run of the program; they outlive the controller that uses them.
struct PlatformAdapters
{
    std::unique_ptr<Clock> clock;
    std::unique_ptr<SystemIdle> idle;
    std::unique_ptr<RunningApplications> applications;
    std::unique_ptr<QObject> browserConnections; ///< what the next two stand on; may be null
    std::unique_ptr<BrowserScripting> browsers;
    std::unique_ptr<BrowserCoverageSource> coverage;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<RecordFiles> files;
    std::unique_ptr<BackendClient> backend; ///< reads the preferences, so it goes before them
    std::unique_ptr<UrlOpener> urls;
    std::unique_ptr<MotionPreference> motion;

    ControllerPorts ports() const
    {
        return {*clock, *idle, *applications, *browsers, *preferences, *files, *backend, *urls};
    }
};

/// The adapters that serve this desktop best. Where nothing serves a port, one takes its place that says so.
/// `folder` is the private folder in which the running program is found; this process holds its lock.
PlatformAdapters choosePlatform(const QByteArray &folder);
