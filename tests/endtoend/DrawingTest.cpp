#include "V1/library/ImageStampCollection.h"
#include "endtoend/Desktop.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QGuiApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace inkory::test;

namespace
{

const QColor markerColor(255, 0, 160); // nothing else on the screen has it
constexpr QColor red(255, 0, 0);       // only one swatch has it

/// A document in its window, and over it the window for drawing. Runs at densities of 1 and 2.
class Drawing : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(desktop.open(path)) << desktop.output().toStdString(); }
    void openSignatureWindow()
    {
        desktop.press(QStringLiteral("s"));
        ASSERT_TRUE(desktop.activate(QStringLiteral("Choose a Signature")));
        desktop.press(QStringLiteral("alt+r"));
        ASSERT_TRUE(desktop.activate(QStringLiteral("Draw a Signature")));
        swatch = Desktop::waitForColor(red).center();
    }
    /// In points, y downward, from a place within the pad.
    QPoint onPad(QPoint point) const { return swatch + (QPoint(-300, 120) + point) * density; }
    void draw(QPoint from, QPoint by, QPoint to) { desktop.drag({onPad(from), onPad(by), onPad(to)}); }
    /// While the pad has the keyboard. The buttons 1 to 3 are the methods, 4 and 5 pen and eraser.
    void pressButton(int number)
    {
        for (int i = 0; i < number; ++i)
            desktop.press(QStringLiteral("Tab"));
        desktop.press(QStringLiteral("space"));
    }
    bool isHeldByAClick()
    {
        desktop.click(onPad({0, 0}));
        return !Desktop::pointerReaches({5, 5});
    }
    static bool isFree()
    {
        return Desktop::pointerReaches({5, 5}) &&
               Desktop::pointerReaches(Desktop::screen().rect().bottomRight() - QPoint(5, 5));
    }
    void expectPixelsOfTheScreen(const std::vector<QImage> &images) const
    {
        ASSERT_EQ(images.size(), 2U);
        // Half a line, 2.5 or 5 pixels, in whole ones, and a margin of 10 before the first point, 9 after the last one.
        ASSERT_EQ(images[0].size(), density == 2 ? QSize(269, 149) : QSize(145, 85));
        QImage ink = images[0];
        ink.setAlphaChannel(images[1]);
        const QPoint start = density == 2 ? QPoint(15, 15) : QPoint(13, 13);
        const auto colorAt = [&](QPoint point) { return ink.pixelColor(start + point * density); };
        for (const QPoint point : {QPoint(56, 0), QPoint(64, 0), QPoint(118, 0), QPoint(0, 30), QPoint(38, 60)})
            EXPECT_EQ(colorAt(point), QColor(Qt::black)) << point.x();
        for (const QPoint point : {QPoint(100, 21), QPoint(101, 40), QPoint(100, 59)})
            EXPECT_EQ(colorAt(point), red) << point.y();
        for (const QPoint point : {QPoint(58, 0), QPoint(61, 0), QPoint(0, 10), QPoint(50, 60), QPoint(20, 40)})
            EXPECT_EQ(colorAt(point).alpha(), 0) << point.x();
    }

    const int density = qRound(qGuiApp->devicePixelRatio());
    const QTemporaryDir folder;
    const QString path = writeFile(folder.path(), QStringLiteral("receipt.pdf"),
                                   makePdf({{.contents = {rectangleContent(250, 600, 20, 20, "1 0 0.6274509804")}}}));
    Desktop desktop;
    QPoint swatch;
};

// A line from (0, 0) to (120, 0) and a hook down to (0, 60), black and 5 points thick; the eraser across the line at
// 60; a red line from (100, 20) to (100, 60).
TEST_F(Drawing, ReachesThePageWithThePixelsOfTheScreen)
{
    const qsizetype known = ImageStampCollection::count();
    ASSERT_NO_FATAL_FAILURE(openSignatureWindow());
    draw({0, 0}, {60, 0}, {120, 0});
    draw({0, 20}, {0, 60}, {40, 60});
    pressButton(5);
    draw({60, -15}, {60, 0}, {60, 15});
    pressButton(4);
    desktop.click(swatch);
    draw({100, 20}, {100, 40}, {100, 60});
    desktop.press(QStringLiteral("Return"));
    ASSERT_TRUE(desktop.waitUntilGone(QStringLiteral("Draw a Signature")));
    EXPECT_TRUE(isFree());
    ImageStampCollection::forgetSharedState(); // the program changed it
    ImageStampCollection::removeStampImageAtIndex(known);
    ASSERT_TRUE(desktop.activate(QStringLiteral("receipt.pdf")));
    const QRect marker = Desktop::waitForColor(markerColor);
    desktop.click(marker.topLeft() + QPoint(10, 10 + 150) * density); // from the marker's middle
    ASSERT_TRUE(desktop.saveAndQuit(path)) << desktop.output().toStdString();

    EXPECT_EQ(qpdfCheck(path), QString());
    expectPixelsOfTheScreen(pdfImagePixels(path));
    const QImage drawn = renderWithPdftoppm(path, 1, 288); // four pixels are one point
    const auto middleOf = [&](const QColor &color) { return QRectF(findInkBounds(drawn, color, 8)).center() / 4; };
    // The signature's middle lies 60.5 and 30.5 from its first point, up to half a point.
    const QPointF wanted(100 - 60, 150 + 40 - 30);
    EXPECT_LE((middleOf(red) - middleOf(markerColor) - wanted).manhattanLength(), 1.25);
}

TEST_F(Drawing, LeavesThePointerFreeWhenTheWindowIsClosedOrTheProgramEnds)
{
    ASSERT_NO_FATAL_FAILURE(openSignatureWindow());
    pressButton(3);
    EXPECT_TRUE(isHeldByAClick());
    desktop.press(QStringLiteral("alt+F4"));
    EXPECT_TRUE(desktop.waitUntilGone(QStringLiteral("Draw a Signature")));
    EXPECT_TRUE(isFree());

    ASSERT_TRUE(desktop.activate(QStringLiteral("receipt.pdf")));
    ASSERT_NO_FATAL_FAILURE(openSignatureWindow());
    EXPECT_TRUE(isHeldByAClick());
    desktop.terminate();
    desktop.waitForEnd();
    EXPECT_TRUE(isFree());
}

} // namespace
