#include "platformChoice.h"

#include "FolderRecordFiles.h"
#include "NoApplications.h"
#include "NoBrowserScripting.h"
#include "NoIdle.h"
#include "SystemClock.h"
#include "TextPreferences.h"
#include "X11Applications.h"
#include "X11Connection.h"
#include "X11Idle.h"
#include "baseFolders.h"

namespace {

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

} // namespace

PlatformAdapters choosePlatform()
{
    PlatformAdapters adapters;
    adapters.clock = std::make_unique<SystemClock>();
    adapters.preferences = std::make_unique<TextPreferences>(preferencesFolder());
    adapters.files = std::make_unique<FolderRecordFiles>(dataFolder());
    adapters.browsers = std::make_unique<NoBrowserScripting>();
    chooseDesktop(adapters);
    return adapters;
}
