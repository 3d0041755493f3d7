#include "V1/capture/TrackpadHint.h"

#include "V1/capture/PadImage.h"

#include <QCoreApplication>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace inkory
{

namespace
{

// All in points, which are the pad's units.
constexpr int capturingFontSize = 18;
constexpr int waitingFontSize = 24;
constexpr double capturingDistanceFromBottom = 10;
constexpr int shadowRadius = 5;

QFont hintFont(bool isCapturing)
{
    QFont font(QStringLiteral("American Typewriter"));
    font.setStyleHint(QFont::Serif);
    font.setPixelSize(isCapturing ? capturingFontSize : waitingFontSize);
    return font;
}

// The letters many times in faint black, shifted to everywhere within the radius, and white once on top. The text has
// the shadow's radius as its margin.
QImage imageOf(const QString &text, const QFont &font, double ratio)
{
    constexpr int shadowAlpha = 8;
    const QSizeF textSize = QFontMetricsF(font).boundingRect(QRectF(), Qt::AlignHCenter, text).size();
    QImage image = emptyPadImage(textSize + QSizeF(2 * shadowRadius, 2 * shadowRadius), ratio);
    QPainter painter(&image);
    painter.setFont(font);
    const auto drawAt = [&](int dx, int dy) {
        const QPointF corner(shadowRadius + dx, shadowRadius + dy);
        painter.drawText(QRectF(corner, textSize), Qt::AlignHCenter | Qt::TextDontClip, text);
    };
    painter.setPen(QColor(0, 0, 0, shadowAlpha));
    for (int dy = -shadowRadius; dy <= shadowRadius; ++dy) {
        for (int dx = -shadowRadius; dx <= shadowRadius; ++dx) {
            if (dx * dx + dy * dy <= shadowRadius * shadowRadius)
                drawAt(dx, dy);
        }
    }
    painter.setPen(Qt::white);
    drawAt(0, 0);
    return image;
}

} // namespace

QString TrackpadHint::text(bool isCapturing)
{
    return isCapturing ? QCoreApplication::translate("SignaturePadView", "Press 'ESC' to stop drawing")
                       : QCoreApplication::translate(
                             "SignaturePadView",
                             "Trackpad Mode.\nClick with trackpad to start drawing. \nPress 'ESC' to stop drawing.");
}

void TrackpadHint::paint(QPainter &painter, const QRectF &pad, bool isCapturing)
{
    const double ratio = painter.device()->devicePixelRatioF();
    if (m_image.isNull() || m_isCapturing != isCapturing || m_image.devicePixelRatio() != ratio)
        m_image = imageOf(text(isCapturing), hintFont(isCapturing), ratio);
    m_isCapturing = isCapturing;
    const QSizeF size = m_image.deviceIndependentSize();
    const double top = isCapturing ? pad.bottom() - capturingDistanceFromBottom + shadowRadius - size.height()
                                   : pad.center().y() - size.height() / 2;
    // On whole points, so that the letters stay sharp.
    painter.drawImage(QPointF(std::round(pad.center().x() - size.width() / 2), std::round(top)), m_image);
}

} // namespace inkory
