#include "V1/editing/PointerInteraction.h"

#include "V1/editing/KRPDFView.h"
#include "V1/stamps/KRPDFPage.h"

#include <cmath>
#include <utility>

using namespace inkory;

PointerInteraction::PointerInteraction(KRPDFView &view, OverlayTracking &overlays)
    : m_view(view), m_overlays(overlays), m_edgeScroll(view)
{
    QObject::connect(&view, &PDFView::contentViewBoundsChanged, &m_connected, [this] { followPages(); });
    QObject::connect(&view, &PDFView::scaleFactorWillChange, &m_connected, [this] { m_isZooming = true; });
    QObject::connect(&view, &PDFView::scaleFactorChanged, &m_connected, [this] {
        m_isZooming = false;
        followPages();
    });
}

bool PointerInteraction::isHolding() const
{
    return m_press && m_press->mouseDownInStampView && !m_press->isOver && m_view.selectedStampView();
}

PointerInteraction::Claim PointerInteraction::press(const ViewPoint &point)
{
    finish(); // in case the last release got lost
    m_press.reset();
    m_overlays.hideHighlight();
    Press press;
    press.start = m_view.convertPointToOverlay(point);
    press.lastDragLocation = press.start;
    std::shared_ptr<KRStamp> hit = m_view.stampViewForPoint(point);
    const ToolType tool = m_view.currentToolType();
    const bool isKnownTool = tool >= ToolTypeSelect && tool <= ToolTypeTextStamp;
    const bool isOnToolbar = m_overlays.toolbarRect().contains(point);
    Claim claim = Claim::Claimed;
    if (!hit && (tool == ToolTypeImageStamp || (tool == ToolTypeTextStamp && !isOnToolbar)))
        placeStamp(point); // of an image also where the toolbar is
    else if (hit || isKnownTool || isOnToolbar)
        claim = take(grab(hit, press, point), press, point);
    m_press = press;
    return claim;
}

void PointerInteraction::placeStamp(const ViewPoint &point)
{
    if (!m_view.getDocumentViewFrameInPDFViewCords().contains(point))
        return;
    if (m_view.currentToolType() == ToolTypeImageStamp) {
        m_view.addImageStampView(point);
    } else {
        m_view.endTextEditing();
        if (UndoManager *undoManager = m_view.undoManager())
            undoManager->closeStep(); // two texts, two steps
        m_view.addTextStampView(point);
    }
}

PointerInteraction::Claim PointerInteraction::take(const std::shared_ptr<KRStamp> &hit, Press &press,
                                                   const ViewPoint &point)
{
    const bool wasSelected = hit && hit.get() == m_view.selectedStampView();
    m_view.setSelectedStampView(hit);
    if (!hit)
        return Claim::HandedOn;
    press.mayEnterEditMode = press.mayEnterEditMode && wasSelected;
    press.resizing = m_overlays.isOnHandle(point);
    press.grip = m_view.convertPointToPage(point, hit->pdfPage());
    press.before = hit->placement();
    return Claim::Claimed;
}

// Which stamp the press takes: the one under it, or the selected one by its overlay or by the toolbar's background.
std::shared_ptr<KRStamp> PointerInteraction::grab(std::shared_ptr<KRStamp> hit, Press &press, const ViewPoint &point)
{
    KRStamp *selected = m_view.selectedStampView();
    if (!selected || selected->stampMode() != StampModeEditing) {
        if (!hit && selected && m_overlays.selectionRect().contains(point))
            hit = selected->shared_from_this();
        press.mouseDownInStampView = hit != nullptr;
        press.mayEnterEditMode = hit != nullptr;
    }
    if (!press.mouseDownInStampView && selected && m_overlays.isToolbarShown() &&
        m_overlays.toolbarRect().contains(point)) {
        m_view.endTextEditing();
        selected = m_view.selectedStampView();
        if (!selected)
            return nullptr; // its text was empty
        press.mouseDownInStampView = true;
        press.mayEnterEditMode = false;
        selected->setStampMode(StampModeNormal);
        hit = selected->shared_from_this();
        m_view.setFocus();
    }
    return hit;
}

PointerInteraction::Claim PointerInteraction::drag(const ViewPoint &point, Qt::KeyboardModifiers modifiers)
{
    if (!m_press || !m_press->mouseDownInStampView)
        return Claim::HandedOn;
    if (m_press->isOver)
        return Claim::Claimed;
    const KRStamp *stamp = m_view.selectedStampView();
    if (!stamp || stamp->stampMode() == StampModeEditing)
        return Claim::HandedOn;
    m_press->modifiers = modifiers;
    dragTo(point);
    m_edgeScroll.follow(m_press->start, m_press->lastDragLocation);
    return Claim::Claimed;
}

void PointerInteraction::dragTo(const ViewPoint &point)
{
    KRStamp &stamp = *m_view.selectedStampView();
    m_press->mayEnterEditMode = false;
    m_view.setNeedsDisplayInRect(m_view.stampRect(stamp));
    stamp.setStampMode(StampModeDragging);
    const OverlayPoint place = m_view.convertPointToOverlay(point);
    // Both on the same way, so that a pointer that rests makes no step at all.
    const PointerStep step{m_view.convertPointFromOverlay(m_press->lastDragLocation),
                           m_view.convertPointFromOverlay(place)};
    if (m_press->resizing) {
        m_view.updateCurrentCursor(point);
        resizeStep(stamp, step);
    } else {
        moveStep(stamp, step);
    }
    m_press->lastDragLocation = place;
    m_press->grip = m_view.convertPointToPage(point, stamp.pdfPage());
    m_view.updateStampViewOverlay();
    m_view.setNeedsDisplayInRect(m_view.stampRect(stamp));
}

