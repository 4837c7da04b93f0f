#pragma once

#include "previewOptions.h"

#include <QImage>

/// One picture of the set that docs/pictures holds.
struct SetPicture
{
    QString name;          ///< of the file, with its ending
    QStringList arguments; ///< of quorvel-preview, without --output
};

/// The seven sections and the sign-in screen in both languages, and the focus page in the
/// smallest window and in a large one.
QList<SetPicture> pictureSet();

/// By how much a channel of a calm picture may differ from what was drawn, of 255.
inline constexpr int mostCalmed = 2;

/// The picture in a form that PNG compresses well: a pixel takes over the colour of its neighbour to the left
/// or above where no channel differs by more than mostCalmed. This takes away the dither of the background,
/// which is noise to the compressor, and the finest steps of its gradients.
QImage calm(const QImage &picture);

/// Writes a PNG as small as it gets.
Result<> writePicture(const QImage &picture, const QString &path);
