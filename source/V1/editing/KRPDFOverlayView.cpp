#include "V1/editing/KRPDFOverlayView.h"

#include <QEvent>

KRPDFOverlayView::KRPDFOverlayView(QWidget *viewport) : QWidget(viewport)
{
    setGeometry(viewport->rect());
    setMouseTracking(true); // the view needs pointer movements over its whole area
    viewport->installEventFilter(this);
}

bool KRPDFOverlayView::eventFilter(QObject *watched, QEvent *event)
{
    const bool isViewport = watched == parent();
    if (isViewport && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    else if (event->type() == (isViewport ? QEvent::Leave : QEvent::Enter))
        Q_EMIT pointerLeft();
    return QWidget::eventFilter(watched, event);
}
