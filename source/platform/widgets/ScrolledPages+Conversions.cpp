// Where pages stand in the view, and the way from one space to another.

#include "platform/widgets/ScrolledPages.h"

#include <algorithm>
#include <cmath>

namespace inkory
{

QPointF ScrolledPages::exactOrigin() const
{
    const QSizeF document = m_layout.documentSize();
    const QSize shown = viewport()->size();
    const double x =
        document.width() <= shown.width() ? std::floor((shown.width() - document.width()) / 2) : -m_scrollPosition.x();
    const double y = document.height() <= shown.height() ? std::floor((shown.height() - document.height()) / 2)
                                                         : -m_scrollPosition.y();
    return {x, y};
}

QPointF ScrolledPages::documentOrigin() const
{
    const double ratio = viewport()->devicePixelRatioF();
    const QPointF exact = exactOrigin();
    return {std::round(exact.x() * ratio) / ratio, std::round(exact.y() * ratio) / ratio};
}

QPointF ScrolledPages::pointInDocument(const Place &place) const
{
    const PDFPage *page = m_document->pageAtIndex(place.pageIndex);
    const QPointF shown = page->shownTransform().map(QPointF(place.corner.x, place.corner.y));
    return m_layout.pageRect(place.pageIndex).topLeft() + shown * m_scaleFactor;
}

ScrolledPages::Place ScrolledPages::placeInDocument(const QPointF &point, int pageIndex) const
{
    const PDFPage *page = m_document->pageAtIndex(pageIndex);
    const QPointF shown = (point - m_layout.pageRect(pageIndex).topLeft()) / m_scaleFactor;
    const QPointF inPage = page->shownTransform().inverted().map(shown);
    return {pageIndex, {inPage.x(), inPage.y()}};
}

ScrolledPages::Place ScrolledPages::placeAt(const QPointF &point) const
{
    const QPointF inDocument = point - exactOrigin();
    const int index = m_document ? m_layout.nearestPage(inDocument.y()) : -1;
    return index < 0 ? Place{} : placeInDocument(inDocument, index);
}

QRectF ScrolledPages::pageRectInWidget(int pageIndex) const
{
    return m_layout.pageRect(pageIndex).translated(documentOrigin());
}

std::vector<int> ScrolledPages::visiblePages() const
{
    std::vector<int> indices;
    if (!m_document)
        return indices;
    for (int i = std::max(0, m_layout.nearestPage(-documentOrigin().y())); i < m_layout.pageCount(); ++i) {
        const QRectF rect = pageRectInWidget(i);
        if (rect.top() > viewport()->height())
            break;
        if (rect.intersects(viewport()->rect()))
            indices.push_back(i);
    }
    return indices;
}

QRect ScrolledPages::visiblePart(int pageIndex) const
{
    return pageRectInWidget(pageIndex).toAlignedRect() & viewport()->rect();
}

double ScrolledPages::pixelsPerPoint() const
{
    return m_scaleFactor * viewport()->devicePixelRatioF();
}

QTransform ScrolledPages::widgetTransform(int pageIndex) const
{
    const PDFPage *page = m_document->pageAtIndex(pageIndex);
    const QPointF corner = pageRectInWidget(pageIndex).topLeft();
    return page->shownTransform() * QTransform::fromScale(m_scaleFactor, m_scaleFactor) *
           QTransform::fromTranslate(corner.x(), corner.y());
}

QTransform ScrolledPages::viewTransform(const PDFPage *page) const
{
    const int index = m_document ? m_document->indexForPage(page) : -1;
    if (index < 0 || index >= m_layout.pageCount())
        return {};
    return widgetTransform(index) * QTransform(1, 0, 0, -1, 0, height());
}

ViewRect ScrolledPages::convertRectFromPage(const PageRect &rect, const PDFPage *page) const
{
    return fromQRectF<ViewSpace>(viewTransform(page).mapRect(toQRectF(rect)));
}

PageRect ScrolledPages::convertRectToPage(const ViewRect &rect, const PDFPage *page) const
{
    return fromQRectF<PageSpace>(viewTransform(page).inverted().mapRect(toQRectF(rect)));
}

ViewPoint ScrolledPages::convertPointFromPage(const PagePoint &point, const PDFPage *page) const
{
    const QPointF mapped = viewTransform(page).map(QPointF(point.x, point.y));
    return {mapped.x(), mapped.y()};
}

PagePoint ScrolledPages::convertPointToPage(const ViewPoint &point, const PDFPage *page) const
{
    const QPointF mapped = viewTransform(page).inverted().map(QPointF(point.x, point.y));
    return {mapped.x(), mapped.y()};
}

OverlayRect ScrolledPages::convertRectToOverlay(const ViewRect &rect) const
{
    return {rect.x, height() - rect.maxY(), rect.width, rect.height};
}

ViewRect ScrolledPages::convertRectFromOverlay(const OverlayRect &rect) const
{
    return {rect.x, height() - rect.maxY(), rect.width, rect.height};
}

OverlayPoint ScrolledPages::convertPointToOverlay(const ViewPoint &point) const
{
    return {point.x, height() - point.y};
}

ViewPoint ScrolledPages::convertPointFromOverlay(const OverlayPoint &point) const
{
    return {point.x, height() - point.y};
}

ViewPoint ScrolledPages::convertPointFromWindow(const WindowPoint &point) const
{
    const QPointF local = mapFrom(window(), QPointF(point.x, point.y));
    return {local.x(), height() - local.y()};
}

ViewRect ScrolledPages::viewBounds() const
{
    return {0, 0, static_cast<double>(width()), static_cast<double>(height())};
}

ViewRect ScrolledPages::visibleRect() const
{
    const QSize shown = viewport()->size();
    return {0, static_cast<double>(height() - shown.height()), static_cast<double>(shown.width()),
            static_cast<double>(shown.height())};
}

ViewRect ScrolledPages::documentViewFrame() const
{
    if (m_layout.pageCount() == 0)
        return {};
    const QPointF origin = documentOrigin();
    const QSizeF size = m_layout.documentSize();
    return {origin.x(), height() - origin.y() - size.height(), size.width(), size.height()};
}

PDFPage *ScrolledPages::pageForPoint(const ViewPoint &point, PageSearch search) const
{
    if (!m_document)
        return nullptr;
    const QPointF inDocument = QPointF(point.x, height() - point.y) - documentOrigin();
    const int index =
        search == PageSearch::Nearest ? m_layout.nearestPage(inDocument.y()) : m_layout.pageAt(inDocument);
    return m_document->pageAtIndex(index);
}

} // namespace inkory
