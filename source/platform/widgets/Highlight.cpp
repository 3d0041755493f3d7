#include "platform/widgets/Highlight.h"

#include <QColor>
#include <QPainter>

namespace inkory
{

void paintHighlight(QPainter &painter, const QRectF &place, const QColor &color)
{
    constexpr int veilAlpha = 50; // of 255: nothing on white, where the colour is already; little on black
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    painter.fillRect(place, color);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.fillRect(place, QColor(color.red(), color.green(), color.blue(), veilAlpha));
}

} // namespace inkory
