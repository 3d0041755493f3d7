#pragma once

#include <string>

class QPDFObjectHandle;

namespace inkory
{

struct OverlayPiece;

/// The number as content streams have it.
std::string contentNumber(double value);

/// The piece's content between a save and a restore, so that the next piece may follow. A line of text says which
/// characters it shows: as one text or, where there are slots, slot by slot, with invisible glyphs in them. For those
/// it takes a font and a glyph that the content shows, both found in `resources`; a line without any stays without its
/// text. Empty for a piece that paints nothing.
std::string pieceContent(const OverlayPiece &piece, const std::string &content, const QPDFObjectHandle &resources);

} // namespace inkory
