#include "V1/editing/StampViewToolbar.h"

#include <QPainter>

StampViewToolbar::StampViewToolbar(QWidget *parent) : QWidget(parent)
{
    setMouseTracking(true);
}

void StampViewToolbar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(QColor(Qt::gray), 2); // half of it is clipped at the edge
    pen.setJoinStyle(Qt::RoundJoin);
    painter.setPen(pen);
    painter.setBrush(QColor::fromRgbF(1, 1, 1, 0.85F));
    painter.drawRect(QRectF(rect()));
}
