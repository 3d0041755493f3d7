#pragma once

#include "platform/core/Geometry.h"

#include <QCursor>
#include <QObject>
#include <QSizeF>

#include <optional>

class KRPDFOverlayView;
class KRPDFView;
class KRStamp;
class StampViewOverlay;
class StampViewToolbar;

/// Keeps what lies over the pages in step with the selection and the pointer: the selection overlay, the hover
/// highlight, the stamp toolbar and the cursor. A part of the editing view, which asks for an update after nearly every
/// change. Nothing here has a state that matters but where the pointer is: every update works everything out anew, and
/// setters that change nothing do nothing.
class OverlayTracking
{
public:
    explicit OverlayTracking(KRPDFView &view);

    /// Makes the container and both overlays and takes the view's toolbar in; once.
    void setUp();

    void updateStampViewOverlay();
    void updateHighlightOverlay(const inkory::ViewPoint &point);
    void updateCurrentCursor(const inkory::ViewPoint &point, const KRStamp *stampAtPoint);
    /// The pointer came to this point of the pages.
    void notePointer(const inkory::ViewPoint &point);
    /// Highlight and cursor for where the pointer was noted last; nothing while it is elsewhere.
    void followPointer();
    void setArrowCursor() { setCursor(CursorKind::Arrow); }
    void hideHighlight();

    /// The resize handle in view space: the lower right corner of the selection overlay, as large as the resize
    /// cursor's image, whether or not the overlay is shown.
    inkory::ViewRect stampOverlayResizeRect() const;
    /// Whether a press at the point takes the resize handle: of a selected stamp that can be resized, and only where
    /// the handle does not reach beyond a small stamp.
    bool isOnHandle(const inkory::ViewPoint &point) const;
    /// The selection overlay's frame in view space.
    inkory::ViewRect selectionRect() const;
    /// The toolbar's frame in view space, whether or not it is shown; empty without a toolbar.
    inkory::ViewRect toolbarRect() const;
    bool isToolbarShown() const;

    KRPDFOverlayView *clipView() const { return m_clipView; }
    StampViewOverlay *stampViewOverlay() const { return m_stampViewOverlay; }
    StampViewOverlay *highlightedViewOverlay() const { return m_highlightedViewOverlay; }

    // Shared by all views of the process and made by the first one.
    static const QCursor &imageStampCursor();
    static const QCursor &resizeCursor();
    /// In device-independent pixels; also the size of the resize handle.
    static QSizeF resizeCursorSize();
    static const QCursor &textStampCursor();
    /// How far below the text cursor's hot spot its image ends, in device-independent pixels: there the baseline of a
    /// new text stands.
    static double textCursorDescent();

private:
    enum class CursorKind { None, Arrow, IBeam, PointingHand, ImageStamp, TextStamp, Resize };

    void updateButtons(const KRStamp *selected);
    void updateTextButtons(const KRStamp *selected);
    void layOutToolbar();
    void placeToolbar(const inkory::OverlayRect &stampRect);
    CursorKind cursorFor(const inkory::ViewPoint &point, const KRStamp *stampAtPoint) const;
    CursorKind cursorOverPages(const inkory::ViewPoint &point) const;
    void setCursor(CursorKind kind);
    void forgetPointer();

    // The widgets are children of the view's viewport and live as long as it does.
    KRPDFView &m_view;
    KRPDFOverlayView *m_clipView = nullptr;
    StampViewOverlay *m_stampViewOverlay = nullptr;
    StampViewOverlay *m_highlightedViewOverlay = nullptr;
    CursorKind m_cursor = CursorKind::None;
    std::optional<inkory::OverlayPoint> m_pointer; // none while the pointer is elsewhere
    QObject m_connected;                           // what the container tells ends with this
};
