#pragma once

class QColor;
class QPainter;
class QRectF;

namespace inkory
{

/// Colours a place of a page as a felt pen would: ink stays dark on a light page, and on a dark page the place is seen,
/// too. The painter composes with SourceOver afterwards.
void paintHighlight(QPainter &painter, const QRectF &place, const QColor &color);

} // namespace inkory
