#include "V1/capture/SignaturePadBackgroundView.h"

#include <QPaintEvent>
#include <QPainter>

namespace
{

constexpr int marginLinePosition = 40;
constexpr double marginLineWidth = 5;

bool isGrid(SignaturePadBackgroundStyle style)
{
    return style == SignaturePadBackgroundStyleGrid || style == SignaturePadBackgroundStyleYellowGrid;
}

bool isRuled(SignaturePadBackgroundStyle style)
{
    return style != SignaturePadBackgroundStylePlain && style != SignaturePadBackgroundStyleGray &&
           style != SignaturePadBackgroundStyleDark;
}

QColor fillColor(SignaturePadBackgroundStyle style)
{
    switch (style) {
    case SignaturePadBackgroundStyleYellowRuled:
    case SignaturePadBackgroundStyleYellowGrid:
        return QColor::fromRgbF(0.97F, 0.96F, 0.78F);
    case SignaturePadBackgroundStyleGray:
        return QColor::fromRgbF(0.8F, 0.8F, 0.8F);
    case SignaturePadBackgroundStyleDark:
        return QColor::fromRgbF(0.05F, 0.05F, 0.05F);
    default:
        return QColor::fromRgbF(0.98F, 0.98F, 0.98F);
    }
}

// The ruling is measured from the upper left corner.
void drawRuling(QPainter &painter, const QSize &size, bool isGrid)
{
    const int spacing = isGrid ? 20 : 25;
    painter.setPen(QPen(QColor::fromRgbF(0.3F, 0.3F, 0.9F, 0.6F), 1, Qt::SolidLine, Qt::FlatCap));
    for (int y = 0; y < size.height(); y += spacing)
        painter.drawLine(QPointF(0, y), QPointF(size.width(), y));
    for (int x = 0; isGrid && x <= size.width(); x += spacing)
        painter.drawLine(QPointF(x, 0), QPointF(x, size.height()));
    painter.setPen(QPen(QColor::fromRgbF(0.9F, 0.2F, 0.2F, 0.5F), marginLineWidth, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(QPointF(marginLinePosition, 0), QPointF(marginLinePosition, size.height()));
}

} // namespace

SignaturePadBackgroundView::SignaturePadBackgroundView(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void SignaturePadBackgroundView::setSignaturePadBackgroundStyle(SignaturePadBackgroundStyle style)
{
    m_signaturePadBackgroundStyle = style;
    update();
}

void SignaturePadBackgroundView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), fillColor(m_signaturePadBackgroundStyle));
    painter.setRenderHint(QPainter::Antialiasing);
    if (isRuled(m_signaturePadBackgroundStyle))
        drawRuling(painter, size(), isGrid(m_signaturePadBackgroundStyle));
}
