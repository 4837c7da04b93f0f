#pragma once

#include "PreviewWindow.h"
#include "windowTexts.h"

/// How well a text can be read where it stands.
struct TextContrast
{
    WindowText text;
    int letterPixels = 0; ///< how many pixels of it were drawn
    double lowest = 0;    ///< the lowest WCAG ratio, 1 to 21, of its colour to a pixel under its letters
};

/// The WCAG ratio of two opaque colours, 1 to 21.
double contrastRatio(const QColor &left, const QColor &right);

/// `top` as it looks on an opaque colour.
QColor laidOver(const QColor &top, const QColor &below);

/// Whether a text is large in the sense of WCAG: from 24 pixels, or 18.66 in bold.
bool isLarge(const QFont &font);

/// The ratio that WCAG 2.1 AA wants for a text.
double wantedRatio(const QFont &font);

/// Measures every text in sight: the window is drawn with its texts and without, so that what is under a
/// letter is what is really drawn there. Texts of which less than a quarter of a line is in sight are left
/// out.
Result<QList<TextContrast>> measureTexts(PreviewWindow &window);

/// How well the mark of the control that has the keyboard stands out.
struct RingContrast
{
    int pixels = 0;    ///< that the mark changed clearly
    double lowest = 0; ///< the weakest side's ratio, 1 to 21, to what is around the mark
};

/// Measures the mark around `place`, in logical pixels, in pictures with it and without. On each of the four
/// sides its strongest line counts; the weakest of these is the result.
RingContrast measureRing(const QImage &with, const QImage &without, const QRectF &place);
