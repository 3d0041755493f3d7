#include "platform/widgets/ScreenDrawingContext.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <optional>

namespace inkory
{

namespace
{

constexpr qint64 maxScaledBytes = 32LL * 1024 * 1024;
// Beyond this a copy would take more memory than it saves time.
constexpr double maxScaledPixels = 4'000'000;

// Smooth, and quick also for photographs: what is far too large is first thinned out to twice the size. In the format
// that is drawn quickest.
QImage scaledSmoothly(const QImage &image, const QSize &pixels)
{
    const QSize twice = pixels * 2;
    const bool isFarTooLarge = image.width() > 2 * twice.width() && image.height() > 2 * twice.height();
    return (isFarTooLarge ? image.scaled(twice, Qt::IgnoreAspectRatio, Qt::FastTransformation) : image)
        .convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32)
        .scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// What is left of a transform by quarter turns without its size and place; nothing for any other.
std::optional<QTransform> quarterTurn(const QTransform &transform)
{
    const double size = std::max(
        {std::abs(transform.m11()), std::abs(transform.m12()), std::abs(transform.m21()), std::abs(transform.m22())});
    const auto direction = [size](double component) {
        return std::abs(component) <= size * 1e-6 ? 0.0 : std::copysign(1.0, component);
    };
    const QTransform turn(direction(transform.m11()), direction(transform.m12()), direction(transform.m21()),
                          direction(transform.m22()), 0, 0);
    const bool isUpright = turn.m12() == 0 && turn.m21() == 0;
    const bool isSideways = turn.m11() == 0 && turn.m22() == 0;
    return size > 0 && isUpright != isSideways ? std::optional(turn) : std::nullopt;
}

} // namespace

const QImage &ScaledImages::scaled(const ImagePtr &image, const QSize &pixels, const QTransform &turning)
{
    const QTransform turn = quarterTurn(turning).value_or(QTransform());
    const auto known = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry &entry) {
        return entry.image == image && entry.scaled.size() == pixels && entry.turn == turn;
    });
    if (known != m_entries.end()) {
        std::rotate(known, known + 1, m_entries.end());
        return m_entries.back().scaled;
    }
    const QSize before = turn.m11() == 0 ? pixels.transposed() : pixels;
    m_entries.push_back({image, turn, scaledSmoothly(image->pixels(), before).transformed(turn)});
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

void ScreenDrawingContext::enterDevicePixels(QPainter &painter)
{
    painter.setWorldTransform(painter.deviceTransform().inverted() * painter.worldTransform());
}

void ScreenDrawingContext::drawImage(const QRectF &rect, const ImagePtr &image, double opacity)
{
    if (m_painter.hasClipping() && !m_painter.clipBoundingRect().intersects(rect))
        return; // making a copy would be for nothing
    m_painter.save();
    m_painter.setOpacity(opacity);
    m_painter.translate(rect.bottomLeft());
    m_painter.scale(1, -1);
    const QRectF target(QPointF(0, 0), rect.size());
    const QTransform toDevice = m_painter.deviceTransform();
    const QRectF onDevice = toDevice.mapRect(target);
    const double width = std::round(onDevice.width());
    const double height = std::round(onDevice.height());
    if (width >= 1 && height >= 1 && width * height <= maxScaledPixels && quarterTurn(toDevice)) {
        const QSize pixels(static_cast<int>(width), static_cast<int>(height));
        enterDevicePixels(m_painter);
        m_painter.drawImage(QPointF(std::round(onDevice.left()), std::round(onDevice.top())),
                            m_images.scaled(image, pixels, toDevice));
    } else {
        m_painter.setRenderHint(QPainter::SmoothPixmapTransform);
        m_painter.drawImage(target, image->pixels());
    }
    m_painter.restore();
}

} // namespace inkory
