// The pointer on the pages of the view: it selects text and follows links. Presses that a subclass claims do not come
// here.

#include "platform/widgets/PDFView+Reading.h"

#include "platform/widgets/AddressText.h"
#include "platform/widgets/PlainToolTip.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inkory
{

namespace
{

bool isFollowed(const PageLink &link)
{
    return link.destination || isLinkAddress(link.address);
}

template <class Point> double distance(const Point &a, const Point &b)
{
    return std::abs(a.x - b.x) + std::abs(a.y - b.y);
}

} // namespace

PageSpot PDFView::spotAt(const ViewPoint &point) const
{
    const PDFPage *page = pageForPoint(point, PageSearch::Nearest);
    if (!page)
        return {-1, {}};
    const PagePoint inPage = convertPointToPage(point, page);
    const QTransform toFileSpace = shownPageTransform(page->geometry().cropBox, page->geometry().rotation);
    return {page->sourceIndex(), toFileSpace.map(QPointF(inPage.x, inPage.y))};
}

bool PDFView::isOverText(const ViewPoint &point) const
{
    if (!pageForPoint(point, PageSearch::Exact))
        return false;
    const PageSpot spot = spotAt(point);
    const TextGeometry *text = m_reading->texts.geometry(spot.page);
    return text && text->isOverText(spot.point);
}

const PageLink *PDFView::linkAt(const ViewPoint &point) const
{
    if (!pageForPoint(point, PageSearch::Exact))
        return nullptr;
    const PageSpot spot = spotAt(point);
    const std::vector<PageLink> &links = m_reading->texts.links(spot.page);
    const auto topmost = std::find_if(links.rbegin(), links.rend(),
                                      [&](const PageLink &link) { return link.area.contains(spot.point); });
    return topmost != links.rend() && isFollowed(*topmost) ? &*topmost : nullptr;
}

bool PDFView::isOverLink(const ViewPoint &point) const
{
    return linkAt(point) != nullptr;
}

QString PDFView::addressAt(const ViewPoint &point) const
{
    const PageLink *link = linkAt(point);
    return link ? link->address : QString();
}

bool PDFView::showAddressAt(const QHelpEvent &event)
{
    const QString address = addressAt({double(event.pos().x()), double(height() - event.pos().y())});
    if (address.isEmpty())
        return false;
    QToolTip::showText(event.globalPos(), plainToolTip(addressText(address)), viewport());
    return true;
}

void PDFView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::BackButton) {
        goBack();
        return;
    }
    if (event->button() == Qt::ForwardButton) {
        goForward();
        return;
    }
    if (event->button() != Qt::LeftButton || m_layout.pageCount() == 0) {
        QAbstractScrollArea::mousePressEvent(event);
        return;
    }
    const ViewPoint point{event->position().x(), height() - event->position().y()};
    const bool extends = event->modifiers().testFlag(Qt::ShiftModifier);
    const TextSelection::Unit unit = unitOfPress(point, event->type() == QEvent::MouseButtonDblClick);
    const OverlayPoint place = convertPointToOverlay(point);
    m_reading->press = Reading::Press{place, place, {}, false};
    if (const PageLink *link = linkAt(point); link && !extends && unit == TextSelection::Unit::Character)
        m_reading->press->link = *link;
    if (extends)
        m_reading->selecting.extend(spotAt(point));
    else
        m_reading->selecting.begin(spotAt(point), unit);
    event->accept();
}

void PDFView::mouseDoubleClickEvent(QMouseEvent *event)
{
    PDFView::mousePressEvent(event);
}

// The third press of three is one like any other to the system.
TextSelection::Unit PDFView::unitOfPress(const ViewPoint &point, bool isSecond)
{
    if (isSecond) {
        m_reading->sinceDoubleClick.start();
        m_reading->doubleClickPlace = point;
        return TextSelection::Unit::Word;
    }
    const bool isThird = m_reading->sinceDoubleClick.isValid() &&
                         !m_reading->sinceDoubleClick.hasExpired(QApplication::doubleClickInterval()) &&
                         distance(point, m_reading->doubleClickPlace) < QApplication::startDragDistance();
    m_reading->sinceDoubleClick.invalidate();
    return isThird ? TextSelection::Unit::Line : TextSelection::Unit::Character;
}

void PDFView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_reading->press && !event->buttons().testFlag(Qt::LeftButton))
        endPress(); // its release went elsewhere
    if (!m_reading->press) {
        QAbstractScrollArea::mouseMoveEvent(event);
        return;
    }
    Reading::Press &press = *m_reading->press;
    press.last = {event->position().x(), event->position().y()};
    event->accept();
    if (press.link && distance(press.start, press.last) < QApplication::startDragDistance())
        return;
    press.link.reset();
    press.isSelecting = true;
    selectTo(convertPointFromOverlay(press.last));
    m_reading->edgeScroll.follow(press.start, press.last); // the selection goes along: contentViewBoundsChanged()
}

void PDFView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_reading->press || event->button() != Qt::LeftButton) {
        QAbstractScrollArea::mouseReleaseEvent(event);
        return;
    }
    const std::optional<PageLink> link = m_reading->press->link;
    endPress();
    event->accept();
    if (link)
        follow(*link);
}

void PDFView::keyPressEvent(QKeyEvent *event)
{
    if (!m_reading->press || event->key() != Qt::Key_Escape) {
        ScrolledPages::keyPressEvent(event);
        return;
    }
    endPress();
    clearTextSelection();
    event->accept();
}

void PDFView::endPress()
{
    m_reading->press.reset();
    m_reading->edgeScroll.stop();
    m_reading->selecting.finish();
}

void PDFView::follow(const PageLink &link)
{
    if (link.destination)
        followDestination(*link.destination);
    else
        Q_EMIT addressActivated(link.address);
}

void PDFView::selectTo(const ViewPoint &point)
{
    const ViewRect shown = visibleRect();
    m_reading->selecting.moveTo(
        spotAt({std::clamp(point.x, shown.x, shown.maxX()), std::clamp(point.y, shown.y, shown.maxY())}));
}

} // namespace inkory
