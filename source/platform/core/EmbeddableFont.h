#pragma once

#include <QFont>

class QRawFont;

namespace inkory
{

// Both are for the main thread.

/// Whether the font's licence bits let the shapes of its letters be stored in a file that others get, as outlines. True
/// for a font that says nothing about it; false for one that is not valid.
bool mayBeEmbedded(const QRawFont &font);

/// The font itself where what it resolves to may be embedded; otherwise the nearest one that may: with the same size,
/// weight and style, and with serifs, without them, or of fixed pitch as the font is. The font itself also where no
/// installed one may be embedded. What was found is kept, so that asking again costs next to nothing.
QFont embeddableFont(const QFont &font);

} // namespace inkory
