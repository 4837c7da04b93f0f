#pragma once

#include "RunningApplications.h"
#include "SystemIdle.h"

/// A desktop on which a contract test starts and ends applications: a fake one or a real one. Each call
/// returns when the desktop shows its effect, or soon before.
class ContractDesktop
{
public:
    virtual ~ContractDesktop() = default;

    virtual RunningApplications &applications() = 0;
    virtual SystemIdle &idle() = 0;

    /// Whether this desktop can tell which application is in front.
    virtual bool tellsFrontmost() const { return true; }

    enum class Manner { Polite, Stubborn };
    virtual qint32 start(const QString &name, Manner manner) = 0; ///< gives its process number
    virtual void end(qint32 processId) = 0;
    virtual void bringToFront(qint32 processId) = 0;
};
