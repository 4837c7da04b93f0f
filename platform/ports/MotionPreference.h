#pragma once

#include <functional>

/// Whether the user has asked the desktop for less movement on the screen, as people do whom movement makes
/// dizzy or distracts.
class MotionPreference
{
public:
    enum class Motion {
        Unknown, ///< this desktop does not say, or not yet
        Full,
        Reduced,
    };

    virtual ~MotionPreference() = default;

    /// What is known now. Never waits for the desktop.
    virtual Motion motion() const = 0;

    /// `changed` is called from the event loop whenever motion() has become another; it takes the place of
    /// the one given before.
    virtual void whenChanged(std::function<void()> changed) = 0;
};
