#include "platform/core/ImageKind.h"

#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <array>

namespace inkory
{

namespace
{

bool startsAsBmp(QByteArrayView bytes)
{
    constexpr qsizetype headerSizeAt = 14;
    constexpr std::array<quint32, 7> headerSizes{12, 40, 52, 56, 64, 108, 124};
    // Two letters alone would make a bitmap of many a text.
    return bytes.startsWith("BM") && bytes.size() >= headerSizeAt + 4 &&
           std::ranges::count(headerSizes, qFromLittleEndian<quint32>(bytes.data() + headerSizeAt)) > 0;
}

bool startsAsIco(QByteArrayView bytes)
{
    constexpr qsizetype headerSize = 6; // the last two bytes count the pictures
    return bytes.size() >= headerSize && bytes.startsWith(QByteArrayView("\0\0\1\0", 4)) &&
           qFromLittleEndian<quint16>(bytes.data() + 4) > 0;
}

bool startsAsTiff(QByteArrayView bytes)
{
    const std::array<QByteArrayView, 4> beginnings{
        QByteArrayView("II*\0", 4), QByteArrayView("MM\0*", 4), // of either byte order, 32 bits
        QByteArrayView("II+\0", 4), QByteArrayView("MM\0+", 4), // 64 bits
    };
    return std::ranges::any_of(beginnings, [&](QByteArrayView each) { return bytes.startsWith(each); });
}

/// One digit stands for numbers written as text, one for bytes.
bool startsAsPnm(QByteArrayView bytes, QByteArrayView digits)
{
    return bytes.size() >= 3 && bytes[0] == 'P' && digits.contains(bytes[1]) &&
           QByteArrayView(" \t\n\v\f\r").contains(bytes[2]);
}

struct Entry
{
    ImageKind kind;
    const char *readerName;
    const char *extensions;
    bool (*matches)(QByteArrayView bytes);
};

constexpr std::array entries{
    Entry{ImageKind::Png, "png", "png", [](QByteArrayView b) { return b.startsWith("\x89PNG\r\n\x1A\n"); }},
    Entry{ImageKind::Jpeg, "jpeg", "jpg jpeg jfif", [](QByteArrayView b) { return b.startsWith("\xFF\xD8\xFF"); }},
    Entry{ImageKind::Gif, "gif", "gif",
          [](QByteArrayView b) { return b.startsWith("GIF87a") || b.startsWith("GIF89a"); }},
    Entry{ImageKind::Bmp, "bmp", "bmp", startsAsBmp},
    Entry{ImageKind::Ico, "ico", "ico", startsAsIco},
    Entry{ImageKind::Webp, "webp", "webp",
          [](QByteArrayView b) { return b.size() >= 12 && b.startsWith("RIFF") && b.sliced(8).startsWith("WEBP"); }},
    Entry{ImageKind::Tiff, "tiff", "tif tiff", startsAsTiff},
    Entry{ImageKind::Pbm, "pbm", "pbm", [](QByteArrayView b) { return startsAsPnm(b, "14"); }},
    Entry{ImageKind::Pgm, "pgm", "pgm", [](QByteArrayView b) { return startsAsPnm(b, "25"); }},
    Entry{ImageKind::Ppm, "ppm", "ppm pnm", [](QByteArrayView b) { return startsAsPnm(b, "36"); }},
};

const Entry &entryOf(ImageKind kind)
{
    return *std::ranges::find(entries, kind, &Entry::kind);
}

} // namespace

const QList<ImageKind> &readableImageKinds()
{
    static const QList<ImageKind> kinds = [] {
        const QList<QByteArray> installed = QImageReader::supportedImageFormats();
        QList<ImageKind> readable;
        for (const Entry &entry : entries) {
            if (installed.contains(entry.readerName))
                readable.append(entry.kind);
        }
        return readable;
    }();
    return kinds;
}

std::optional<ImageKind> imageKindOf(QByteArrayView bytes)
{
    for (const ImageKind kind : readableImageKinds()) {
        if (entryOf(kind).matches(bytes))
            return kind;
    }
    return std::nullopt;
}

QByteArray imageReaderName(ImageKind kind)
{
    return entryOf(kind).readerName;
}

QStringList fileExtensionsOf(ImageKind kind)
{
    return QString::fromLatin1(entryOf(kind).extensions).split(QLatin1Char(' '));
}

} // namespace inkory
