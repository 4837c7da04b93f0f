#pragma once

#include <QQuickImageProvider>

/// The icons in any colour: "image://icons/<name>/<colour>", the colour as "rrggbb" or "aarrggbb", the
/// name that of a file or of a character's avatar symbol ("bolt.fill"). Drawn from
/// the vector files at the asked size; an unknown name gives a transparent picture.
class IconProvider : public QQuickImageProvider
{
public:
    IconProvider();

    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

/// The icon `name` in `color`, `side` pixels square; transparent where there is no such icon.
QImage drawIcon(const QString &name, const QColor &color, int side);
