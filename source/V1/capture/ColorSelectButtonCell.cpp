#include "V1/capture/ColorSelectButtonCell.h"

#include <QPainter>

namespace
{

constexpr int side = 20;
constexpr int inset = 4;
constexpr double dimmed = 0.3;

// Along the inner side of the rectangle's border, one point wide and sharp at every whole density.
void drawEdge(QPainter &painter, const QRect &rect, const QColor &color)
{
    painter.setPen(QPen(color, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5));
}

} // namespace

ColorSelectButtonCell::ColorSelectButtonCell(QWidget *parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void ColorSelectButtonCell::setBackgroundColor(const QColor &color)
{
    m_backgroundColor = color;
    update();
}

QSize ColorSelectButtonCell::sizeHint() const
{
    return {side, side};
}

void ColorSelectButtonCell::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : dimmed);
    painter.fillRect(rect(), palette().color(isDown() ? QPalette::Mid : QPalette::Button));
    painter.setRenderHint(QPainter::Antialiasing);
    drawEdge(painter, rect(), palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
    if (hasFocus())
        drawEdge(painter, rect().adjusted(1, 1, -1, -1), palette().color(QPalette::Highlight));

    const QRect square = rect().adjusted(inset, inset, -inset, -inset);
    QColor edge = palette().color(QPalette::ButtonText); // white stays visible on a light button, black on a dark one
    edge.setAlphaF(0.35F);
    drawEdge(painter, square.adjusted(-1, -1, 1, 1), edge);
    painter.fillRect(square, m_backgroundColor);
}
