#pragma once

#include "platform/pdf/DrawingContext.h"

#include <QImage>
#include <QTransform>

#include <functional>
#include <vector>

namespace inkory
{

/// Copies of images at the size and turned as they are shown, so that drawing a stamp again and again does not scale
/// its image again and again. Keeps the ones used last.
class ScaledImages
{
public:
    /// The image mirrored and turned as the transform does it (quarter turns only), with exactly this many pixels after
    /// that. Valid until the next call.
    const QImage &scaled(const ImagePtr &image, const QSize &pixels, const QTransform &turning);

private:
    struct Entry
    {
        ImagePtr image;
        QTransform turn;
        QImage scaled;
    };

    std::vector<Entry> m_entries; // the last one was used last
};

/// The drawing context of the screen: page contents come from images made in the background, stamps are drawn over them
/// now. Places on the device are rounded to whole pixels there, so that nothing is resampled while it is drawn.
class ScreenDrawingContext : public DrawingContext
{
public:
    using ContentDrawing = std::function<void(QPainter &, const PDFPage &)>;

    /// `pageTransform` leads from the space of the page to be drawn to the painter's coordinates; `content` draws what
    /// there is of the page itself, in the painter's coordinates. Painter and cache have to outlive the context.
    ScreenDrawingContext(QPainter &painter, const QTransform &pageTransform, ContentDrawing content,
                         ScaledImages &images);

    QPainter &painter() override { return m_painter; }
    bool isDrawingToScreen() const override { return true; }
    QTransform transformForBox(const PDFPage &page, DisplayBox box) const override;
    void drawContent(const PDFPage &page, DisplayBox box) override;
    void drawImage(const QRectF &rect, const ImagePtr &image, double opacity) override;

    /// Makes the painter's coordinates the device's own pixels, whatever the pixel ratio.
    static void enterDevicePixels(QPainter &painter);

private:
    QPainter &m_painter;
    QTransform m_pageTransform;
    ContentDrawing m_content;
    ScaledImages &m_images;
};

} // namespace inkory
