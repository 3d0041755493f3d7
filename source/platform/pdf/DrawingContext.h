#pragma once

#include "platform/core/Image.h"
#include "platform/pdf/PageGeometry.h"

#include <QRectF>
#include <QTransform>

class QPainter;
class QPointF;
class QTextBlock;

namespace inkory
{

class PDFPage;

/// Where a page is being drawn to: the screen, a printer or a file. QPainter alone cannot say which, and a file wants
/// neither the page's own content nor images at screen resolution. The page and its stamps draw through the current
/// context.
class DrawingContext
{
public:
    /// Makes a context the current one as long as the scope lives, then the former one again. Main thread only.
    class Scope
    {
    public:
        explicit Scope(DrawingContext &context);
        ~Scope();
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        DrawingContext *m_former;
    };

    virtual ~DrawingContext() = default;

    /// None outside every scope.
    static DrawingContext *current();

    virtual QPainter &painter() = 0;
    virtual bool isDrawingToScreen() const = 0;

    /// From the page's space to the painter's coordinates as the context handed them over, page rotation included.
    virtual QTransform transformForBox(const PDFPage &page, DisplayBox box) const = 0;

    /// Draws what the page itself shows in the box (nothing where the page's own content stays as it is).
    virtual void drawContent(const PDFPage &page, DisplayBox box) = 0;

    /// Draws the whole image into the rectangle of the painter's present coordinates, which run y upward, with the
    /// opacity (0 to 1).
    virtual void drawImage(const QRectF &rect, const ImagePtr &image, double opacity) = 0;

    /// Draws line `lineIndex` of a block that is laid out, with what its formats put behind it, in the painter's
    /// present coordinates, which run y downward; `position` is where the origin of the block's layout stands. The
    /// painter's pen colours what has no colour of its own. It is a block because its layout would not tell its text.
    virtual void drawTextLine(const QTextBlock &block, int lineIndex, const QPointF &position);
};

} // namespace inkory
