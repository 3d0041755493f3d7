#include "platform/pdf/PrintDrawingContext.h"

#include "platform/pdf/DrawnTextLine.h"

#include <QPaintEngine>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

#include <utility>

namespace inkory
{

PrintDrawingContext::PrintDrawingContext(QPainter &painter, const QTransform &pageTransform,
                                         std::function<void()> content)
    : m_painter(painter), m_pageTransform(pageTransform), m_content(std::move(content))
{
}

QTransform PrintDrawingContext::transformForBox(const PDFPage &, DisplayBox) const
{
    return m_pageTransform;
}

void PrintDrawingContext::drawContent(const PDFPage &, DisplayBox)
{
    if (m_content)
        m_content();
}

void PrintDrawingContext::drawImage(const QRectF &rect, const ImagePtr &image, double opacity)
{
    m_painter.save();
    m_painter.setOpacity(opacity);
    // Without the first hint a PDF file gets a JPEG, whose noise stands around the lines of a signature.
    m_painter.setRenderHints(QPainter::LosslessImageRendering | QPainter::SmoothPixmapTransform);
    m_painter.translate(rect.bottomLeft());
    m_painter.scale(1, -1);
    m_painter.drawImage(QRectF(QPointF(0, 0), rect.size()), image->pixels());
    m_painter.restore();
}

void PrintDrawingContext::drawTextLine(const QTextBlock &block, int lineIndex, const QPointF &position)
{
    DrawnTextLine line(block.layout()->lineAt(lineIndex), position);
    const bool isFile = m_painter.paintEngine()->type() == QPaintEngine::Pdf; // not a band of gray pixels
    if (!isFile || !line.hasImageGlyphs()) {
        DrawingContext::drawTextLine(block, lineIndex, position);
        return;
    }
    line.drawText(m_painter);
    line.drawImages(*this);
}

} // namespace inkory
