// How the pages are moved under the view: by wheels, keys, scroll bars and calls. Zooming is in
// ScrolledPages+Zooming.cpp.

#include "platform/widgets/ScrolledPages.h"
#include "platform/widgets/TouchInput.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QWheelEvent>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

// What an arrow key scrolls, and one line of a wheel's step.
constexpr double pixelsPerStep = 40;
constexpr int unitsPerNotch = 120;
constexpr int glideMilliseconds = 120;
// Scroll bars count in int, and add their numbers up.
constexpr double mostBarSteps = 1e9;

// The smallest distance to scroll until a stretch is in view, or the view is full of it; to its start where nothing of
// it is seen and it is too long.
double distanceToShow(double start, double end, double shown, double mostSpace)
{
    const bool isTooLong = end - start > shown;
    const bool isInView = isTooLong ? start <= 0 && end >= shown : start >= 0 && end <= shown;
    if (isInView)
        return 0;
    if (isTooLong)
        return start > 0 || end <= 0 ? start : end - shown;
    const double space = std::min((shown - (end - start)) / 2, mostSpace);
    return start < 0 ? start - space : end + space - shown;
}

} // namespace

QSizeF ScrolledPages::scrollRange() const
{
    const QSizeF document = m_layout.documentSize();
    const QSize shown = viewport()->size();
    return {std::max(0.0, document.width() - shown.width()), std::max(0.0, document.height() - shown.height())};
}

QPointF ScrolledPages::bounded(const QPointF &position) const
{
    const QSizeF range = scrollRange();
    return {std::clamp(position.x(), 0.0, range.width()), std::clamp(position.y(), 0.0, range.height())};
}

void ScrolledPages::moveTo(const QPointF &position)
{
    if (!std::isfinite(position.x()) || !std::isfinite(position.y()))
        return;
    const QPointF to = bounded(position);
    if (to.x() == m_scrollPosition.x() && to.y() == m_scrollPosition.y())
        return;
    m_scrollPosition = to;
    m_chosenPage = -1;
    m_zoomAnchor.reset();
    positionChanged();
}

void ScrolledPages::positionChanged()
{
    if (!isLookedAt(m_chosenPage))
        m_chosenPage = -1;
    setScrollBarValues();
    viewport()->update();
    noteCurrentPage();
    Q_EMIT contentViewBoundsChanged();
}

void ScrolledPages::scrollTo(const QPointF &position)
{
    stopMoving();
    moveTo(position);
}

void ScrolledPages::stopMoving()
{
    m_glide.stop();
    m_touch->stop();
}

// Ends exactly where the sum of all steps leads, also of those that came on the way.
void ScrolledPages::glideBy(const QPointF &distance)
{
    const bool isOnTheWay = m_glide.state() == QAbstractAnimation::Running;
    const QPointF end = bounded((isOnTheWay ? m_glide.endValue().toPointF() : m_scrollPosition) + distance);
    stopMoving();
    if (style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) <= 0) {
        moveTo(end);
        return;
    }
    m_glide.setStartValue(m_scrollPosition);
    m_glide.setEndValue(end);
    m_glide.setDuration(glideMilliseconds);
    m_glide.setEasingCurve(QEasingCurve::OutCubic);
    m_glide.start();
}

double ScrolledPages::pixelsPerBarStep(double range)
{
    return std::max(1.0, range / mostBarSteps);
}

void ScrolledPages::setScrollBarRanges()
{
    const QScopedValueRollback guard(m_isSettingScrollBars, true);
    const auto adjust = [](QScrollBar *bar, double range, int shown) {
        const double unit = pixelsPerBarStep(range);
        bar->setPageStep(std::max(1, qRound(shown / unit)));
        bar->setSingleStep(std::max(1, qRound(pixelsPerStep / unit)));
        bar->setRange(0, qCeil(range / unit));
    };
    const QSizeF document = m_layout.documentSize();
    const QSize most = maximumViewportSize();
    if (document.width() <= most.width() && document.height() <= most.height()) {
        horizontalScrollBar()->setRange(0, 0);
        verticalScrollBar()->setRange(0, 0);
        return;
    }
    // A bar that appears takes room that the other one then lacks.
    for (int round = 0; round < 2; ++round) {
        adjust(horizontalScrollBar(), scrollRange().width(), viewport()->width());
        adjust(verticalScrollBar(), scrollRange().height(), viewport()->height());
    }
}

void ScrolledPages::setScrollBarValues()
{
    const QScopedValueRollback guard(m_isSettingScrollBars, true);
    const QSizeF range = scrollRange();
    horizontalScrollBar()->setValue(qRound(m_scrollPosition.x() / pixelsPerBarStep(range.width())));
    verticalScrollBar()->setValue(qRound(m_scrollPosition.y() / pixelsPerBarStep(range.height())));
}

void ScrolledPages::scrollContentsBy(int dx, int dy)
{
    if (m_isSettingScrollBars)
        return;
    const QSizeF range = scrollRange();
    QPointF to = m_scrollPosition;
    if (dx != 0)
        to.setX(horizontalScrollBar()->value() * pixelsPerBarStep(range.width()));
    if (dy != 0)
        to.setY(verticalScrollBar()->value() * pixelsPerBarStep(range.height()));
    scrollTo(to);
}

