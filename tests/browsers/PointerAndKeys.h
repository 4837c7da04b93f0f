#pragma once

#include "VirtualDesktop.h"

/// What a person does on a virtual desktop with pointer and keyboard. Windows are named by a part of their
/// title that only they have.
class PointerAndKeys
{
public:
    explicit PointerAndKeys(const VirtualDesktop &desktop)
        : m_desktop(desktop)
    {}

    /// Whether such a window can be seen.
    bool sees(const QString &title) const { return !window(title).isEmpty(); }

    /// The title of the window that has the keyboard.
    QString front() const;

    /// Brings the window to the front, as a click on its entry in a task bar does, and waits until it is
    /// there.
    void bringToFront(const QString &title) const;

    /// Clicks into the middle of the window, which has to be in front.
    void clickInto(const QString &title) const;

    /// Presses a key as xdotool names it, for example "ctrl+w", for the window that has the keyboard.
    void press(const QString &key) const;

private:
    QString window(const QString &title) const;

    const VirtualDesktop &m_desktop;
};
