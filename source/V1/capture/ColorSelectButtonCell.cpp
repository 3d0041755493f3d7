#include "V1/capture/ColorSelectButtonCell.h"

#include <QPainter>

namespace
{

constexpr int side = 20;
constexpr int inset = 4;
constexpr double dimmed = 0.3;

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
    painter.setPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (hasFocus())
        painter.drawRect(rect().adjusted(1, 1, -2, -2));

    const QRect square = rect().adjusted(inset, inset, -inset, -inset);
    painter.setPen(palette().color(QPalette::Mid)); // white stays visible on a light button, black on a dark one
    painter.drawRect(square.adjusted(-1, -1, 0, 0));
    painter.fillRect(square, m_backgroundColor);
}
