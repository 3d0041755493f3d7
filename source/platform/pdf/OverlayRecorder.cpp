#include "platform/pdf/OverlayRecorder.h"

#include "platform/core/EmbeddableFont.h"
#include "platform/pdf/DrawnTextLine.h"
#include "platform/pdf/PDFPage.h"
#include "platform/pdf/TextSlots.h"

#include <QFontMetricsF>
#include <QPageSize>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inkory
{

namespace
{

// As wide as the line: where a line has nothing but images, readers look for its characters at the glyph of a space.
void drawSpace(QPainter &painter, const QTextLine &line, const QPointF &position)
{
    QFont font = embeddableFont(QFont());
    font.setPixelSize(std::max(1, static_cast<int>(line.ascent())));
    const double advance = QFontMetricsF(font, painter.device()).horizontalAdvance(u' ');
    if (advance <= 0)
        return;
    painter.save();
    painter.translate(position + line.naturalTextRect().topLeft() + QPointF(0, line.ascent()));
    painter.scale(line.naturalTextWidth() / advance, 1);
    painter.setFont(font);
    painter.drawText(QPointF(), QStringLiteral(" "));
    painter.restore();
}

} // namespace

OverlayRecorder::OverlayRecorder() : m_buffer(&m_bytes), m_writer(&m_buffer)
{
    m_buffer.open(QIODevice::WriteOnly);
    m_writer.setResolution(72); // one painter unit is one point
    m_writer.setPageMargins(QMarginsF());
}

OverlayRecorder::~OverlayRecorder() = default;

void OverlayRecorder::beginPage(const PDFPage &page)
{
    const PageRect box = page.boundsForBox(DisplayBox::CropBox);
    // QPdfWriter rounds page sizes to whole points.
    const QSizeF size(std::ceil(box.width), std::ceil(box.height));
    m_overlayHeight = size.height();
    m_writer.setPageSize(QPageSize(size, QPageSize::Point, QStringLiteral("overlay"), QPageSize::ExactMatch));
    m_pieces.clear();
    beginPiece();
}

std::vector<OverlayPiece> OverlayRecorder::endPage()
{
    return std::exchange(m_pieces, {});
}

// The painter's state goes on: the writer states it anew on each page.
void OverlayRecorder::beginPiece()
{
    if (m_painter.isActive()) {
        m_writer.newPage();
    } else {
        m_painter.begin(&m_writer);
        m_painter.setRenderHint(QPainter::LosslessImageRendering);
    }
    OverlayPiece piece;
    piece.overlayPage = m_pieceCount++;
    m_pieces.push_back(piece);
}

QByteArray OverlayRecorder::finish()
{
    if (m_painter.isActive())
        m_painter.end();
    m_buffer.close();
    return m_pieceCount > 0 ? m_bytes : QByteArray();
}

QTransform OverlayRecorder::transformForBox(const PDFPage &page, DisplayBox) const
{
    // The overlay stands for the crop box, whatever box the stamps are clipped to.
    const PageRect crop = page.boundsForBox(DisplayBox::CropBox);
    return QTransform(1, 0, 0, -1, -crop.x, m_overlayHeight + crop.y);
}

void OverlayRecorder::drawContent(const PDFPage &, DisplayBox) {}

void OverlayRecorder::drawImage(const QRectF &rect, const ImagePtr &image, double opacity)
{
    m_painter.save();
    m_painter.setOpacity(opacity);
    m_painter.translate(rect.bottomLeft());
    m_painter.scale(1, -1);
    m_painter.drawImage(QRectF(QPointF(0, 0), rect.size()), markerFor(image));
    m_painter.restore();
}

void OverlayRecorder::drawTextLine(const QTextBlock &block, int lineIndex, const QPointF &position)
{
    const QTextLine line = block.layout()->lineAt(lineIndex);
    DrawnTextLine drawn(line, position);
    if (!drawn.hasTextGlyphs() && !drawn.hasImageGlyphs()) {
        drawn.drawText(m_painter);
        return;
    }
    beginPiece();
    drawn.drawText(m_painter);
    if (!drawn.hasTextGlyphs())
        drawSpace(m_painter, line, position);
    nameText(line, block.text(), position, drawn);
    beginPiece();
    drawn.drawImages(*this);
}

// Says what the present piece shows: the line's part of the block's text.
void OverlayRecorder::nameText(const QTextLine &line, const QString &blockText, const QPointF &position,
                               const DrawnTextLine &drawn)
{
    OverlayPiece &piece = m_pieces.back();
    // Half a character, which can be typed nowhere but pasted, cannot be written.
    QString text = QString::fromUtf8(blockText.mid(line.textStart(), line.textLength()).toUtf8());
    while (text.endsWith(QChar::LineSeparator))
        text.chop(1); // the end of the line says as much
    if (text.isEmpty())
        return;
    if (hasRightToLeftLetters(text)) {
        piece.slots = textSlots(line, blockText);
    } else if (!drawn.isLevel()) {
        // Readers take the text to stretch from the origin of the first glyph to where the last one ends.
        const QRectF extent = line.naturalTextRect();
        piece.slots = {{text, extent.x(), extent.width()}};
    } else {
        piece.text = text;
        return;
    }
    piece.slotSize = drawn.fontSize();
    const QTransform lineToPainter(1, 0, 0, -1, position.x(), position.y() + line.y() + line.ascent());
    piece.lineToPage = lineToPainter * m_painter.transform() * QTransform(1, 0, 0, -1, 0, m_overlayHeight);
}

const QImage &OverlayRecorder::markerFor(const ImagePtr &image)
{
    const auto known = std::find(m_images.begin(), m_images.end(), image);
    const auto index = static_cast<std::size_t>(known - m_images.begin());
    if (known == m_images.end()) {
        QImage marker(1, 1, QImage::Format_RGB32);
        marker.fill(overlayMarkerColor(static_cast<int>(index)));
        m_images.push_back(image);
        m_markers.push_back(marker);
    }
    return m_markers[index];
}

} // namespace inkory
