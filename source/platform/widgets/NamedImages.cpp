#include "platform/widgets/NamedImages.h"

#include "platform/core/Log.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

#include <map>
#include <tuple>

// A linker takes resources from a static library only for a program that asks for them; the macro wants no namespace.
static void requireImageResources()
{
    Q_INIT_RESOURCE(inkory);
}

namespace inkory
{

namespace
{

// The colour in which all icons are drawn in their files.
const QByteArray iconLineColor = "#3b3f45";
// What one of them shows in a colour; grey like the rest where the icon is disabled.
const QByteArray iconAccentColor = "#c8352b";
const QColor disabledColor(0x99, 0x99, 0x99);

QByteArray resourceBytes(const QString &path)
{
    requireImageResources();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logLine(QStringLiteral("no image \"%1\"").arg(path));
        return {};
    }
    return file.readAll();
}

QPixmap rendered(const QByteArray &svg, const QSize &size, double ratio)
{
    QPixmap pixmap(size * ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(svg).render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

/// Draws an icon's file in one colour, only when it is shown and only in the sizes in which it is.
class LineIconEngine : public QIconEngine
{
public:
    LineIconEngine(const QByteArray &svg, const QColor &color) : m_svg(svg), m_color(color) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QColor line = mode == QIcon::Disabled ? disabledColor : m_color;
        QByteArray svg = QByteArray(m_svg).replace(iconLineColor, line.name(QColor::HexRgb).toLatin1());
        if (mode == QIcon::Disabled)
            svg.replace(iconAccentColor, disabledColor.name(QColor::HexRgb).toLatin1());
        QSvgRenderer(svg).render(painter, QRectF(rect));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        const auto known = m_pixmaps.find({size.width(), size.height(), mode});
        if (known != m_pixmaps.end())
            return known->second;
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, drawn.rect(), mode, state);
        painter.end();
        return m_pixmaps[{size.width(), size.height(), mode}] = drawn;
    }

    QIconEngine *clone() const override { return new LineIconEngine(m_svg, m_color); }

private:
    QByteArray m_svg;
    QColor m_color;
    std::map<std::tuple<int, int, QIcon::Mode>, QPixmap> m_pixmaps; // by device pixels
};

} // namespace

QIcon iconNamed(const QString &name, const QColor &color)
{
    const QByteArray svg = resourceBytes(QStringLiteral(":/icons/%1.svg").arg(name));
    return svg.isEmpty() ? QIcon() : QIcon(new LineIconEngine(svg, color)); // the icon owns its engine
}

QPixmap cursorImageNamed(const QString &name, double devicePixelRatio)
{
    const QByteArray svg = resourceBytes(QStringLiteral(":/cursors/%1.svg").arg(name));
    if (svg.isEmpty())
        return {};
    return rendered(svg, QSvgRenderer(svg).defaultSize(), devicePixelRatio);
}

} // namespace inkory
