#pragma once

#include "platform/core/Image.h"

#include <QRectF>

class QColor;
class QGlyphRun;
class QRawFont;

namespace inkory
{

/// Letters as a picture.
struct GlyphImage
{
    /// Where it stands, in the coordinates of the glyphs, which run y downward. Empty where nothing is to be seen.
    QRectF rect;
    /// Transparent where there are no letters.
    ImagePtr image;
};

/// Whether a file shows the glyph only as a picture: because its font has colours or no outlines, because the font may
/// not be embedded, or because the font does not have the letter and shows a box. Main thread only.
bool needsImage(const QRawFont &font, quint32 glyph);

/// The glyphs in the colour, or in their own ones, at this many pixels per unit of their coordinates; fewer where they
/// would be more than four million pixels.
GlyphImage glyphImage(const QGlyphRun &glyphs, const QColor &color, double pixelsPerUnit);

} // namespace inkory
