#pragma once

#include <QCoreApplication>
#include <QQuickItem>
#include <QQuickView>

#include <memory>

/// Ends a window in such a way that its icons' textures end too. Qt's own renderer deletes the texture of a
/// picture that has gone only with the next frame, so a last one is drawn after all that the window showed
/// has gone; without it they leak.
inline void retireWindow(std::unique_ptr<QQuickView> &window)
{
    if (!window)
        return;
    delete window->rootObject();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // rows that were on their way out
    window->releaseResources(); // drops the pictures nobody shows any more
    window->grabWindow();
    window.reset();
}
