#pragma once

#include <QGlyphRun>
#include <QPen>
#include <QPointF>
#include <QRawFont>
#include <QTextLayout>

#include <vector>

class QPainter;

namespace inkory
{

class DrawingContext;

/// A line of text on its way to a file or to paper, in two parts: glyphs that can stay text, and glyphs of which a file
/// keeps nothing but a picture (see needsImage). Lives no longer than the layout.
class DrawnTextLine
{
public:
    /// `position` is where the layout's own origin stands, in coordinates that run y downward.
    DrawnTextLine(const QTextLine &line, const QPointF &position);

    bool hasTextGlyphs() const;
    bool hasImageGlyphs() const;
    /// Whether the first and the last of the glyphs that can stay text stand on the line's baseline, which marks over
    /// and under letters need not do.
    bool isLevel() const;

    /// Of the largest glyphs' font, in units of the coordinates; 0 where the line has none.
    double fontSize() const { return m_fontSize; }

    /// Draws everything but the glyphs that have to be pictures; the painter's pen colours what has no colour of its
    /// own.
    void drawText(QPainter &painter);

    /// Draws these, one picture for each run of them, at 600 dots per inch of the painter's device, through the
    /// context. For after drawText(), which finds out their colours, and with the same painter.
    void drawImages(DrawingContext &context) const;

private:
    struct Glyph
    {
        QRawFont font;
        quint32 index = 0;
        /// In the painter's coordinates.
        QPointF position;
        bool isImage = false;
        QPen pen;
    };
    struct Run
    {
        QGlyphRun glyphs;
        QPen pen;
    };

    void drawInParts(QPainter &painter);
    std::vector<Run> runs(bool areImages) const;

    QTextLine m_line;
    QPointF m_position;
    double m_fontSize = 0;
    std::vector<Glyph> m_glyphs;
};

} // namespace inkory
