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
    if (event->type() == QEvent::Resize)
        setGeometry(static_cast<QWidget *>(watched)->rect());
    return QWidget::eventFilter(watched, event);
}
