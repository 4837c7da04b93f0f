#pragma once

#include "SystemIdle.h"
#include "X11Connection.h"

#include <memory>

/// Idle time from the screen-saver extension of the X server, in steps of a millisecond.
class X11Idle : public SystemIdle
{
public:
    explicit X11Idle(std::shared_ptr<X11Connection> connection);

    Availability availability() const override;
    std::optional<std::chrono::nanoseconds> sinceLastInput() const override;

private:
    std::shared_ptr<X11Connection> m_connection;
};
