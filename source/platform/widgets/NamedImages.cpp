#include "platform/widgets/NamedImages.h"

#include "platform/core/Log.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

// A linker takes resources from a static library only for a program that asks for them; the macro wants no namespace.
static void requireImageResources()
{
    Q_INIT_RESOURCE(inkory);
}

namespace inkory
{

namespace
{

constexpr int iconSize = 24;

// The colour in which all icons are drawn in their files.
const QByteArray iconLineColor = "#3b3f45";

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

} // namespace

QIcon iconNamed(const QString &name, const QColor &color)
{
    const QByteArray svg = resourceBytes(QStringLiteral(":/icons/%1.svg").arg(name));
    if (svg.isEmpty())
        return {};
    const auto inColor = [&svg](const QColor &line) {
        return QByteArray(svg).replace(iconLineColor, line.name(QColor::HexRgb).toLatin1());
    };
    QColor faded = color;
    faded.setHslF(0, 0, 0.6F);
    QIcon icon;
    for (const double ratio : {1.0, 2.0, 3.0}) {
        icon.addPixmap(rendered(inColor(color), {iconSize, iconSize}, ratio));
        icon.addPixmap(rendered(inColor(faded), {iconSize, iconSize}, ratio), QIcon::Disabled);
    }
    return icon;
}

QPixmap cursorImageNamed(const QString &name, double devicePixelRatio)
{
    const QByteArray svg = resourceBytes(QStringLiteral(":/cursors/%1.svg").arg(name));
    if (svg.isEmpty())
        return {};
    return rendered(svg, QSvgRenderer(svg).defaultSize(), devicePixelRatio);
}

} // namespace inkory