void ScrolledPages::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (m_isSettingScrollBars)
        return; // whoever sets them goes on from here
    m_zoomAnchor.reset();
    setScrollBarRanges();
    m_scrollPosition = bounded(m_scrollPosition);
    positionChanged();
}

void ScrolledPages::goToPage(int index)
{
    if (index < 0 || index >= m_layout.pageCount())
        return;
    const QRectF page = m_layout.pageRect(index);
    const QRectF across(m_scrollPosition.x(), page.top(), viewport()->width(), 1);
    const double left = across.intersects(page) ? across.left() : page.center().x() - across.width() / 2;
    scrollTo({left, page.top() - PageLayout::margin});
    choosePage(index); // also where there is nothing to scroll
}

// Whether the page covers the middle of the view's height, or lies within that height as a whole.
bool ScrolledPages::isLookedAt(int index) const
{
    if (index < 0 || index >= m_layout.pageCount())
        return false;
    const QRectF page = pageRectInWidget(index);
    const double middle = viewport()->height() / 2.0;
    return (page.top() <= middle && page.bottom() >= middle) ||
           (page.top() >= 0 && page.bottom() <= viewport()->height());
}

void ScrolledPages::choosePage(int index)
{
    m_chosenPage = index;
    noteCurrentPage();
}

ScrolledPages::Place ScrolledPages::place() const
{
    const QPointF corner = -exactOrigin();
    // A gap at the top belongs to the page below it: nothing else is seen there.
    const int index = m_document ? m_layout.nearestPage(corner.y() + PageLayout::margin / 2) : -1;
    return index < 0 ? Place{} : placeInDocument(corner, index);
}

void ScrolledPages::goToPlace(const Place &place)
{
    if (m_document && place.pageIndex >= 0 && place.pageIndex < m_layout.pageCount())
        scrollTo(pointInDocument(place));
}

void ScrolledPages::scrollToVisible(const PageRect &rect, const PDFPage *page, double space)
{
    const int index = m_document ? m_document->indexForPage(page) : -1;
    if (index < 0 || index >= m_layout.pageCount())
        return;
    const ViewRect shown = convertRectFromPage(rect, page);
    const double left = shown.x;
    const double top = height() - shown.maxY();
    scrollBy({distanceToShow(left, left + shown.width, viewport()->width(), space),
              distanceToShow(top, top + shown.height, viewport()->height(), space)});
}

void ScrolledPages::wheelEvent(QWheelEvent *event)
{
    event->accept();
    const QPointF notches = QPointF(event->angleDelta()) / unitsPerNotch;
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        zoomByNotches(notches.y(), event->position());
        return;
    }
    const bool isSideways = event->modifiers().testFlag(Qt::ShiftModifier) && notches.x() == 0;
    const auto turned = [isSideways](const QPointF &delta) { return isSideways ? delta.transposed() : delta; };
    if (!event->pixelDelta().isNull()) {
        scrollBy(-turned(event->pixelDelta()));
        return;
    }
    const double lines = pixelsPerStep * QApplication::wheelScrollLines();
    const QPointF distance = -turned({notches.x() * std::min(lines, viewport()->width() - pixelsPerStep),
                                      notches.y() * std::min(lines, viewport()->height() - pixelsPerStep)});
    // What is not a whole notch comes from a device that moves smoothly by itself.
    const bool isWholeNotch =
        event->angleDelta().x() % unitsPerNotch == 0 && event->angleDelta().y() % unitsPerNotch == 0;
    if (isWholeNotch && event->phase() == Qt::NoScrollPhase)
        glideBy(distance);
    else
        scrollBy(distance);
}

void ScrolledPages::keyPressEvent(QKeyEvent *event)
{
    const auto modifiers = event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    const bool isToTheEnds = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    const bool isPlain = modifiers == Qt::NoModifier || (isToTheEnds && modifiers == Qt::ControlModifier);
    event->setAccepted(isPlain && scrollWithKey(*event));
}

bool ScrolledPages::scrollWithKey(const QKeyEvent &event)
{
    const double page = std::max(1.0, viewport()->height() - pixelsPerStep);
    switch (event.key()) {
    case Qt::Key_Home:
        scrollTo({m_scrollPosition.x(), 0});
        choosePage(0);
        break;
    case Qt::Key_End:
        scrollTo({m_scrollPosition.x(), scrollRange().height()});
        choosePage(m_layout.pageCount() - 1);
        break;
    case Qt::Key_PageUp:
        scrollBy({0, -page});
        break;
    case Qt::Key_PageDown:
        scrollBy({0, page});
        break;
    case Qt::Key_Space:
        scrollBy({0, event.modifiers().testFlag(Qt::ShiftModifier) ? -page : page});
        break;
    case Qt::Key_Up:
        scrollBy({0, -pixelsPerStep});
        break;
    case Qt::Key_Down:
        scrollBy({0, pixelsPerStep});
        break;
    case Qt::Key_Left:
        scrollSidewaysOrTurnPage(-1);
        break;
    case Qt::Key_Right:
        scrollSidewaysOrTurnPage(1);
        break;
    default:
        return false;
    }
    return true;
}

void ScrolledPages::scrollSidewaysOrTurnPage(int direction)
{
    if (scrollRange().width() > 0)
        scrollBy({direction * pixelsPerStep, 0});
    else
        goToPage(currentPageIndex() + direction);
}

} // namespace inkory
