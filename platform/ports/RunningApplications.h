#pragma once

#include "Availability.h"

#include <QString>

#include <optional>
#include <vector>

/// One running application as a person understands the word: a program with its windows and helper processes.
struct RunningApplication
{
    qint32 processId = 0;
    std::optional<QString> localizedName; ///< what the desktop calls it
    std::optional<QString>
        bundleIdentifier;              ///< desktop id without ".desktop", for example "org.mozilla.firefox"
    std::optional<QString> bundlePath; ///< absolute path of the executable, links resolved

    bool operator==(const RunningApplication &) const = default;
};

/// The applications of this user's desktop session, and the two ways to make one quit.
class RunningApplications
{
public:
    virtual ~RunningApplications() = default;

    virtual Availability availability() const = 0;

    /// The application that has the keyboard focus; no value where there is none or it is not known.
    virtual std::optional<RunningApplication> frontmost() = 0;

    /// Every running application, one entry each, in an order that does not change while none starts or ends.
    /// Never the session's own parts (window manager, shell, display server, buses), never another user's
    /// process.
    virtual std::vector<RunningApplication> running() = 0;

    /// Asks the application to quit, as closing its windows would. Returns at once and tells no result; an
    /// application that is gone, or whose process number now belongs to another, is left alone.
    virtual void terminate(const RunningApplication &application) = 0;

    /// Ends the application without asking. Same promises as terminate().
    virtual void forceTerminate(const RunningApplication &application) = 0;
};