void PointerInteraction::resizeStep(KRStamp &stamp, const PointerStep &step)
{
    const bool isFree = m_press->modifiers.testFlag(Qt::ShiftModifier);
    stamp.setFrame(
        resizedFrame(stamp.frame(), pageInView(stamp.pdfPage()), step, isFree ? Proportions::Free : Proportions::Kept));
}

void PointerInteraction::moveStep(KRStamp &stamp, const PointerStep &step)
{
    auto *page = dynamic_cast<KRPDFPage *>(m_view.pageForPoint(step.to, PageSearch::Nearest));
    if (!page)
        return;
    if (page != stamp.pdfPage())
        moveToPage(stamp, *page);
    stamp.setFrame(movedFrame(stamp.frame(), pageInView(page), step));
}

void PointerInteraction::moveToPage(KRStamp &stamp, KRPDFPage &page)
{
    const PageInView from = pageInView(stamp.pdfPage());
    const PageInView to = pageInView(&page);
    if (isOddTurn(from.rotation, to.rotation))
        stamp.rotateFrame();
    if (!isOddTurn(pageInView(m_press->before.page).rotation, to.rotation))
        restoreTrackingPoint(stamp);
    const PageRect frame = frameOnOtherPage(stamp.frame(), from, to);
    m_view.annotationsChangedOnPage(&page);
    m_view.annotationsChangedOnPage(stamp.pdfPage());
    stamp.setPdfPage(&page);
    stamp.setFrame(frame);
}

// Turned back, the stamp is as the press found it: so is where undoing leads.
void PointerInteraction::restoreTrackingPoint(KRStamp &stamp) const
{
    KRStamp::Placement placement = stamp.placement();
    placement.lastPage = m_press->before.lastPage;
    placement.lastFrame = m_press->before.lastFrame;
    stamp.restorePlacement(placement);
}

void PointerInteraction::release()
{
    const bool entersEditMode = m_press && m_press->mayEnterEditMode && !m_press->isOver;
    finish();
    m_press.reset();
    const KRStamp *stamp = m_view.selectedStampView();
    if (!entersEditMode || !stamp || !stamp->isEditable())
        return;
    m_view.startTextEditing();
    m_view.updateStampViewOverlay();
}

void PointerInteraction::finish()
{
    if (!m_press || m_press->isOver)
        return;
    settle();
    m_press->isOver = true;
}

void PointerInteraction::settle()
{
    m_edgeScroll.stop();
    const bool wasResizing = std::exchange(m_press->resizing, false);
    KRStamp *stamp = m_view.selectedStampView();
    if (!stamp)
        return;
    if (wasResizing || stamp->stampMode() == StampModeDragging) {
        stamp->setStampMode(StampModeSelected);
        m_view.annotationsChangedOnPage(stamp->pdfPage());
        m_overlays.setArrowCursor();
    }
    m_view.forceBoundsForSelectedStampView();
    m_view.setNeedsDisplayInRect(m_view.stampRect(*stamp));
    stamp->trackFrameAndPageChanges();
}

void PointerInteraction::cancel()
{
    if (!isHolding())
        return;
    m_edgeScroll.stop();
    m_press->isOver = true;
    m_press->resizing = false;
    KRStamp &stamp = *m_view.selectedStampView();
    m_view.annotationsChangedOnPage(stamp.pdfPage());
    stamp.restorePlacement(m_press->before);
    stamp.setStampMode(StampModeSelected);
    m_view.annotationsChangedOnPage(stamp.pdfPage());
    m_overlays.setArrowCursor();
    m_view.updateStampViewOverlay();
}

// The pages moved under the pointer, by whatever means: what is held stays under it.
void PointerInteraction::followPages()
{
    if (!isHolding() || m_isZooming)
        return;
    const ViewPoint pointer = m_view.convertPointFromOverlay(m_press->lastDragLocation);
    const ViewPoint grip = m_view.convertPointFromPage(m_press->grip, m_view.selectedStampView()->pdfPage());
    constexpr double leastMovement = 0.5; // pages move by whole pixels; the rest is rounding
    if (std::abs(grip.x - pointer.x) < leastMovement && std::abs(grip.y - pointer.y) < leastMovement)
        return;
    m_press->lastDragLocation = m_view.convertPointToOverlay(grip);
    dragTo(pointer);
}

PageInView PointerInteraction::pageInView(const KRPDFPage *page) const
{
    const KRPDFView &view = m_view;
    return {page ? page->rotation() : 0,
            [&view, page](const PageRect &rect) { return view.convertRectFromPage(rect, page); },
            [&view, page](const ViewRect &rect) { return view.convertRectToPage(rect, page); },
            [&view, page](const ViewPoint &point) { return view.convertPointToPage(point, page); }};
}
