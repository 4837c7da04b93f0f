#pragma once

#include "UrlOpener.h"

/// Opens addresses as the desktop does: with the program that the user has chosen for them.
class DesktopUrlOpener : public UrlOpener
{
public:
    /// Starts a program of the desktop and does not wait for it. Needs the application object.
    void open(const QUrl &url) override;
};
