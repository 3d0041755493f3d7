#pragma once

#include "platform/pdf/DrawingContext.h"
#include "platform/pdf/PageGeometry.h"

#include <QObject>

namespace inkory
{

/// One page of a PDFDocument: where it comes from in the file, its boxes, its rotation, and how it is drawn. The
/// drawing library's page class cannot be subclassed, so that nothing can be drawn with a page. Owned by its document.
class PDFPage
{
public:
    PDFPage(const PageGeometry &geometry, int sourceIndex);
    PDFPage(const PDFPage &) = delete;
    PDFPage &operator=(const PDFPage &) = delete;
    virtual ~PDFPage();

    /// As the file says, before any turning by the user.
    const PageGeometry &geometry() const { return m_geometry; }
    PageRect boundsForBox(DisplayBox box) const { return m_geometry.bounds(box); }
    /// Degrees clockwise as displayed: 0, 90, 180 or 270.
    int rotation() const { return m_rotation; }
    /// Takes any multiple of 90, also negative ones and ones above 270.
    void setRotation(int degrees);
    /// How far the page is turned beyond what its file says, in quarter turns clockwise, 0 to 3.
    int extraQuarterTurns() const;

    /// Which page of the file it is, from 0, whatever its place in the document now.
    int sourceIndex() const { return m_sourceIndex; }

    /// Its place in its document now, from 0; -1 for a page that is in none.
    int index() const { return m_index; }

    /// The size as displayed of the crop box, in points.
    QSizeF shownSize() const;
    /// From page space to the shown crop box: see shownPageTransform().
    QTransform shownTransform() const;

    /// From the page as its file shows it (see PageText.h) to page space.
    PageRect rectFromFileSpace(const QRectF &rect) const;
    PagePoint pointFromFileSpace(const QPointF &point) const;

    /// Puts the confirmed geometry in the place of an assumed one; a rotation by the user stays.
    void setGeometry(const PageGeometry &geometry);

    /// Draws the page into the current context.
    virtual void drawWithBox(DisplayBox box);
    /// Draws the page into the given context.
    virtual void drawWithBox(DisplayBox box, DrawingContext &context);

private:
    friend class PDFDocument; // keeps the index right

    PageGeometry m_geometry;
    int m_index = -1;
    int m_rotation = 0;
    int m_sourceIndex = 0;
};

} // namespace inkory

Q_DECLARE_METATYPE(inkory::PDFPage *)
