#include "V1/editing/StampViewOverlay.h"

#include <QPainter>

using namespace inkory;

namespace
{

constexpr double gripSize = 12;
constexpr double frameLineWidth = 2;

} // namespace

StampViewOverlay::StampViewOverlay(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);
}

void StampViewOverlay::setFrame(const OverlayRect &frame)
{
    m_frame = frame;
    const QPoint topLeft(qRound(frame.x), qRound(frame.y));
    setGeometry(QRect(topLeft, QPoint(qRound(frame.maxX()), qRound(frame.maxY())) - QPoint(1, 1)));
}

void StampViewOverlay::setResizable(bool resizable)
{
    if (resizable == m_resizable)
        return;
    m_resizable = resizable;
    update();
}

void StampViewOverlay::setHighlighted(bool highlighted)
{
    m_highlighted = highlighted;
    setAttribute(Qt::WA_TransparentForMouseEvents, highlighted);
    update();
}

void StampViewOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor::fromRgbF(0.1F, 0.1F, 0.1F, m_highlighted ? 0.03F : 0.1F));

    // The line straddles the edge, so its outer half is clipped. Qt counts dashes in line widths: 4 on, 2 off.
    QPen pen(QColor::fromRgbF(0.5F, 0.5F, 0.5F, m_highlighted ? 0.5F : 1.0F), frameLineWidth);
    pen.setDashPattern({4 / frameLineWidth, 2 / frameLineWidth});
    pen.setJoinStyle(Qt::RoundJoin);
    pen.setCapStyle(Qt::FlatCap);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()));
    if (m_resizable)
        drawGrip(painter);
}

// Stripes in the lower right corner, given in a space whose y runs upward from the lower edge.
void StampViewOverlay::drawGrip(QPainter &painter) const
{
    painter.translate(0, height());
    painter.scale(1, -1);
    const double w = width();
    painter.fillRect(QRectF(w - gripSize, 0, gripSize, gripSize), QColor::fromRgbF(0.9F, 0.9F, 0.9F, 0.2F));
    painter.setPen(QPen(QColor::fromRgbF(0.324F, 0.324F, 0.324F), 1, Qt::SolidLine, Qt::FlatCap));
    for (const double start : {11.0, 7.0, 3.0})
        painter.drawLine(QPointF(w - start, 2), QPointF(w - 2, start));
    painter.setPen(QPen(QColor::fromRgbF(0.703F, 0.703F, 0.703F), 1, Qt::SolidLine, Qt::FlatCap));
    for (const double start : {10.0, 6.0, 2.0})
        painter.drawLine(QPointF(w - start, 2), QPointF(w - 2, start));
}
