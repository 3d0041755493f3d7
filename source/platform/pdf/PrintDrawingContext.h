#pragma once

#include "platform/pdf/DrawingContext.h"

#include <functional>

namespace inkory
{

/// The drawing context of paper: what lies over a page is drawn as it is, opaque and without loss. The page's own
/// content comes from elsewhere: from images made in the background.
class PrintDrawingContext : public DrawingContext
{
public:
    /// `pageTransform` leads from page space to the painter's coordinates; `content`, if any, draws what the page
    /// itself shows. The painter has to outlive the context.
    PrintDrawingContext(QPainter &painter, const QTransform &pageTransform, std::function<void()> content = {});

    QPainter &painter() override { return m_painter; }
    bool isDrawingToScreen() const override { return false; }
    QTransform transformForBox(const PDFPage &page, DisplayBox box) const override;
    void drawContent(const PDFPage &page, DisplayBox box) override;
    void drawImage(const QRectF &rect, const ImagePtr &image, double opacity) override;
    /// With images for what a file cannot keep as text.
    void drawTextLine(const QTextBlock &block, int lineIndex, const QPointF &position) override;

private:
    QPainter &m_painter;
    QTransform m_pageTransform;
    std::function<void()> m_content;
};

} // namespace inkory
