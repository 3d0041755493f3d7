#pragma once

#include "platform/core/Image.h"
#include "platform/pdf/DrawingContext.h"
#include "platform/pdf/EngineValues.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>

#include <vector>

class QTextLine;

namespace inkory
{

class DrawnTextLine;

/// The drawing context of a file: records what is drawn over pages as a PDF file of its own, in page space without the
/// page's rotation. Each line of text takes a page of that file, and so does what is drawn between them. Images are
/// recorded as markers (see WriteRequest::overlays), so that the writer can store the original pixels once and as they
/// are; QPdfWriter would store them again for every copy, and less densely.
class OverlayRecorder : public DrawingContext
{
public:
    OverlayRecorder();
    ~OverlayRecorder() override;

    /// Starts the overlay of a page; what is drawn from now on belongs to it.
    void beginPage(const PDFPage &page);

    /// What was drawn since beginPage().
    std::vector<OverlayPiece> endPage();

    /// Ends the recording. Empty when no page was begun.
    QByteArray finish();

    /// The images drawn so far, in the order of their markers.
    const std::vector<ImagePtr> &images() const { return m_images; }

    QPainter &painter() override { return m_painter; }
    bool isDrawingToScreen() const override { return false; }
    /// From page space to the overlay: its lower left corner is the box's, its y axis runs downward from the top.
    QTransform transformForBox(const PDFPage &page, DisplayBox box) const override;
    /// Nothing: the page's own content stays as it is in the file.
    void drawContent(const PDFPage &page, DisplayBox box) override;
    void drawImage(const QRectF &rect, const ImagePtr &image, double opacity) override;
    /// Records which characters the line shows. What a file cannot keep as text becomes images.
    void drawTextLine(const QTextBlock &block, int lineIndex, const QPointF &position) override;

private:
    const QImage &markerFor(const ImagePtr &image);
    void beginPiece();
    void nameText(const QTextLine &line, const QString &blockText, const QPointF &position, const DrawnTextLine &drawn);

    QByteArray m_bytes;
    QBuffer m_buffer;
    QPdfWriter m_writer;
    QPainter m_painter;
    std::vector<ImagePtr> m_images;
    std::vector<QImage> m_markers;
    double m_overlayHeight = 0;
    /// Of all pages so far.
    int m_pieceCount = 0;
    /// Of the present page.
    std::vector<OverlayPiece> m_pieces;
};

} // namespace inkory
