#pragma once

#include "V1/editing/StampDrag.h"
#include "V1/stamps/KRStamp.h"
#include "platform/core/Geometry.h"
#include "platform/widgets/EdgeScroll.h"

#include <QObject>

#include <memory>
#include <optional>

class KRPDFView;
class OverlayTracking;

/// What the pointer does to stamps, from press to release: a press places a stamp or takes one into the hand, and what
/// is held is moved or resized, also onto other pages, until it is let go of. One gesture is at most one undo step. A
/// part of the editing view, which hands it the events of the left button. Points are in view space, and may lie
/// outside the view while something is held.
class PointerInteraction
{
public:
    /// Whether an event is used up, or is the base class's business.
    enum class Claim { Claimed, HandedOn };

    PointerInteraction(KRPDFView &view, OverlayTracking &overlays);

    Claim press(const inkory::ViewPoint &point);
    Claim drag(const inkory::ViewPoint &point, Qt::KeyboardModifiers modifiers);
    void release();
    /// The press is over although the button may still be down (the grab was lost, something else is selected): as
    /// after a release. What follows of the press counts for nothing. Nothing without a press.
    void finish();
    /// What is held goes back to where the press found it, as if there had been no drag: page, frame and tracking point
    /// of undo. What follows of the press counts for nothing. Nothing unless a stamp is held.
    void cancel();

    /// The selected stamp is in the hand: it follows the pointer, and keys have to wait.
    bool isHolding() const;
    bool isResizing() const { return m_press && m_press->resizing; }

private:
    /// From a press to its release. The pointer's places are in the space that stays where it is on the screen when the
    /// view becomes lower.
    struct Press
    {
        bool mouseDownInStampView = false; ///< Its drags move or resize the selected stamp.
        bool resizing = false;             ///< It began on the resize handle.
        bool mayEnterEditMode = false;     ///< On the stamp that was selected already: unless dragged, it is edited.
        bool isOver = false;               ///< Finished or cancelled before its release.
        Qt::KeyboardModifiers modifiers;   ///< Of the last drag.
        inkory::OverlayPoint start;
        inkory::OverlayPoint lastDragLocation;
        inkory::PagePoint grip;    ///< lastDragLocation on the held stamp's page.
        KRStamp::Placement before; ///< Of the held stamp, at the press.
    };

    void placeStamp(const inkory::ViewPoint &point);
    std::shared_ptr<KRStamp> grab(std::shared_ptr<KRStamp> hit, Press &press, const inkory::ViewPoint &point);
    Claim take(const std::shared_ptr<KRStamp> &hit, Press &press, const inkory::ViewPoint &point);
    void dragTo(const inkory::ViewPoint &point);
    void resizeStep(KRStamp &stamp, const PointerStep &step);
    void moveStep(KRStamp &stamp, const PointerStep &step);
    void moveToPage(KRStamp &stamp, KRPDFPage &page);
    void restoreTrackingPoint(KRStamp &stamp) const;
    void settle();
    void followPages();
    PageInView pageInView(const KRPDFPage *page) const;

    KRPDFView &m_view;
    OverlayTracking &m_overlays;
    std::optional<Press> m_press;
    bool m_isZooming = false;
    inkory::EdgeScroll m_edgeScroll;
    QObject m_connected; // what the view tells ends with this
};
