#include "V1/library/ImageStampCollection.h"
#include "endtoend/Desktop.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace inkory::test;

namespace
{

// Nothing else on the screen has these colours.
const QColor firstMarker(255, 0, 160);
const QColor secondMarker(90, 0, 255);
const QColor inkColor(0, 160, 60);

PageSpec markedPage(const QByteArray &rotate, const QByteArray &color)
{
    return {.mediaBox = "0 0 400 260", .rotate = rotate, .contents = {rectangleContent(40, 40, 20, 20, color)}};
}

QPointF middle(const QRect &rect)
{
    return QRectF(rect).center();
}

// At actual size, where one pixel is one point. The second page is turned by 90 degrees.
TEST(Dragging, TakesASignatureOntoATurnedPageAndTheFileShowsItWhereTheScreenDid)
{
    const QTemporaryDir folder;
    QImage signature(100, 40, QImage::Format_RGB32);
    signature.fill(inkColor);
    signature.setDotsPerMeterX(2835); // 72 dpi
    signature.setDotsPerMeterY(2835);
    const QString image = folder.filePath(QStringLiteral("signature.png"));
    ASSERT_TRUE(signature.save(image));
    const int index = ImageStampCollection::addImages(QStringList{image});
    ASSERT_GE(index, 0);
    const auto restoreLibrary = qScopeGuard([index] { ImageStampCollection::removeStampImageAtIndex(index); });
    const QString path =
        writeFile(folder.path(), QStringLiteral("lease.pdf"),
                  makePdf({markedPage("0", "1 0 0.6274509804"), markedPage("90", "0.3529411765 0 1")}));
    Desktop desktop;
    ASSERT_TRUE(desktop.open(path)) << desktop.output().toStdString();
    const QPoint first = middle(Desktop::waitForColor(firstMarker)).toPoint();
    const QRect second = Desktop::waitForColor(secondMarker);
    ASSERT_EQ(second.size(), QSize(20, 20));

    desktop.press(QStringLiteral("s"));
    ASSERT_TRUE(desktop.activate(QStringLiteral("Choose a Signature")));
    desktop.press(QStringLiteral("End"));
    desktop.press(QStringLiteral("Return"));
    ASSERT_TRUE(desktop.waitUntilGone(QStringLiteral("Choose a Signature")));
    ASSERT_TRUE(desktop.activate(QStringLiteral("lease.pdf")));
    const QPoint placed = first + QPoint(150, -100);
    desktop.click(placed);
    desktop.press(QStringLiteral("v"));

    // The stamp, 100 wide and 40 high, stands up when it enters the turned page; its upper left corner stays 50 left of
    // and 20 above the pointer, so its lower right one comes to lie 10 left of and 80 below it.
    const QPoint dropped = second.center() + QPoint(90, 140);
    desktop.drag({placed, (placed + dropped) / 2, dropped});
    const QPoint handle = dropped + QPoint(-10, 80) - QPoint(8, 8);
    desktop.drag({handle, handle + QPoint(10, 0), handle + QPoint(20, 0)}); // 40 by 100 becomes 60 by 150
    for (const char *key : {"Up", "Up", "shift+Right"})
        desktop.press(QLatin1String(key));
    desktop.click(first); // selects nothing
    Desktop::waitForColor(inkColor);
    const QPoint corner = second.topLeft() - QPoint(100, 100); // the tool bar, higher up, shows the signature as well
    const QImage secondPage = Desktop::screen().copy({corner, QSize(600, 600)});
    const QRect shown = findInkBounds(secondPage, inkColor, 8).translated(corner);
    EXPECT_EQ(shown, QRect(dropped + QPoint(-50 + 10, -20 - 2), QSize(60, 150)));

    ASSERT_TRUE(desktop.saveAndQuit(path)) << desktop.output().toStdString();

    constexpr double dotsPerPoint = 4;
    const QImage drawn = renderWithPdftoppm(path, 2, 288);
    const QRect ink = findInkBounds(drawn, inkColor, 8);
    const QPointF offset = (middle(ink) - middle(findInkBounds(drawn, secondMarker, 8))) / dotsPerPoint;
    const QPointF offsetOnScreen = middle(shown) - middle(second);
    EXPECT_NEAR(offset.x(), offsetOnScreen.x(), 0.5);
    EXPECT_NEAR(offset.y(), offsetOnScreen.y(), 0.5);
    EXPECT_NEAR(ink.width() / dotsPerPoint, 60, 0.5);
    EXPECT_NEAR(ink.height() / dotsPerPoint, 150, 0.5);
    EXPECT_TRUE(findInkBounds(renderWithPdftoppm(path, 1), inkColor, 8).isEmpty());
    EXPECT_EQ(pdfImages(path).size(), 1U);
    EXPECT_EQ(qpdfCheck(path), QString());
}

} // namespace
