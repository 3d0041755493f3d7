// The events of the editing view: pointer, touch and keys, as far as they are about stamps. The rest is PDFView's.

#include "V1/editing/KRPDFView.h"

#include "V1/editing/StampDrag.h"
#include "V1/stamps/KRPDFPage.h"
#include "platform/core/PhysicalKeys.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QtMath>

using namespace inkory;

namespace
{

constexpr float longNudge = 10; // page units, with Shift

// What a key does to the selected stamp; false where it does nothing.
bool handleStampKey(KRPDFView &view, const QKeyEvent &event)
{
    const PhysicalKey key = physicalKey(event);
    if (key == PhysicalKey::Backspace || key == PhysicalKey::ForwardDelete) {
        view.deleteSelectedStampView();
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
    m_pointer = ViewPoint{event->position().x(), height() - event->position().y()};
    if (!event->buttons().testFlag(Qt::LeftButton))
        m_interaction.finish(); // the release went elsewhere
    if (event->buttons() == Qt::NoButton)
        updateHighlightOverlay(*m_pointer);
    else if (m_interaction.drag(*m_pointer, event->modifiers()) == PointerInteraction::Claim::Claimed)
        return;
    PDFView::mouseMoveEvent(event);
}

void KRPDFView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_interaction.release();
    PDFView::mouseReleaseEvent(event);
}

void KRPDFView::leaveEvent(QEvent *event)
{
    m_pointer.reset();
    m_overlays.hideHighlight();
    PDFView::leaveEvent(event);
}

// A finger on a button of the toolbar is the button's.
bool KRPDFView::claimsTouch(const ViewPoint &point) const
{
    if (m_overlays.isToolbarShown() && m_overlays.toolbarRect().contains(point)) {
        const OverlayRect place = convertRectToOverlay({point.x, point.y, 0, 0});
        return !m_stampViewToolbar->childAt(
            m_stampViewToolbar->mapFromParent(QPoint(qFloor(place.x), qFloor(place.y))));
    }
    const bool onSelection =
        m_selectedStampView && (m_overlays.selectionRect().contains(point) || stampOverlayResizeRect().contains(point));
    return onSelection || stampViewForPoint(point);
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
    } else if (!m_selectedStampView || !handleStampKey(*this, *event)) {
        PDFView::keyPressEvent(event);
    }
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
    scrollToVisible(stamp.frame(), page);
    if (stamp.frame() == before)
        return;
    annotationsChangedOnPage(page);
    if (m_undoManager)
        m_undoManager->noteChangeWithoutStep();
}
