#pragma once

#include <QByteArray>

#include <optional>

namespace inkory
{

/// What a JPEG file says of itself in its markers, without decoding it.
struct JpegStructure
{
    int width = 0;
    int height = 0;
    int componentCount = 0;
    int bitsPerComponent = 0;
    /// Its components are named R, G, B instead of being numbered: not every reader knows then that they are no YCbCr.
    bool hasComponentsNamedRgb = false;
    /// Huffman coding, baseline or progressive: what every reader knows.
    bool hasCommonCoding = false;
    /// Decoders hold the coefficients of the whole picture (progressive, or one scan per component), not only some
    /// lines.
    bool isDecodedAsAWhole = false;
    /// The position behind the end marker; nothing where the file is cut off before it.
    std::optional<qsizetype> end;
    /// JFIF's density in dots per inch; 0 where none is stated.
    double horizontalDpi = 0;
    double verticalDpi = 0;
};

/// Walks the markers. Nothing if the bytes do not begin as a JPEG file or are cut off before the picture's own data.
std::optional<JpegStructure> readJpegStructure(const QByteArray &bytes);

/// The file without what tells of its origin: EXIF and other application segments and comments go, with everything
/// after the end marker. What decides how it looks stays: APP0 (JFIF), APP14 (colour transform) and a colour profile in
/// APP2. Empty if the file is not a whole JPEG.
QByteArray jpegWithoutMetadata(const QByteArray &bytes);

} // namespace inkory
