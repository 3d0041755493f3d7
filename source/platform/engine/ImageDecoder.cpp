#include "platform/engine/ImageDecoder.h"

#include "platform/core/Image.h"
#include "platform/core/ImageKind.h"
#include "platform/engine/ImageFileStructure.h"
#include "platform/engine/JpegStructure.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace inkory
{

namespace
{

constexpr double pointsPerInch = 72;

constexpr int mostMegabytesDecoded = 256;
constexpr int mostPixelsASide = 32'767;
constexpr qint64 mostPixels = 200'000'000;
constexpr qint64 mostPixelsDecodedAsAWhole = 64'000'000;

/// 0 for a size that is not known.
qint64 pixelCount(QSize size)
{
    return size.isValid() ? qint64(size.width()) * size.height() : 0;
}

/// The largest size of about the same proportions that need not be scaled down.
QSize sizeKept(QSize size)
{
    const double factor = std::sqrt(double(maxImagePixels) / double(pixelCount(size)));
    return {std::max(1, int(size.width() * factor)), std::max(1, int(size.height() * factor))};
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

/// One file on its way to becoming an image.
class FileDecoder
{
public:
    explicit FileDecoder(QByteArray bytes) : m_bytes(std::move(bytes)) {}

    /// Finds out about the file, as far as is possible without decoding it, and whether it may be decoded.
    ImageProblem examine();
    ImageProblem decode();

    const QImage &pixels() const { return m_pixels; }
    /// What the file claims, or what came of it where it claims nothing.
    QSize claimedSize() const { return m_statedSize.isValid() ? m_statedSize : m_pixels.size(); }
    QSizeF sizeInPoints() const;
    QByteArray jpegBytes() const;

private:
    void startReading();
    bool isTurned() const { return m_reader.transformation().testFlag(QImageIOHandler::TransformationRotate90); }
    bool canBeStoredAsItIs() const;

    QByteArray m_bytes;
    QBuffer m_buffer{&m_bytes};
    QImageReader m_reader;
    ImageKind m_kind = ImageKind::Png;
    std::optional<JpegStructure> m_jpeg; // of JPEG files
    QSize m_statedSize;                  // before turning it upright; invalid where the format does not tell
    QSize m_fullSize;                    // upright, before scaling down
    bool m_isScaled = false;
    QImage m_pixels;
};

ImageProblem FileDecoder::examine()
{
    const std::optional<ImageKind> kind = imageKindOf(m_bytes);
    if (!kind)
        return ImageProblem::UnknownKind;
    m_kind = *kind;
    if (!isWholeImageFile(m_bytes, m_kind))
        return ImageProblem::CutOff;
    if (m_kind == ImageKind::Jpeg)
        m_jpeg = readJpegStructure(m_bytes);
    startReading();
    m_statedSize = m_reader.size();
    const qint64 count = pixelCount(m_statedSize);
    const bool isTooLarge = count > mostPixels ||
                            std::max(m_statedSize.width(), m_statedSize.height()) > mostPixelsASide ||
                            (count > mostPixelsDecodedAsAWhole && m_jpeg && m_jpeg->isDecodedAsAWhole);
    return isTooLarge ? ImageProblem::TooLarge : ImageProblem::None;
}

void FileDecoder::startReading()
{
    m_buffer.open(QIODevice::ReadOnly);
    m_reader.setDevice(&m_buffer);
    m_reader.setAutoDetectImageFormat(false); // no other reader than the one decided on gets to see the bytes
    m_reader.setFormat(imageReaderName(m_kind));
    m_reader.setAutoTransform(true);
    if (m_kind == ImageKind::Ico)
        goToLargestPicture(m_reader);
}

ImageProblem FileDecoder::decode()
{
    const qint64 count = pixelCount(m_statedSize);
    m_isScaled = count > maxImagePixels;
    if (m_isScaled)
        m_reader.setScaledSize(sizeKept(m_statedSize));
    // Once, because a process may read images on several threads.
    [[maybe_unused]] static const bool limited = (QImageReader::setAllocationLimit(mostMegabytesDecoded), true);
    if (!m_reader.read(&m_pixels) || m_pixels.isNull())
        return count * 4 > qint64(mostMegabytesDecoded) << 20 ? ImageProblem::TooLarge : ImageProblem::Damaged;
    if (std::max(m_pixels.width(), m_pixels.height()) > mostPixelsASide)
        return ImageProblem::TooLarge;
    m_fullSize = !m_isScaled ? m_pixels.size() : isTurned() ? m_statedSize.transposed() : m_statedSize;
    if (pixelCount(m_pixels.size()) > maxImagePixels) { // of a file that stated less, or nothing
        m_pixels = m_pixels.scaled(sizeKept(m_pixels.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        m_isScaled = true;
    }
    // What is stored as it is, is drawn from its plain numbers by readers of the document, so it is shown so, too.
    if (!canBeStoredAsItIs() && !isPracticallySRgb(m_pixels.colorSpace()))
        m_pixels.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    return ImageProblem::None;
}

QSizeF FileDecoder::sizeInPoints() const
{
    QSizeF density = statedDensity(m_bytes, m_kind).value_or(QSizeF(pointsPerInch, pointsPerInch));
    if (isTurned())
        density.transpose();
    return {m_fullSize.width() * pointsPerInch / density.width(),
            m_fullSize.height() * pointsPerInch / density.height()};
}

bool FileDecoder::canBeStoredAsItIs() const
{
    if (!m_jpeg || m_isScaled || m_reader.transformation() != QImageIOHandler::TransformationNone)
        return false;
    return m_jpeg->hasCommonCoding && m_jpeg->bitsPerComponent == 8 && !m_jpeg->hasComponentsNamedRgb &&
           (m_jpeg->componentCount == 1 || m_jpeg->componentCount == 3) &&
           QSize(m_jpeg->width, m_jpeg->height) == m_pixels.size();
}

QByteArray FileDecoder::jpegBytes() const
{
    return canBeStoredAsItIs() ? jpegWithoutMetadata(m_bytes) : QByteArray();
}

} // namespace

struct ImageDecoder::Parts
{
    QImage pixels;
    QByteArray jpegBytes;
};

ImageDecoder::ImageDecoder() : m_parts(std::make_unique<Parts>()) {}
ImageDecoder::~ImageDecoder() = default;

ImageReply ImageDecoder::read(const QByteArray &file)
{
    *m_parts = {};
    FileDecoder decoder(file);
    ImageProblem problem = decoder.examine();
    if (problem == ImageProblem::None)
        problem = decoder.decode();
    if (problem != ImageProblem::None)
        return {.problem = problem, .pixelSize = decoder.claimedSize(), .size = {}};
    m_parts->pixels = Image::fromPixels(decoder.pixels())->pixels(); // in one of the three formats, without metadata
    m_parts->jpegBytes = decoder.jpegBytes();
    return {.problem = ImageProblem::None,
            .pixelSize = m_parts->pixels.size(),
            .format = m_parts->pixels.format(),
            .size = decoder.sizeInPoints(),
            .jpegSize = m_parts->jpegBytes.size()};
}

const QImage &ImageDecoder::pixels() const
{
    return m_parts->pixels;
}

const QByteArray &ImageDecoder::jpegBytes() const
{
    return m_parts->jpegBytes;
}

void ImageDecoder::prepare()
{
    for (const ImageKind kind : readableImageKinds()) {
        QBuffer nothing;
        nothing.open(QIODevice::ReadOnly);
        (void)QImageReader(&nothing, imageReaderName(kind)).canRead(); // for this it has to be loaded
    }
    // Large images are converted and scaled by this pool. One thread per processor would take much of the address
    // space.
    QThreadPool::globalInstance()->setMaxThreadCount(1);
}

} // namespace inkory
