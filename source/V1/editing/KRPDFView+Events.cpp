// The events of the editing view: pointer, touch and keys, as far as they are about stamps. The rest is PDFView's.

#include "V1/editing/KRPDFView.h"

#include "V1/editing/StampDrag.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFPage.h"
#include "platform/core/PhysicalKeys.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QtMath>

#include <algorithm>
#include <cmath>

using namespace inkory;

namespace
{

constexpr float longNudge = 10; // page units, with Shift

// The edges with the larger coordinates do not belong to a rectangle.
ViewPoint nearestPointIn(const ViewRect &rect, const ViewPoint &point)
{
    const double inset = std::min({1.0, rect.width / 2, rect.height / 2});
    return {std::clamp(point.x, rect.x, rect.maxX() - inset), std::clamp(point.y, rect.y, rect.maxY() - inset)};
}

// What a key does to the selected stamp; false where it does nothing.
bool handleStampKey(KRPDFView &view, const QKeyEvent &event)
{
    const PhysicalKey key = physicalKey(event);
    if (key == PhysicalKey::Backspace || key == PhysicalKey::ForwardDelete) {
        view.deleteSelectedStampView();
        return true;
    }
    if (key == PhysicalKey::Return && view.selectedStampView()->isEditable()) {
        view.startTextEditing();
        view.updateStampViewOverlay();
        return true;
    }
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    const float units = event.modifiers().testFlag(Qt::ShiftModifier) ? longNudge : 1;
    switch (key) {
    case PhysicalKey::Up:
        view.moveUp(units);
        return true;
    case PhysicalKey::Down:
        view.moveDown(units);
        return true;
    case PhysicalKey::Left:
        view.moveLeft(units);
        return true;
    case PhysicalKey::Right:
        view.moveRight(units);
        return true;
    default:
        return false;
    }
}

} // namespace

void KRPDFView::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event); // the second press of two is a press like any other
}

void KRPDFView::mousePressEvent(QMouseEvent *event)
{
    const ViewPoint point{event->position().x(), height() - event->position().y()};
    if (event->button() != Qt::LeftButton || m_interaction.press(point) == PointerInteraction::Claim::HandedOn)
        PDFView::mousePressEvent(event);
}

void KRPDFView::mouseMoveEvent(QMouseEvent *event)
{
    const ViewPoint point{event->position().x(), height() - event->position().y()};
    m_overlays.notePointer(point);
    if (!event->buttons().testFlag(Qt::LeftButton))
        m_interaction.finish(); // the release went elsewhere
    if (event->buttons() == Qt::NoButton)
        updateHighlightOverlay(point);
    else if (m_interaction.drag(point, event->modifiers()) == PointerInteraction::Claim::Claimed)
        return;
    PDFView::mouseMoveEvent(event);
}

void KRPDFView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_interaction.release();
    PDFView::mouseReleaseEvent(event);
}

// A finger on a button of the toolbar is the button's, one in the text being edited is the editor's.
bool KRPDFView::claimsTouch(const ViewPoint &point) const
{
    if (isEditingText() && convertRectFromOverlay(textEditor()->frame()).contains(point))
        return false;
    if (m_overlays.isToolbarShown() && m_overlays.toolbarRect().contains(point)) {
        const OverlayPoint place = convertPointToOverlay(point);
        return !m_stampViewToolbar->childAt(
            m_stampViewToolbar->mapFromParent(QPoint(qFloor(place.x), qFloor(place.y))));
    }
    const bool onSelection = m_selectedStampView && m_overlays.selectionRect().contains(point);
    return onSelection || stampViewForPoint(point);
}

ViewPoint KRPDFView::tapTarget(const ViewPoint &point, double reach) const
{
    if (m_currentToolType != ToolTypeSelect || claimsTouch(point) || isOverLink(point))
        return point;
    ViewPoint target = point;
    double nearest = reach;
    for (const auto &stamp : m_stampViews) {
        const ViewPoint place = nearestPointIn(stampRect(*stamp), point);
        const double distance = std::hypot(place.x - point.x, place.y - point.y);
        if (distance < nearest) {
            nearest = distance;
            target = place;
        }
    }
    return target;
}

bool KRPDFView::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (m_interaction.isHolding()) {
            event->accept(); // no command changes what is in the hand
            return true;
        }
        break;
    case QEvent::WindowDeactivate:
    case QEvent::WindowBlocked:
    case QEvent::Hide:
        m_interaction.finish();
        break;
    default:
        break;
    }
    return PDFView::event(event);
}

bool KRPDFView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::UngrabMouse || event->type() == QEvent::TouchCancel)
        m_interaction.finish();
    return PDFView::viewportEvent(event);
}

void KRPDFView::keyPressEvent(QKeyEvent *event)
{
    if (m_interaction.isHolding()) {
        if (physicalKey(*event) == PhysicalKey::Escape)
            m_interaction.cancel();
        event->accept();
    } else if (!m_selectedStampView || isEditingText() || !handleStampKey(*this, *event)) {
        PDFView::keyPressEvent(event);
    }
}

// Closing a panel or the find bar gives the keys back to the view: while a text is edited, they are its editor's.
void KRPDFView::focusInEvent(QFocusEvent *event)
{
    PDFView::focusInEvent(event);
    if (isEditingText())
        textEditor()->setFocus();
}

void KRPDFView::moveSelectedStampViewByX(float dx, float dy)
{
    if (!m_selectedStampView)
        return;
    KRStamp &stamp = *m_selectedStampView;
    const KRPDFPage *page = stamp.pdfPage();
    const PageRect before = stamp.frame();
    const PagePoint step = pageStep(dx, dy, page ? page->rotation() : 0);
    stamp.setFrame({before.x + step.x, before.y + step.y, before.width, before.height});
    updateStampViewOverlay();
    forceBoundsForSelectedStampView();
    scrollToVisible(stamp.frame(), page, 0); // with space the view would jump away under the stamp
    if (stamp.frame() == before)
        return;
    annotationsChangedOnPage(page);
    noteChangeWithoutStep();
}
