#include "platform/core/Image.h"

#include "platform/core/ImageFileStructure.h"
#include "platform/core/JpegStructure.h"

#include <QBuffer>
#include <QColorSpace>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inkory
{

namespace
{

constexpr double pointsPerInch = 72;
constexpr double inchesPerMetre = 1 / 0.0254;

constexpr qint64 mostBytes = 256LL << 20;
constexpr int mostMegabytesDecoded = 256;
constexpr int mostPixelsASide = 32'767;
constexpr qint64 mostPixels = 200'000'000;
constexpr qint64 mostPixelsDecodedAsAWhole = 64'000'000;
constexpr qint64 mostPixelsKept = 12'500'000; // so that what most cameras make is left alone

/// The sentences for the person, in the form that the translation tools look for.
class Text
{
    Q_DECLARE_TR_FUNCTIONS(Image)
};

Error tooLarge(QSize size)
{
    return {Text::tr("The image is too large: it has %1 × %2 pixels.").arg(size.width()).arg(size.height())};
}

Error damaged()
{
    return {Text::tr("The image is damaged and cannot be read.")};
}

qint64 pixelCount(QSize size)
{
    return qint64(size.width()) * size.height();
}

/// The kinds that are read. Drawings and documents are not: their readers open other files, run programs or never end.
const QList<QByteArray> &readableFormats()
{
    static const QList<QByteArray> formats = [] {
        QList<QByteArray> all = QImageReader::supportedImageFormats();
        const QList<QByteArray> notMadeOfPixels{"svg", "svgz", "pdf", "ps", "eps", "epsf", "epsi", "wmf", "emf"};
        all.removeIf([&](const QByteArray &each) { return notMadeOfPixels.contains(each.toLower()); });
        return all;
    }();
    return formats;
}

Result<QByteArray> readBytes(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return Error{Text::tr("The file does not exist.")};
    if (!info.isFile())
        return Error{Text::tr("It is not a file.")}; // reading a pipe could wait for ever
    if (info.size() > mostBytes)
        return Error{Text::tr("The file is too large.")};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{Text::tr("The file could not be opened: %1.").arg(file.errorString())};
    QByteArray bytes = file.read(mostBytes);
    if (file.error() != QFileDevice::NoError)
        return Error{Text::tr("The file could not be read: %1.").arg(file.errorString())};
    return bytes;
}

/// An icon file holds one picture in several sizes, in any order.
void goToLargestPicture(QImageReader &reader)
{
    int largest = 0;
    qint64 mostSoFar = 0;
    for (int index = 0; index < reader.imageCount() && reader.jumpToImage(index); ++index) {
        if (const qint64 count = pixelCount(reader.size()); count > mostSoFar) {
            mostSoFar = count;
            largest = index;
        }
    }
    reader.jumpToImage(largest);
}

/// Gamma 2.2 with sRGB's colours is what many programs write for sRGB.
bool isPracticallySRgb(const QColorSpace &space)
{
    if (!space.isValid() || space == QColorSpace(QColorSpace::SRgb))
        return true;
    return space.primaries() == QColorSpace::Primaries::SRgb &&
           space.transferFunction() == QColorSpace::TransferFunction::Gamma && std::abs(space.gamma() - 2.2F) < 0.05F;
}

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

/// One file on its way to becoming an image.
class FileDecoder
{
public:
    explicit FileDecoder(QByteArray bytes) : m_bytes(std::move(bytes)) {}

    /// Finds out about the file, as far as is possible without decoding it, and whether it may be decoded.
    Result<void> examine();
    Result<void> decode();

    QSizeF sizeInPoints() const;
    QByteArray jpegBytes() const;
    /// The last call.
    QImage takePixels() { return std::exchange(m_pixels, {}); }

private:
    bool isTurned() const { return m_reader.transformation().testFlag(QImageIOHandler::TransformationRotate90); }
    bool canBeStoredAsItIs() const;

    QByteArray m_bytes;
    QBuffer m_buffer{&m_bytes};
    QImageReader m_reader;
    QByteArray m_format;
    QSize m_statedSize; // before turning it upright; invalid where the format does not tell
    bool m_isScaled = false;
    QImage m_pixels;
};

Result<void> FileDecoder::examine()
{
    m_buffer.open(QIODevice::ReadOnly);
    m_format = QImageReader::imageFormat(&m_buffer);
    if (!readableFormats().contains(m_format))
        return Error{Text::tr("The file is not an image of a known kind.")};
    if (!isWholeImageFile(m_bytes, m_format))
        return Error{Text::tr("The image is incomplete: the file has been cut off.")};

    m_buffer.seek(0);
    m_reader.setDevice(&m_buffer);
    m_reader.setAutoDetectImageFormat(false); // no other reader than the one decided on gets to see the bytes
    m_reader.setFormat(m_format);
    m_reader.setAutoTransform(true);
    if (m_format == "ico" || m_format == "cur")
        goToLargestPicture(m_reader);
    m_statedSize = m_reader.size();
    const qint64 count = m_statedSize.isValid() ? pixelCount(m_statedSize) : 0;
    if (count > mostPixels || std::max(m_statedSize.width(), m_statedSize.height()) > mostPixelsASide)
        return tooLarge(m_statedSize);
    const std::optional<JpegStructure> jpeg = readJpegStructure(m_bytes);
    if (count > mostPixelsDecodedAsAWhole && jpeg && jpeg->isDecodedAsAWhole)
        return tooLarge(m_statedSize);
    return {};
}

Result<void> FileDecoder::decode()
{
    const qint64 count = m_statedSize.isValid() ? pixelCount(m_statedSize) : 0;
    if (count > mostPixelsKept) {
        const double factor = std::sqrt(double(mostPixelsKept) / double(count));
        m_reader.setScaledSize(
            {std::max(1, int(m_statedSize.width() * factor)), std::max(1, int(m_statedSize.height() * factor))});
        m_isScaled = true;
    }
    // Once, because images are read on several threads.
    [[maybe_unused]] static const bool limited = (QImageReader::setAllocationLimit(mostMegabytesDecoded), true);
    if (!m_reader.read(&m_pixels) || m_pixels.isNull())
        return count * 4 > qint64(mostMegabytesDecoded) << 20 ? tooLarge(m_statedSize) : damaged();
    if (std::max(m_pixels.width(), m_pixels.height()) > mostPixelsASide)
        return tooLarge(m_pixels.size());
    // What is stored as it is, is drawn from its plain numbers by readers of the document, so it is shown so, too.
    if (!canBeStoredAsItIs() && !isPracticallySRgb(m_pixels.colorSpace()))
        m_pixels.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    return {};
}

QSizeF FileDecoder::sizeInPoints() const
{
    QSizeF density = statedDensity(m_bytes, m_format).value_or(QSizeF(pointsPerInch, pointsPerInch));
    QSize original = m_isScaled ? m_statedSize : m_pixels.size();
    if (isTurned()) {
        density.transpose();
        if (m_isScaled)
            original.transpose();
    }
    return {original.width() * pointsPerInch / density.width(), original.height() * pointsPerInch / density.height()};
}

bool FileDecoder::canBeStoredAsItIs() const
{
    if (m_format != "jpeg" || m_isScaled || m_reader.transformation() != QImageIOHandler::TransformationNone)
        return false;
    const std::optional<JpegStructure> jpeg = readJpegStructure(m_bytes);
    return jpeg && jpeg->hasCommonCoding && jpeg->bitsPerComponent == 8 && !jpeg->hasComponentsNamedRgb &&
           (jpeg->componentCount == 1 || jpeg->componentCount == 3) &&
           QSize(jpeg->width, jpeg->height) == m_pixels.size();
}

QByteArray FileDecoder::jpegBytes() const
{
    return canBeStoredAsItIs() ? jpegWithoutMetadata(m_bytes) : QByteArray();
}

} // namespace

std::shared_ptr<const Image> Image::fromPixels(const QImage &pixels)
{
    const std::shared_ptr<Image> image(new Image);
    image->m_pixels = normalized(pixels);
    image->m_size = pixels.isNull() ? QSizeF(0, 0) : QSizeF(pixels.size()) / pixels.devicePixelRatio();
    return image;
}

Result<std::shared_ptr<const Image>> Image::fromFile(const QString &path)
{
    Result<QByteArray> bytes = readBytes(path);
    if (!bytes)
        return bytes.error();
    FileDecoder decoder(std::move(*bytes));
    for (const auto step : {&FileDecoder::examine, &FileDecoder::decode})
        if (const Result<void> done = (decoder.*step)(); !done)
            return done.error();

    const std::shared_ptr<Image> image(new Image);
    image->m_size = decoder.sizeInPoints();
    image->m_jpegBytes = decoder.jpegBytes();
    image->m_pixels = normalized(decoder.takePixels());
    return std::shared_ptr<const Image>(image);
}

const QStringList &Image::fileExtensions()
{
    static const QStringList extensions = [] {
        QStringList both;
        for (const QByteArray &format : readableFormats())
            both << QString::fromLatin1(format.toLower()) << QString::fromLatin1(format.toUpper());
        both.removeDuplicates();
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
