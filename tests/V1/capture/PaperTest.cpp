#include "V1/capture/ColorSelectButtonCell.h"
#include "V1/capture/SignaturePadBackgroundView.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace
{

QImage shown(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    widget.render(&image);
    return image;
}

// A line of this colour and strength over the paper.
QColor over(const QColor &paper, const QColor &line, double strength)
{
    const auto mix = [strength](int below, int above) { return qRound(below + (above - below) * strength); };
    return {mix(paper.red(), line.red()), mix(paper.green(), line.green()), mix(paper.blue(), line.blue())};
}

TEST(Background, EachStyleHasItsPaperAndItsLines)
{
    const QColor white(250, 250, 250);
    const QColor yellow(247, 245, 199);
    const std::vector<QColor> papers{white, white, yellow, yellow, white, QColor(204, 204, 204), QColor(13, 13, 13)};
    SignaturePadBackgroundView view;
    view.resize(130, 100);
    for (int style = 0; style < 7; ++style) {
        view.setSignaturePadBackgroundStyle(static_cast<SignaturePadBackgroundStyle>(style));
        const QImage image = shown(view);
        const QColor paper = papers[static_cast<std::size_t>(style)];
        const bool isGrid = style == 1 || style == 3;
        const auto expect = [&](int x, int y, const QColor &color) {
            const QColor is = image.pixelColor(x, y);
            EXPECT_LE(qAbs(is.red() - color.red()) + qAbs(is.green() - color.green()) + qAbs(is.blue() - color.blue()),
                      3)
                << style << " at " << x << ", " << y << ": " << qPrintable(is.name());
        };
        // Blue lines have a strength of 0.6, half of it on each side of a whole coordinate.
        const QColor line = over(paper, QColor(77, 77, 230), 0.3);
        const int spacing = isGrid ? 20 : 25;
        for (int y = 0; y < 100; ++y) {
            const bool isLine = style < 4 && (y % spacing == 0 || (y + 1) % spacing == 0) && y != 99;
            expect(90, y, isLine ? line : paper);
        }
        for (int x = 70; x < 130; ++x)
            expect(x, 10, isGrid && (x % 20 == 0 || x % 20 == 19) ? line : paper);
        expect(38, 10, style < 4 ? over(paper, QColor(230, 51, 51), 0.5) : paper);
        expect(43, 10, paper);
    }
}

TEST(Swatch, IsASquareOfItsColorThatIsPressed)
{
    ColorSelectButtonCell swatch;
    swatch.setBackgroundColor(QColor(1, 200, 3));
    swatch.resize(swatch.sizeHint());
    const QImage image = shown(swatch);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x)
            EXPECT_EQ(image.pixelColor(x, y) == QColor(1, 200, 3), QRect(4, 4, 12, 12).contains(x, y)) << x << ' ' << y;
    }
    QSignalSpy clicks(&swatch, &QAbstractButton::clicked);
    swatch.show();
    QTest::mouseClick(swatch.windowHandle(), Qt::LeftButton, {}, {10, 10});
    QTest::keyClick(&swatch, Qt::Key_Space);
    EXPECT_EQ(clicks.size(), 2);
}

} // namespace
