#include "platform/pdf/OverlayRecorder.h"

#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/PDFPage.h"

#include <QPageSize>

#include <algorithm>
#include <cmath>

namespace inkory
{

OverlayRecorder::OverlayRecorder() : m_buffer(&m_bytes), m_writer(&m_buffer)
{
    m_buffer.open(QIODevice::WriteOnly);
    m_writer.setResolution(72); // one painter unit is one point
    m_writer.setPageMargins(QMarginsF());
}

OverlayRecorder::~OverlayRecorder() = default;

int OverlayRecorder::beginPage(const PDFPage &page)
{
    const PageRect box = page.boundsForBox(DisplayBox::CropBox);
    // QPdfWriter rounds page sizes to whole points.
    const QSizeF size(std::ceil(box.width), std::ceil(box.height));
    m_overlayHeight = size.height();
    m_writer.setPageSize(QPageSize(size, QPageSize::Point, QStringLiteral("overlay"), QPageSize::ExactMatch));
    if (m_pageCount == 0) {
        m_painter.begin(&m_writer);
        m_painter.setRenderHint(QPainter::LosslessImageRendering);
    } else {
        m_writer.newPage();
    }
    return m_pageCount++;
}

QByteArray OverlayRecorder::finish()
{
    if (m_painter.isActive())
        m_painter.end();
    m_buffer.close();
    return m_pageCount > 0 ? m_bytes : QByteArray();
}

QTransform OverlayRecorder::transformForBox(const PDFPage &page, DisplayBox) const
{
    // The overlay stands for the crop box, whatever box the stamps are clipped to.
    const PageRect crop = page.boundsForBox(DisplayBox::CropBox);
    return QTransform(1, 0, 0, -1, -crop.x, m_overlayHeight + crop.y);
}

void OverlayRecorder::drawContent(const PDFPage &, DisplayBox) {}

void OverlayRecorder::drawImage(const QRectF &rect, const ImagePtr &image, double opacity)
{
    m_painter.save();
    m_painter.setOpacity(opacity);
    m_painter.translate(rect.bottomLeft());
    m_painter.scale(1, -1);
    m_painter.drawImage(QRectF(QPointF(0, 0), rect.size()), markerFor(image));
    m_painter.restore();
}

const QImage &OverlayRecorder::markerFor(const ImagePtr &image)
{
    const auto known = std::find(m_images.begin(), m_images.end(), image);
    const auto index = static_cast<std::size_t>(known - m_images.begin());
    if (known == m_images.end()) {
        QImage marker(1, 1, QImage::Format_RGB32);
        marker.fill(overlayMarkerColor(static_cast<int>(index)));
        m_images.push_back(image);
        m_markers.push_back(marker);
    }
    return m_markers[index];
}

} // namespace inkory
