#include "V1/editing/TextBackgroundMenu.h"

#include <QMenu>

#include <gtest/gtest.h>

TEST(TextBackgroundMenu, HasFifteenColoursWithSharpSwatches)
{
    constexpr QRgb black = 0xff000000;
    QMenu menu;
    fillTextBackgroundMenu(menu);
    QStringList entries;
    for (const QAction *action : menu.actions()) {
        const QRgb color = action->data().value<QColor>().rgba();
        entries.append(action->text() + u' ' + QString::number(color, 16));
        const bool hasOutline = color == 0 || color == QColor(Qt::white).rgba();
        for (const int ratio : {1, 2}) {
            const QImage swatch = action->icon().pixmap({26, 26}, ratio).toImage();
            EXPECT_EQ(swatch.size(), QSize(26, 16) * ratio);
            EXPECT_EQ(swatch.pixel(13 * ratio, 4 * ratio), color) << entries.last().toStdString();
            for (const QPoint &edge : {QPoint(0, 0), QPoint(26 * ratio - 1, 7 * ratio), QPoint(9, 16 * ratio - ratio)})
                EXPECT_EQ(swatch.pixel(edge), hasOutline ? black : color) << entries.last().toStdString();
            if (color == 0) { // two red lines cross in the middle
                EXPECT_EQ(swatch.pixelColor(13 * ratio, 8 * ratio).rgb(), QColor(Qt::red).rgb());
                EXPECT_GT(qAlpha(swatch.pixel(7 * ratio, 11 * ratio)), 60);
            }
        }
    }
    EXPECT_EQ(entries.join(u'\n'),
              QStringLiteral("NONE 0\nBlack ff000000\nBlue ff0000ff\nBrown ff996633\nCyan ff00ffff\n"
                             "Dark Gray ff555555\nGray ff808080\nGreen ff00ff00\nLight Gray ffaaaaaa\n"
                             "Magenta ffff00ff\nOrange ffff8000\nPurple ff800080\nRed ffff0000\nWhite ffffffff\n"
                             "Yellow ffffff00"));
}
