#pragma once

#include "platform/core/Result.h"

#include <QByteArray>
#include <QImage>
#include <QMetaType>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <memory>

namespace inkory
{

/// A picture with pixels and a size in points. QImage cannot say whether a file stated its density: it reports 96 dpi
/// for files that state none. Immutable and shared, also between threads; two images are the same only if they are the
/// same object.
class Image
{
public:
    /// The size in points is pixels divided by the image's device pixel ratio. A null image has size 0 × 0.
    static std::shared_ptr<const Image> fromPixels(const QImage &pixels);

    /// From what a file was decoded to: its pixels, its size in points, and what jpegBytes() is to answer. Pixels in
    /// the form that pixels() promises are kept as they are, wherever they lie in memory.
    static std::shared_ptr<const Image> fromParts(const QImage &pixels, QSizeF size, const QByteArray &jpegBytes);

    /// In the simplest of three formats that holds them without loss, 16-bit channels apart, which become 8-bit ones:
    /// Grayscale8, RGB32, or ARGB32 (not premultiplied) if there is an alpha channel. sRGB, without metadata.
    const QImage &pixels() const { return m_pixels; }
    QSizeF size() const { return m_size; }

    /// The file's own bytes where they are an 8-bit gray or RGB JPEG without orientation that was not scaled down, so
    /// that they can be stored as they are; application metadata and comments are taken out. Its width and height are
    /// those of pixels(). Empty otherwise.
    const QByteArray &jpegBytes() const { return m_jpegBytes; }

    /// The file name extensions that can be read, each in lower and in upper case.
    static const QStringList &fileExtensions();

    /// PNG bytes of the pixels, stating a density of 72 times the pixels per point, so that reading them gives the same
    /// size.
    Result<QByteArray> pngBytes() const;

private:
    Image() = default;

    QImage m_pixels;
    QSizeF m_size;
    QByteArray m_jpegBytes;
};

using ImagePtr = std::shared_ptr<const Image>;

} // namespace inkory

Q_DECLARE_METATYPE(inkory::ImagePtr)
