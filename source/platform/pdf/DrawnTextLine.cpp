#include "platform/pdf/DrawnTextLine.h"

#include "platform/pdf/DrawingContext.h"
#include "platform/pdf/GlyphImage.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

/// From where on, along a line, text is drawn with a pen.
struct PenStart
{
    double x = 0;
    QPen pen;
};

/// Passes what is drawn on to a painter, all but text, of which it keeps where each pen begins: a layout that belongs
/// to a document tells its colours in no other way.
class TextlessEngine : public QPaintEngine
{
public:
    explicit TextlessEngine(QPainter &target) : QPaintEngine(AllFeatures), m_target(target), m_base(target.transform())
    {
    }

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }

    void updateState(const QPaintEngineState &changed) override
    {
        if (changed.state().testFlag(DirtyTransform))
            m_target.setTransform(changed.transform() * m_base);
        if (changed.state().testFlag(DirtyPen)) {
            m_pen = changed.pen();
            m_target.setPen(m_pen);
        }
        if (changed.state().testFlag(DirtyBrush))
            m_target.setBrush(changed.brush());
    }
    void drawPath(const QPainterPath &path) override { m_target.drawPath(path); }
    using QPaintEngine::drawPolygon;
    void drawPolygon(const QPointF *points, int count, PolygonDrawMode mode) override
    {
        if (mode == PolylineMode)
            m_target.drawPolyline(points, count);
        else
            m_target.drawPolygon(points, count, mode == WindingMode ? Qt::WindingFill : Qt::OddEvenFill);
    }
    void drawPixmap(const QRectF &target, const QPixmap &pixmap, const QRectF &source) override
    {
        m_target.drawPixmap(target, pixmap, source);
    }
    void drawTextItem(const QPointF &origin, const QTextItem &) override { pens.push_back({origin.x(), m_pen}); }

    std::vector<PenStart> pens;

private:
    QPainter &m_target;
    QTransform m_base;
    QPen m_pen;
};

class TextlessDevice : public QPaintDevice
{
public:
    explicit TextlessDevice(TextlessEngine &engine) : m_engine(engine) {}

    QPaintEngine *paintEngine() const override { return &m_engine; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        constexpr int manyUnits = 1 << 20;
        constexpr int dotsPerInch = 72;
        switch (metric) {
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return dotsPerInch;
        default:
            return manyUnits;
        }
    }

private:
    TextlessEngine &m_engine;
};

// The pen of what stands at x, of pens sorted by where they begin.
QPen penAt(const std::vector<PenStart> &pens, double x, const QPen &other)
{
    constexpr double rounding = 0.01; // layouts count in 64ths
    const auto next = std::find_if(pens.begin(), pens.end(), [x](const PenStart &pen) { return pen.x > x + rounding; });
    return next == pens.begin() ? other : std::prev(next)->pen;
}

} // namespace

DrawnTextLine::DrawnTextLine(const QTextLine &line, const QPointF &position) : m_line(line), m_position(position)
{
    for (const QGlyphRun &run : m_line.glyphRuns()) {
        const QRawFont font = run.rawFont();
        const QList<quint32> indexes = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        m_fontSize = std::max(m_fontSize, font.pixelSize());
        for (qsizetype i = 0; i < indexes.size(); ++i)
            m_glyphs.push_back({font, indexes[i], positions[i] + position, needsImage(font, indexes[i]), {}});
    }
}

bool DrawnTextLine::hasTextGlyphs() const
{
    return std::any_of(m_glyphs.begin(), m_glyphs.end(), [](const Glyph &glyph) { return !glyph.isImage; });
}

bool DrawnTextLine::hasImageGlyphs() const
{
    return std::any_of(m_glyphs.begin(), m_glyphs.end(), [](const Glyph &glyph) { return glyph.isImage; });
}

bool DrawnTextLine::isLevel() const
{
    constexpr double rounding = 0.02; // layouts count in 64ths
    const double baseline = m_position.y() + m_line.y() + m_line.ascent();
    const auto isOff = [&](const Glyph &glyph) { return std::abs(glyph.position.y() - baseline) > rounding; };
    const auto isText = [](const Glyph &glyph) { return !glyph.isImage; };
    const auto first = std::find_if(m_glyphs.begin(), m_glyphs.end(), isText);
    const auto last = std::find_if(m_glyphs.rbegin(), m_glyphs.rend(), isText);
    return first == m_glyphs.end() || (!isOff(*first) && !isOff(*last));
}

// Neighbours of one font and pen, as a picture or as text. A picture does not reach across what stands between.
std::vector<DrawnTextLine::Run> DrawnTextLine::runs(bool areImages) const
{
    std::vector<Run> runs;
    const Glyph *previous = nullptr;
    for (const Glyph &glyph : m_glyphs) {
        if (glyph.isImage != areImages)
            continue;
        const double farthestNeighbour = 2 * glyph.font.pixelSize();
        if (!previous || previous->font != glyph.font || previous->pen != glyph.pen ||
            (areImages && std::abs(glyph.position.x() - previous->position.x()) > farthestNeighbour)) {
            runs.push_back({{}, glyph.pen});
            // Without the lines under, over and through the text, which are drawn by themselves.
            runs.back().glyphs.setRawFont(glyph.font);
        }
        QGlyphRun &run = runs.back().glyphs;
        run.setGlyphIndexes(run.glyphIndexes() << glyph.index);
        run.setPositions(run.positions() << glyph.position);
        previous = &glyph;
    }
    return runs;
}

void DrawnTextLine::drawText(QPainter &painter)
{
    if (hasImageGlyphs())
        drawInParts(painter);
    else
        m_line.draw(&painter, m_position);
}

void DrawnTextLine::drawInParts(QPainter &painter)
{
    TextlessEngine engine(painter);
    TextlessDevice device(engine);
    const QPen ownPen = painter.pen();
    painter.save();
    QPainter shapes(&device);
    shapes.setPen(ownPen);
    m_line.draw(&shapes, m_position);
    shapes.end();
    painter.restore();
    std::vector<PenStart> &pens = engine.pens;
    std::stable_sort(pens.begin(), pens.end(), [](const PenStart &a, const PenStart &b) { return a.x < b.x; });
    for (Glyph &glyph : m_glyphs)
        glyph.pen = penAt(pens, glyph.position.x(), ownPen);
    painter.save();
    for (const Run &run : runs(false)) {
        painter.setPen(run.pen);
        painter.drawGlyphRun(QPointF(), run.glyphs);
    }
    painter.restore();
}

void DrawnTextLine::drawImages(DrawingContext &context) const
{
    constexpr double dotsPerInch = 600;
    QPainter &painter = context.painter();
    const double devicePerUnit = std::sqrt(std::abs(painter.transform().determinant()));
    const double pixelsPerUnit = devicePerUnit * dotsPerInch / painter.device()->logicalDpiX();
    for (const Run &run : runs(true)) {
        const GlyphImage picture = glyphImage(run.glyphs, run.pen.color(), pixelsPerUnit);
        if (!picture.image)
            continue;
        const QRectF &rect = picture.rect;
        painter.save();
        painter.scale(1, -1); // images stand in coordinates that run upward
        context.drawImage(QRectF(rect.x(), -rect.bottom(), rect.width(), rect.height()), picture.image,
                          painter.opacity());
        painter.restore();
    }
}

} // namespace inkory
