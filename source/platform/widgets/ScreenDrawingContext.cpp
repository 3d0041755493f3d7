#include "platform/widgets/ScreenDrawingContext.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

constexpr qint64 maxScaledBytes = 32LL * 1024 * 1024;
// Beyond this a copy would take more memory than it saves time.
constexpr double maxScaledPixels = 4'000'000;

// Smooth, and quick also for photographs: what is far too large is first thinned out to twice the size.
QImage scaledSmoothly(const QImage &image, const QSize &pixels)
{
    const QSize twice = pixels * 2;
    const bool isFarTooLarge = image.width() > 2 * twice.width() && image.height() > 2 * twice.height();
    return (isFarTooLarge ? image.scaled(twice, Qt::IgnoreAspectRatio, Qt::FastTransformation) : image)
        .convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

double lengthOf(const QLineF &line, const QTransform &transform)
{
    return transform.map(line).length();
}

} // namespace

const QImage &ScaledImages::scaled(const ImagePtr &image, const QSize &pixels)
{
    const auto known = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry &entry) {
        return entry.image == image && entry.scaled.size() == pixels;
    });
    if (known != m_entries.end()) {
        std::rotate(known, known + 1, m_entries.end());
        return m_entries.back().scaled;
    }
    m_entries.push_back({image, scaledSmoothly(image->pixels(), pixels)});
    qint64 bytes = 0;
    for (const Entry &entry : m_entries)
        bytes += entry.scaled.sizeInBytes();
    while (bytes > maxScaledBytes && m_entries.size() > 1) {
        bytes -= m_entries.front().scaled.sizeInBytes();
        m_entries.erase(m_entries.begin());
    }
    return m_entries.back().scaled;
}

ScreenDrawingContext::ScreenDrawingContext(QPainter &painter, const QTransform &pageTransform, ContentDrawing content,
                                           ScaledImages &images)
    : m_painter(painter), m_pageTransform(pageTransform), m_content(std::move(content)), m_images(images)
{
}

QTransform ScreenDrawingContext::transformForBox(const PDFPage &, DisplayBox) const
{
    return m_pageTransform;
}

void ScreenDrawingContext::drawContent(const PDFPage &page, DisplayBox)
{
    m_content(m_painter, page);
}

void ScreenDrawingContext::drawImage(const QRectF &rect, const ImagePtr &image, double opacity)
{
    m_painter.save();
    m_painter.setOpacity(opacity);
    m_painter.setRenderHint(QPainter::SmoothPixmapTransform);
    m_painter.translate(rect.bottomLeft());
    m_painter.scale(1, -1);
    const QRectF target(QPointF(0, 0), rect.size());
    const QTransform toDevice = m_painter.deviceTransform();
    const double width = std::round(lengthOf(QLineF(target.topLeft(), target.topRight()), toDevice));
    const double height = std::round(lengthOf(QLineF(target.topLeft(), target.bottomLeft()), toDevice));
    if (width >= 1 && height >= 1 && width * height <= maxScaledPixels)
        m_painter.drawImage(target, m_images.scaled(image, QSize(static_cast<int>(width), static_cast<int>(height))));
    else
        m_painter.drawImage(target, image->pixels());
    m_painter.restore();
}

} // namespace inkory
