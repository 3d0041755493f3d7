#pragma once

#include "platform/core/Geometry.h"

#include <QWidget>

/// A framed, translucent rectangle exactly over a stamp's rectangle on screen. One marks the selected stamp, with a
/// resize grip if it can be resized; another, lighter one, through which clicks go, marks the stamp under the pointer.
/// Draws decoration only and takes no events.
class StampViewOverlay : public QWidget
{
    Q_OBJECT

public:
    explicit StampViewOverlay(QWidget *parent = nullptr);

    /// Exactly as set; the widget's own geometry is that in whole pixels.
    inkory::OverlayRect frame() const { return m_frame; }
    void setFrame(const inkory::OverlayRect &frame);

    /// A resize drag is in progress.
    bool resizing() const { return m_resizing; }
    void setResizing(bool resizing) { m_resizing = resizing; }
    /// Whether the grip is drawn and active.
    bool resizable() const { return m_resizable; }
    void setResizable(bool resizable);
    /// Whether this is the hover highlight.
    bool highlighted() const { return m_highlighted; }
    void setHighlighted(bool highlighted);

    bool acceptsFirstResponder() const { return false; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void drawGrip(QPainter &painter) const;

    inkory::OverlayRect m_frame;
    bool m_resizing = false;
    bool m_resizable = true;
    bool m_highlighted = false;
};
