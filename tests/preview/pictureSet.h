#pragma once

#include "previewOptions.h"

#include <QImage>

/// One picture of the set that docs/pictures holds.
struct SetPicture
{
    QString name;          ///< of the file, with its ending
    QStringList arguments; ///< of quorvel-preview, without --output
};

/// The seven sections and the sign-in screen in both languages, and the focus page in the smallest window and
/// in a large one.
QList<SetPicture> pictureSet();

/// The picture in a form that PNG compresses well: a pixel takes over the colour of its neighbour above or to
/// the left where no channel differs by more than 1 of 255. This undoes the dither of the background, which
/// is noise to the compressor, and can be seen neither by a person nor by a comparison that allows for it.
QImage withoutDither(const QImage &picture);

/// Writes a PNG as small as it gets.
Result<> writePicture(const QImage &picture, const QString &path);
