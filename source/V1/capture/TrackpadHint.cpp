#include "V1/capture/TrackpadHint.h"

#include <QCoreApplication>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

namespace inkory
{

namespace
{

// All in points, which are the pad's units.
constexpr int capturingFontSize = 18;
constexpr int waitingFontSize = 24;
constexpr double capturingDistanceFromBottom = 10;
constexpr int shadowRadius = 5;

QFont hintFont(int pixelSize)
{
    QFont font(QStringLiteral("American Typewriter"));
    font.setStyleHint(QFont::Serif);
    font.setPixelSize(pixelSize);
    return font;
}

// A shadow that fades outward: strokes of growing width, each of them faint.
void paintShadow(QPainter &painter, const QPainterPath &letters)
{
    constexpr int shadowAlpha = 50;
    for (int width = 1; width <= shadowRadius; ++width)
        painter.strokePath(
            letters, QPen(QColor(0, 0, 0, shadowAlpha), width * 2 - 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

} // namespace

QString TrackpadHint::text() const
{
    return m_isCapturing ? QCoreApplication::translate("SignaturePadView", "Press 'ESC' to stop drawing")
                         : QCoreApplication::translate(
                               "SignaturePadView",
                               "Trackpad Mode.\nClick with trackpad to start drawing. \nPress 'ESC' to stop drawing.");
}

void TrackpadHint::paint(QPainter &painter, const QRectF &pad) const
{
    const QFont font = hintFont(m_isCapturing ? capturingFontSize : waitingFontSize);
    const QFontMetricsF metrics(font);
    const QStringList lines = text().split(u'\n');
    const double height = metrics.height() + metrics.lineSpacing() * static_cast<double>(lines.size() - 1);
    const double top =
        m_isCapturing ? pad.bottom() - capturingDistanceFromBottom - height : pad.center().y() - height / 2;
    QPainterPath letters;
    letters.setFillRule(Qt::WindingFill);
    double baseline = top + metrics.ascent();
    for (const QString &line : lines) {
        letters.addText(pad.center().x() - metrics.horizontalAdvance(line) / 2, baseline, font, line);
        baseline += metrics.lineSpacing();
    }
    painter.setRenderHint(QPainter::Antialiasing);
    paintShadow(painter, letters);
    painter.fillPath(letters, Qt::white);
}

} // namespace inkory
