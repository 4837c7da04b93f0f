#pragma once

#include <QColor>
#include <QFont>
#include <QQuickItem>

/// A text that can be seen, or could be if nothing were in its way.
struct WindowText
{
    QQuickItem *item = nullptr;
    QString text;
    QString place; ///< the views around it, outermost first, as "FocusHero/ModePill"
    QColor color;  ///< its own, with what it has of opacity
    QFont font;
    QRectF painted; ///< where its letters are, in the window
    QRectF seen;    ///< what is left of this and of the item's own clipping by what clips around it
    bool enabled = true;
};

enum class Sight {
    Seen, ///< not scrolled out of sight altogether
    All,
};

/// Every text in the window that has letters and is visible.
QList<WindowText> windowTexts(QQuickItem &root, Sight sight = Sight::Seen);

/// The name of the QML file that made an item; empty for items of Qt.
QString viewNameOf(const QQuickItem &item);

/// Where an item can be seen: the window's part that nothing around the item clips away.
QRectF clipAround(const QQuickItem &item);
