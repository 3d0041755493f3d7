#include "V1/editing/TextBackgroundMenu.h"

#include "platform/core/LocalizedStrings.h"

#include <QMenu>
#include <QPainter>
#include <QProxyStyle>

#include <array>

using namespace inkory;

namespace
{

struct NamedColor
{
    const char *title;
    float red;
    float green;
    float blue;
};

constexpr float third = 1.0F / 3;
constexpr std::array namedColors{
    NamedColor{"Black", 0, 0, 0},
    NamedColor{"Blue", 0, 0, 1},
    NamedColor{"Brown", 0.6F, 0.4F, 0.2F},
    NamedColor{"Cyan", 0, 1, 1},
    NamedColor{"Dark Gray", third, third, third},
    NamedColor{"Gray", 0.5F, 0.5F, 0.5F},
    NamedColor{"Green", 0, 1, 0},
    NamedColor{"Light Gray", 2 * third, 2 * third, 2 * third},
    NamedColor{"Magenta", 1, 0, 1},
    NamedColor{"Orange", 1, 0.5F, 0},
    NamedColor{"Purple", 0.5F, 0, 0.5F},
    NamedColor{"Red", 1, 0, 0},
    NamedColor{"White", 1, 1, 1},
    NamedColor{"Yellow", 1, 1, 0},
};

constexpr QSize swatchSize(26, 16);

void paintSwatch(QPainter &painter, const QColor &color)
{
    const QRect area(QPoint(0, 0), swatchSize);
    painter.fillRect(area, color);
    if (color.alpha() != 0 && color != Qt::white)
        return;
    painter.setPen(QPen(Qt::black, 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.drawRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5));
    if (color.alpha() != 0)
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::red, 1, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(1, 1, 25, 15);
    painter.drawLine(1, 15, 25, 1);
}

QIcon swatch(const QColor &color)
{
    QIcon icon;
    for (const int ratio : {1, 2, 3}) {
        QPixmap pixmap(swatchSize * ratio);
        pixmap.setDevicePixelRatio(ratio);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintSwatch(painter, color);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

/// Icons as wide as the swatches.
class SwatchMenuStyle : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override
    {
        return metric == PM_SmallIconSize ? swatchSize.width() : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

void addColor(QMenu &menu, const QString &title, const QColor &color)
{
    menu.addAction(swatch(color), title)->setData(color);
}

} // namespace

void fillTextBackgroundMenu(QMenu &menu)
{
    auto *style = new SwatchMenuStyle(menu.style()->name());
    style->setParent(&menu);
    menu.setStyle(style);
    addColor(menu, localizedString("NONE"), Qt::transparent);
    for (const NamedColor &named : namedColors)
        addColor(menu, localizedString(named.title), QColor::fromRgbF(named.red, named.green, named.blue));
}
