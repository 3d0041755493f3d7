#include "V1/capture/BrushCursor.h"

#include "V1/capture/PadImage.h"

#include <QPainter>
#include <QPixmap>

#include <cmath>

namespace inkory
{

namespace
{

constexpr double leastCircle = 4;
constexpr int crossSide = 9;

void drawCrossHairs(QPainter &painter)
{
    constexpr double middle = crossSide / 2.0;
    painter.drawEllipse(QRectF(3, 3, 3, 3));
    painter.drawLine(QPointF(middle, 0), QPointF(middle, crossSide));
    painter.drawLine(QPointF(0, middle), QPointF(crossSide, middle));
}

} // namespace

QCursor brushCursor(double thickness, double devicePixelRatio)
{
    const bool isCircle = thickness >= leastCircle;
    const double side = isCircle ? thickness + 2 : crossSide;
    QImage image = emptyPadImage(QSizeF(side, side), devicePixelRatio);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor::fromRgbF(0.3F, 0.3F, 0.3F, 0.7F), 1, Qt::SolidLine, Qt::FlatCap));
        if (isCircle)
            painter.drawEllipse(QRectF(1, 1, thickness, thickness));
        else
            drawCrossHairs(painter);
    }
    const int hotSpot = isCircle ? static_cast<int>(std::ceil(thickness / 2)) + 1 : crossSide / 2;
    return QCursor(QPixmap::fromImage(image), hotSpot, hotSpot);
}

} // namespace inkory
