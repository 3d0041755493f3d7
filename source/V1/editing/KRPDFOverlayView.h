#pragma once

#include <QWidget>

/// The container of what lies over the pages: the hover highlight, the selection overlay and the stamp toolbar. A child
/// of the editing view's viewport that covers it; its space runs downward from the top. Takes no events itself: presses
/// on its empty area reach the editing view.
class KRPDFOverlayView : public QWidget
{
    Q_OBJECT

public:
    explicit KRPDFOverlayView(QWidget *viewport);

    /// y grows downward in this view's space.
    bool isFlipped() const { return true; }

Q_SIGNALS:
    /// The pointer went from the pages to a scroll bar, out of the view, or onto something whose events this view
    /// filters (the toolbar).
    void pointerLeft();

private:
    bool eventFilter(QObject *watched, QEvent *event) override;
};
