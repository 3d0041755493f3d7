#pragma once

#include "platform/core/Geometry.h"

#include <QPoint>
#include <QTimer>

namespace inkory
{

class PDFView;

/// How far to scroll at each tick while something is dragged near an edge of the visible part or beyond it: pixels (x
/// to the right, y downward), more the further out. A drag that began near an edge scrolls only once it is nearer than
/// where it began.
QPoint edgeScrollStep(const OverlayRect &visible, const OverlayPoint &start, const OverlayPoint &pointer);

/// Scrolls a view while something is dragged near an edge of it. What is dragged has to follow the pages by itself
/// (PDFView::contentViewBoundsChanged). A part of whoever drags, who outlives neither the view nor this.
class EdgeScroll
{
public:
    explicit EdgeScroll(PDFView &view);

    /// A drag that began at `start` is at `pointer`, and stays there until the next call or stop().
    void follow(const OverlayPoint &start, const OverlayPoint &pointer);
    /// The drag is over. Nothing without one.
    void stop() { m_timer.stop(); }

private:
    QPoint step() const;
    void scroll();

    PDFView &m_view;
    QTimer m_timer;
    OverlayPoint m_start;
    OverlayPoint m_pointer;
};

} // namespace inkory
