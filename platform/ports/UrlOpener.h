#pragma once

#include <QUrl>

/// Opens an address in the user's default browser.
class UrlOpener
{
public:
    virtual ~UrlOpener() = default;

    /// Returns at once; whether a browser opens is not told.
    virtual void open(const QUrl &url) = 0;
};
