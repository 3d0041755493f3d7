#include "platform/pdf/PDFPage.h"

namespace inkory
{

PDFPage::PDFPage(const PageGeometry &geometry, int sourceIndex)
    : m_geometry(geometry), m_rotation(geometry.rotation), m_sourceIndex(sourceIndex)
{
}

PDFPage::~PDFPage() = default;

void PDFPage::setRotation(int degrees)
{
    m_rotation = normalizedRotation(degrees);
}

int PDFPage::extraQuarterTurns() const
{
    return normalizedRotation(m_rotation - m_geometry.rotation) / 90;
}

QSizeF PDFPage::shownSize() const
{
    return inkory::shownSize(m_geometry.cropBox, m_rotation);
}

QTransform PDFPage::shownTransform() const
{
    return shownPageTransform(m_geometry.cropBox, m_rotation);
}

PageRect PDFPage::rectFromFileSpace(const QRectF &rect) const
{
    const QTransform toFile = shownPageTransform(m_geometry.cropBox, m_geometry.rotation);
    return fromQRectF<PageSpace>(toFile.inverted().mapRect(rect));
}

PagePoint PDFPage::pointFromFileSpace(const QPointF &point) const
{
    const QPointF mapped = shownPageTransform(m_geometry.cropBox, m_geometry.rotation).inverted().map(point);
    return {mapped.x(), mapped.y()};
}

void PDFPage::setGeometry(const PageGeometry &geometry)
{
    m_rotation = normalizedRotation(m_rotation - m_geometry.rotation + geometry.rotation);
    m_geometry = geometry;
}

void PDFPage::drawWithBox(DisplayBox box)
{
    if (DrawingContext *context = DrawingContext::current())
        context->drawContent(*this, box);
}

void PDFPage::drawWithBox(DisplayBox box, DrawingContext &context)
{
    context.drawContent(*this, box);
}

} // namespace inkory
