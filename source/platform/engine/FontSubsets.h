#pragma once

class QPDF;

namespace inkory
{

/// Makes the embedded fonts of an overlay file what other programs take them for. Their names get a tag ("ABCDEF+Name")
/// that says that each is a part of a font, so that nobody merges or reuses two different parts; it comes from the
/// bytes of the part, so the same part has the same name each time. Their maps to characters lead from the glyph of a
/// space to a space, not to a tabulator. Throws what the library throws.
void finishFontSubsets(QPDF &overlay);

} // namespace inkory
