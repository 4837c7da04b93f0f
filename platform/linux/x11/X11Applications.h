#pragma once

#include "ApplicationTable.h"
#include "OwnQuit.h"
#include "RunningApplications.h"
#include "X11Connection.h"
#include "X11Windows.h"

#include <memory>

/// The applications of an X11 desktop, from its windows and /proc together. All calls on one thread.
///
/// A program that was started on another display and has no window on this one belongs to another session of
/// the user and is not listed. Without a window manager nothing is known to be frontmost. An application
/// whose process is not known (another host's, another user's) is not listed, since it cannot be ended;
/// frontmost() still names it, with the process number 0.
class X11Applications : public RunningApplications
{
public:
    X11Applications(std::shared_ptr<X11Connection> connection, const ApplicationPlaces &places,
                    OwnQuit ownQuit = OwnQuit::ofThisSession());

    Availability availability() const override;
    std::optional<RunningApplication> frontmost() override;
    std::vector<RunningApplication> running() override;

    /// Asks the application by its own means and closes its windows; one that has neither is asked to end its
    /// main process.
    void terminate(const RunningApplication &application) override;
    void forceTerminate(const RunningApplication &application) override;

private:
    void updateWindows();
    std::optional<ApplicationGroup> refreshed(const RunningApplication &application);

    std::shared_ptr<X11Connection> m_connection;
    X11Windows m_windows;
    std::shared_ptr<ApplicationTable> m_table; ///< shared with answers still under way on the session bus
    OwnQuit m_ownQuit;
};
