#include "platform/engine/ImageFileStructure.h"

#include "platform/engine/JpegStructure.h"

#include <QtEndian>

#include <cmath>

namespace inkory
{

namespace
{

constexpr double metresPerInch = 0.0254;

template <class Number> Number bigEndianAt(const QByteArray &bytes, qsizetype position)
{
    return position + qsizetype(sizeof(Number)) <= bytes.size() ? qFromBigEndian<Number>(bytes.constData() + position)
                                                                : Number(0);
}

template <class Number> Number littleEndianAt(const QByteArray &bytes, qsizetype position)
{
    return position + qsizetype(sizeof(Number)) <= bytes.size()
               ? qFromLittleEndian<Number>(bytes.constData() + position)
               : Number(0);
}

/// The position of the data of the PNG file's first chunk of this type, if the whole chunk is there.
std::optional<qsizetype> pngChunk(const QByteArray &bytes, QByteArrayView type)
{
    constexpr qsizetype signatureSize = 8;
    constexpr qsizetype sizeBesideData = 12; // length, type, checksum
    qsizetype position = signatureSize;
    while (position + sizeBesideData <= bytes.size()) {
        const qsizetype size = bigEndianAt<quint32>(bytes, position);
        if (position + sizeBesideData + size > bytes.size())
            return std::nullopt;
        if (QByteArrayView(bytes).sliced(position + 4, 4) == type)
            return position + 8;
        position += sizeBesideData + size;
    }
    return std::nullopt;
}

/// The size of a GIF file's colour table by the byte that describes it, 0 where there is none.
qsizetype gifColorTableSize(quint8 description)
{
    return description & 0x80 ? qsizetype(3) << ((description & 7) + 1) : 0;
}

/// The position behind a chain of blocks that begin with their size, the last one being 0. Behind the file if it is cut
/// off.
qsizetype behindGifBlocks(const QByteArray &bytes, qsizetype position)
{
    while (position < bytes.size()) {
        const auto size = static_cast<quint8>(bytes[position]);
        position += 1 + size;
        if (size == 0)
            return position;
    }
    return bytes.size() + 1;
}

bool hasWholeGifPicture(const QByteArray &bytes)
{
    constexpr qsizetype headerSize = 13;
    constexpr qsizetype pictureHeaderSize = 10;
    qsizetype position = headerSize + gifColorTableSize(littleEndianAt<quint8>(bytes, 10));
    while (position < bytes.size()) {
        const char kind = bytes[position];
        if (kind == ',') {
            const qsizetype colors = gifColorTableSize(littleEndianAt<quint8>(bytes, position + pictureHeaderSize - 1));
            const qsizetype codeSize = 1;
            return behindGifBlocks(bytes, position + pictureHeaderSize + colors + codeSize) <= bytes.size();
        }
        if (kind != '!')
            return false;
        position = behindGifBlocks(bytes, position + 2);
    }
    return false;
}

bool isWholeBmp(const QByteArray &bytes)
{
    constexpr quint32 uncompressed = 0;
    constexpr quint32 uncompressedWithMasks = 3;
    const auto compression = littleEndianAt<quint32>(bytes, 30);
    if (littleEndianAt<quint32>(bytes, 14) < 40 ||
        (compression != uncompressed && compression != uncompressedWithMasks))
        return true;
    const qint64 width = littleEndianAt<qint32>(bytes, 18);
    const qint64 height = std::abs(qint64(littleEndianAt<qint32>(bytes, 22)));
    const qint64 rowSize = (width * littleEndianAt<quint16>(bytes, 28) + 31) / 32 * 4;
    const qint64 available = bytes.size() - qint64(littleEndianAt<quint32>(bytes, 10));
    return rowSize > 0 && available / rowSize >= height;
}

/// From whole dots per metre.
double dotsPerInch(double dotsPerMetre)
{
    constexpr double rounding = 0.5 * metresPerInch;
    const double exact = dotsPerMetre * metresPerInch;
    return std::abs(exact - std::round(exact)) < rounding ? std::round(exact) : exact;
}

QSizeF pngDensity(const QByteArray &bytes)
{
    constexpr quint8 metre = 1;
    const std::optional<qsizetype> chunk = pngChunk(bytes, "pHYs");
    if (!chunk || littleEndianAt<quint8>(bytes, *chunk + 8) != metre)
        return {};
    return {dotsPerInch(bigEndianAt<quint32>(bytes, *chunk)), dotsPerInch(bigEndianAt<quint32>(bytes, *chunk + 4))};
}

QSizeF jpegDensity(const QByteArray &bytes)
{
    const std::optional<JpegStructure> structure = readJpegStructure(bytes);
    return structure ? QSizeF(structure->horizontalDpi, structure->verticalDpi) : QSizeF();
}

QSizeF bmpDensity(const QByteArray &bytes)
{
    if (littleEndianAt<quint32>(bytes, 14) < 40)
        return {};
    return {dotsPerInch(littleEndianAt<qint32>(bytes, 38)), dotsPerInch(littleEndianAt<qint32>(bytes, 42))};
}

bool isSane(double dpi)
{
    return dpi >= 10 && dpi <= 5000;
}

} // namespace

bool isWholeImageFile(const QByteArray &bytes, ImageKind kind)
{
    if (kind == ImageKind::Jpeg) {
        const std::optional<JpegStructure> structure = readJpegStructure(bytes);
        return structure && structure->end;
    }
    if (kind == ImageKind::Png)
        return pngChunk(bytes, "IEND").has_value();
    if (kind == ImageKind::Gif)
        return hasWholeGifPicture(bytes);
    if (kind == ImageKind::Bmp)
        return isWholeBmp(bytes);
    return true;
}

std::optional<QSizeF> statedDensity(const QByteArray &bytes, ImageKind kind)
{
    QSizeF density;
    if (kind == ImageKind::Png)
        density = pngDensity(bytes);
    else if (kind == ImageKind::Jpeg)
        density = jpegDensity(bytes);
    else if (kind == ImageKind::Bmp)
        density = bmpDensity(bytes);
    return isSane(density.width()) && isSane(density.height()) ? std::optional(density) : std::nullopt;
}

} // namespace inkory
