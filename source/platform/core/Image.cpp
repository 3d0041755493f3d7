#include "platform/core/Image.h"

#include "platform/core/ImageKind.h"

#include <QBuffer>
#include <QColorSpace>
#include <QCoreApplication>
#include <QImageWriter>

#include <cmath>

namespace inkory
{

namespace
{

constexpr double pointsPerInch = 72;
constexpr double inchesPerMetre = 1 / 0.0254;

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(Image)
};

QImage::Format simplestFormat(const QImage &image)
{
    if (image.hasAlphaChannel())
        return QImage::Format_ARGB32;
    const bool isGray = image.depth() <= 8 ? image.allGray() : image.format() == QImage::Format_Grayscale16;
    return isGray ? QImage::Format_Grayscale8 : QImage::Format_RGB32;
}

/// The same pixels without texts, colour space and density. Shares them with the image, which must outlive the result.
QImage bareView(const QImage &image)
{
    return {image.constBits(), image.width(), image.height(), image.bytesPerLine(), image.format()};
}

/// In the form that Image::pixels() promises.
QImage normalized(QImage image)
{
    if (image.isNull())
        return {};
    image.convertTo(simplestFormat(image));
    image.setColorSpace({});
    if (!image.textKeys().isEmpty()) {
        const double ratio = image.devicePixelRatio();
        image = bareView(image).copy();
        image.setDevicePixelRatio(ratio);
    }
    return image;
}

} // namespace

std::shared_ptr<const Image> Image::fromPixels(const QImage &pixels)
{
    const std::shared_ptr<Image> image(new Image);
    image->m_pixels = normalized(pixels);
    image->m_size = pixels.isNull() ? QSizeF(0, 0) : QSizeF(pixels.size()) / pixels.devicePixelRatio();
    return image;
}

std::shared_ptr<const Image> Image::fromParts(const QImage &pixels, QSizeF size, const QByteArray &jpegBytes)
{
    const std::shared_ptr<Image> image(new Image);
    image->m_pixels = normalized(pixels);
    image->m_size = size;
    image->m_jpegBytes = jpegBytes;
    return image;
}

const QStringList &Image::fileExtensions()
{
    static const QStringList extensions = [] {
        QStringList both;
        for (const ImageKind kind : readableImageKinds()) {
            for (const QString &extension : fileExtensionsOf(kind))
                both << extension << extension.toUpper();
        }
        return both;
    }();
    return extensions;
}

Result<QByteArray> Image::pngBytes() const
{
    if (m_pixels.isNull())
        return Error{Text::tr("The image is empty.")};
    const auto dotsPerMetre = [](double pixels, double points) {
        return static_cast<int>(std::lround(pixels / points * pointsPerInch * inchesPerMetre));
    };
    QImage image = bareView(m_pixels);
    image.setDotsPerMeterX(dotsPerMetre(m_pixels.width(), m_size.width()));
    image.setDotsPerMeterY(dotsPerMetre(m_pixels.height(), m_size.height()));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image))
        return Error{Text::tr("The image could not be written: %1.").arg(writer.errorString())};
    return bytes;
}

} // namespace inkory
