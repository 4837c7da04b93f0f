#pragma once

#include "PreviewScene.h"

#include <QImage>
#include <QQuickView>

/// The window of the program over a scene.
class PreviewWindow
{
public:
    /// How it looks from the start; may change later through view().
    PreviewWindow(PreviewScene &scene, ProductSection section, QSize size);

    QQuickView &view() { return m_view; }
    QQuickItem &content() { return *m_view.rootObject(); }

    void show(ProductSection section);

    /// Waits until everything is loaded and nothing moves any more; fails when that does not come.
    Result<> settle();

    /// Draws all anew as if the window opened only now: where letters stand in the texture that they are
    /// drawn from depends on which came first, and changes their edges by a few of 255.
    Result<> drawAnew();

    /// What is drawn, in physical pixels. Fails where settle() does, and where there is nothing.
    Result<QImage> grab();

    /// Makes the window as tall as the page that it shows, where that is taller.
    Result<> growToPage();

    /// Scrolls the page that is shown, no further than it goes.
    Result<> scrollTo(double distance);

    /// Gives the keyboard to the control of that accessible name, as the Tab key would.
    Result<> focus(const QString &name);

    /// Takes the keyboard from the control that has it.
    void leaveFocus();

private:
    QQuickItem *page();

    QQuickView m_view;
    int m_frames = 0;
};

/// The control that assistive tools find under `name` and that can have the keyboard; null for none.
QQuickItem *controlNamed(QQuickView &view, const QString &name);
