#include "platformChoice.h"

#include "CompanionCoverage.h"
#include "CompanionScripting.h"
#include "CompanionServer.h"
#include "DesktopUrlOpener.h"
#include "FileCalls.h"
#include "FolderRecordFiles.h"
#include "NetworkBackendClient.h"
#include "NoApplications.h"
#include "NoIdle.h"
#include "PortalMotion.h"
#include "SystemClock.h"
#include "TextPreferences.h"
#include "X11Applications.h"
#include "X11Connection.h"
#include "X11Idle.h"
#include "baseFolders.h"
#include "hostManifests.h"
#include "schemeHandler.h"
#include "sessionBus.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcPlatform, "quorvel.app.platform")

namespace {

/// What stands beside the program, installed or in a build folder. `name` counts from the prefix.
QString installedPath(const QString &name)
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../"_s + name);
}

/// On XWayland the X server knows neither the focus nor the idle time, so a Wayland session rules X11 out.
bool isX11Session()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void chooseDesktop(PlatformAdapters &adapters)
{
    if (isX11Session()) {
        const auto connection = std::make_shared<X11Connection>();
        adapters.applications = std::make_unique<X11Applications>(connection, ApplicationPlaces());
        adapters.idle = std::make_unique<X11Idle>(connection);
        return;
    }
    adapters.applications = std::make_unique<NoApplications>();
    adapters.idle = std::make_unique<NoIdle>();
}

void chooseBrowsers(PlatformAdapters &adapters, const QByteArray &folder)
{
    auto server = std::make_unique<CompanionServer>(folder);
    if (const auto listening = server->listen(); !listening)
        qCWarning(lcPlatform).noquote() << "browsers cannot reach the program:" << listening.reason();
    adapters.browsers = std::make_unique<CompanionScripting>(*server);
    const auto tellBrowsersOfTheRelay = [] {
        writeHostManifests(FileCalls::system(),
                           hostManifestPlaces(installedPath(u"libexec/quorvel/quorvel-companion-relay"_s)));
    };
    tellBrowsersOfTheRelay();
    const auto extension = installedPath(u"share/quorvel/companion"_s);
    adapters.coverage = std::make_unique<CompanionCoverage>(
        *server, CompanionCoverage::Places{extension, extension + u"/manifest.json"_s},
        tellBrowsersOfTheRelay);
    adapters.browserConnections = std::move(server);
}

} // namespace

PlatformAdapters choosePlatform(const QByteArray &folder)
{
    PlatformAdapters adapters;
    adapters.clock = std::make_unique<SystemClock>();
    adapters.preferences = std::make_unique<TextPreferences>(preferencesFolder());
    adapters.files = std::make_unique<FolderRecordFiles>(dataFolder());
    adapters.backend = std::make_unique<NetworkBackendClient>(*adapters.preferences);
    adapters.urls = std::make_unique<DesktopUrlOpener>();
    adapters.motion = std::make_unique<PortalMotion>(sessionBusIfThere());
    chooseBrowsers(adapters, folder);
    chooseDesktop(adapters);
    registerSchemeHandler(FileCalls::system(), schemeHandlerPlaces(QCoreApplication::applicationFilePath()));
    return adapters;
}
