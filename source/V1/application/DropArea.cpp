#include "V1/application/DropArea.h"

#include <QPainter>

namespace inkory
{

namespace
{

constexpr qreal quietEdge = 1.5;
constexpr qreal invitingEdge = 2.5;
constexpr qreal cornerRadius = 10;
constexpr int quietEdgeAlpha = 90;
constexpr int invitingFillAlpha = 40;

} // namespace

void DropArea::setLook(Look look)
{
    if (m_look == look)
        return;
    m_look = look;
    update();
}

void DropArea::paintEvent(QPaintEvent *)
{
    if (m_look == Look::Hidden)
        return;
    const bool inviting = m_look == Look::Inviting;
    const qreal edge = inviting ? invitingEdge : quietEdge;
    QColor color = palette().color(inviting ? QPalette::Highlight : QPalette::WindowText);
    QColor fill = color;
    fill.setAlpha(inviting ? invitingFillAlpha : 0);
    if (!inviting)
        color.setAlpha(quietEdgeAlpha);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, edge, Qt::DashLine, Qt::RoundCap));
    painter.setBrush(fill);
    const qreal inset = edge / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
}

} // namespace inkory
