#include "platform/pdf/GlyphImage.h"

#include "platform/core/EmbeddableFont.h"

#include <QColor>
#include <QGlyphRun>
#include <QHash>
#include <QPainter>
#include <QRawFont>

#include <algorithm>
#include <array>
#include <cmath>

namespace inkory
{

namespace
{

bool hasTable(const QRawFont &font, const char *tag)
{
    return !font.fontTable(tag).isEmpty();
}

bool isTextFont(const QRawFont &font)
{
    constexpr std::array colorTables{"CBLC", "sbix", "COLR", "SVG "}; // CBLC says where in CBDT, which is large
    constexpr std::array outlineTables{"loca", "CFF ", "CFF2"};
    const auto has = [&font](const char *tag) { return hasTable(font, tag); };
    if (!mayBeEmbedded(font) || std::any_of(colorTables.begin(), colorTables.end(), has))
        return false;
    if (!hasTable(font, "head"))
        return font.unitsPerEm() > 0; // a kind of file without tables
    return std::any_of(outlineTables.begin(), outlineTables.end(), has);
}

// More than any letter takes around its origin, accents and long strokes included.
QRectF roomAround(const QPointF &origin, double em)
{
    return {origin.x() - em, origin.y() - 2 * em, 4 * em, 4 * em};
}

QRectF roomOf(const QGlyphRun &glyphs)
{
    QRectF room;
    for (const QPointF &origin : glyphs.positions())
        room |= roomAround(origin, glyphs.rawFont().pixelSize());
    return room;
}

// All pixels that are not fully transparent.
QRect inkOf(const QImage &image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        const auto isInk = [](QRgb pixel) { return qAlpha(pixel) > 0; };
        const QRgb *end = row + image.width();
        const QRgb *first = std::find_if(row, end, isInk);
        if (first == end)
            continue;
        const QRgb *last = std::find_if(std::make_reverse_iterator(end), std::make_reverse_iterator(row), isInk).base();
        ink |= QRect(QPoint(static_cast<int>(first - row), y), QPoint(static_cast<int>(last - row) - 1, y));
    }
    return ink;
}

} // namespace

bool needsImage(const QRawFont &font, quint32 glyph)
{
    static QHash<QRawFont, bool> textFonts;
    constexpr int mostFonts = 200;
    if (glyph == 0)
        return true;
    auto known = textFonts.constFind(font);
    if (known == textFonts.constEnd()) {
        if (textFonts.size() >= mostFonts)
            textFonts.clear();
        known = textFonts.insert(font, isTextFont(font));
    }
    return !*known;
}

GlyphImage glyphImage(const QGlyphRun &glyphs, const QColor &color, double pixelsPerUnit)
{
    constexpr double mostPixels = 4e6;
    const QRectF room = roomOf(glyphs);
    const double area = room.width() * room.height();
    if (!(area > 0) || !(pixelsPerUnit > 0))
        return {};
    const double scale = std::min(pixelsPerUnit, std::sqrt(mostPixels / area));
    const QSize size(static_cast<int>(std::ceil(room.width() * scale)),
                     static_cast<int>(std::ceil(room.height() * scale)));
    QImage pixels(size, QImage::Format_ARGB32_Premultiplied);
    if (pixels.isNull())
        return {};
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    painter.scale(scale, scale);
    painter.translate(-room.topLeft());
    painter.setPen(color);
    painter.drawGlyphRun(QPointF(), glyphs);
    painter.end();
    const QRect ink = inkOf(pixels);
    if (ink.isEmpty())
        return {};
    return {QRectF(room.topLeft() + QPointF(ink.topLeft()) / scale, QSizeF(ink.size()) / scale),
            Image::fromPixels(pixels.copy(ink))};
}

} // namespace inkory
