#include "V1/library/ImageStampCollection.h"
#include "endtoend/Desktop.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace inkory::test;

namespace
{

const QColor markerColor(255, 0, 160); // nothing else on the screen has it
const QColor inkColor(0, 160, 60);
constexpr QSize signatureSize(100, 40);
// From the middle of the marker to the click, as shown, in points: right and down.
constexpr QPoint clickOffset(90, 120);
constexpr double tolerance = 0.5; // points

/// The second page of the document that is signed.
struct Kind
{
    const char *name;
    PageSpec page;
};

// A square of 20 points to measure from, and text that has to stay. Everything lies in the middle of the sheet, so that
// all of it is on the screen whatever the rotation.
QByteArray markedContent(double x = 250, double y = 450)
{
    return rectangleContent(x, y, 20, 20, "1 0 0.6274509804") + textContent("Second page", x - 50, y - 200);
}

std::vector<Kind> kinds()
{
    const QByteArray content = markedContent();
    return {
        {"plain", {.contents = {content}}},
        {"rotated90", {.rotate = "90", .contents = {content}}},
        {"rotated180", {.rotate = "180", .contents = {content}}},
        {"rotated270", {.rotate = "270", .contents = {content}}},
        {"cropped", {.cropBox = "100 150 550 700", .contents = {content}}},
        {"userUnit", {.contents = {content}, .more = "/UserUnit 2"}},
        {"missingQ", {.contents = {"q 0.5 0 0 0.5 200 300 cm q " + markedContent(100, 300)}}},
        {"extraQ", {.contents = {content + " Q Q"}}},
    };
}

QImage signature()
{
    QImage image(signatureSize, QImage::Format_ARGB32);
    image.setDotsPerMeterX(2835); // 72 dpi: one pixel is one point
    image.setDotsPerMeterY(2835);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool isEdge = x < 2 || y < 2 || x >= image.width() - 2 || y >= image.height() - 2;
            image.setPixelColor(x, y, isEdge ? inkColor : QColor(2 * x, 5 * y, 40, (x * 7 + y * 3) % 256));
        }
    }
    return image;
}

// Against the signature, exactly; the colour of what is fully transparent is nobody's business.
int differingPixels(const QImage &colors, const QImage &softMask)
{
    if (colors.size() != signatureSize || softMask.size() != signatureSize)
        return -1;
    const QImage original = signature();
    int differing = 0;
    for (int y = 0; y < signatureSize.height(); ++y) {
        for (int x = 0; x < signatureSize.width(); ++x) {
            const QColor wanted = original.pixelColor(x, y);
            const QColor found = colors.pixelColor(x, y);
            const bool same = qGray(softMask.pixel(x, y)) == wanted.alpha() &&
                              (wanted.alpha() == 0 || found.rgb() == (wanted.rgb() | 0xff000000U));
            differing += same ? 0 : 1;
        }
    }
    return differing;
}

void PrintTo(const Kind &kind, std::ostream *stream)
{
    *stream << kind.name;
}

class Signing : public ::testing::TestWithParam<Kind>
{
protected:
    void SetUp() override
    {
        const QString image = folder.filePath(QStringLiteral("signature.png"));
        ASSERT_TRUE(signature().save(image));
        if (ImageStampCollection::count() == 0) {
            ASSERT_EQ(ImageStampCollection::addImages(QStringList{image}), 0);
        }
        const PageSpec first{.contents = {textContent("First page")}};
        const PageSpec third{.contents = {textContent("Third page")}};
        const QByteArray original = makePdf({first, GetParam().page, third});
        path = writeFile(folder.path(), QStringLiteral("agreement.pdf"), original);
        originalPath = writeFile(folder.path(), QStringLiteral("original.pdf"), original);
    }

    // Start with the file, S, the first signature, click on page 2, save, confirm, close.
    void sign()
    {
        Desktop desktop;
        ASSERT_TRUE(desktop.open(path)) << desktop.output().toStdString();
        desktop.press(QStringLiteral("ctrl+Next"));
        const QRect marker = Desktop::waitForColor(markerColor);
        ASSERT_FALSE(marker.isEmpty());

        desktop.press(QStringLiteral("s"));
        ASSERT_TRUE(desktop.activate(QStringLiteral("Choose a Signature")));
        desktop.press(QStringLiteral("Home"));
        desktop.press(QStringLiteral("Return"));
        ASSERT_TRUE(desktop.waitUntilGone(QStringLiteral("Choose a Signature")));
        ASSERT_TRUE(desktop.activate(QStringLiteral("agreement.pdf")));
        // The marker's right and lower edges lie one pixel beyond QRect's corners: its middle is a whole number.
        desktop.click(QPoint(marker.x() + marker.width() / 2, marker.y() + marker.height() / 2) + clickOffset);
        EXPECT_FALSE(Desktop::waitForColor(QColor(0x80, 0x80, 0x80)).isEmpty()) << "the selection's frame";

        ASSERT_TRUE(desktop.saveAndQuit(path)) << desktop.output().toStdString();
    }

    void expectStampWhereItWasPlaced() const
    {
        constexpr int dotsPerInch = 288; // four pixels are one point
        const QImage drawn = renderWithPdftoppm(path, 2, dotsPerInch);
        const QRect marker = findInkBounds(drawn, markerColor, 8);
        const QRect ink = findInkBounds(drawn, inkColor, 8);
        ASSERT_FALSE(marker.isEmpty());
        ASSERT_FALSE(ink.isEmpty());
        const auto middle = [](const QRect &rect) { return QRectF(rect).center() / 4.0; };
        const QPointF offset = middle(ink) - middle(marker);
        EXPECT_NEAR(offset.x(), clickOffset.x(), tolerance);
        EXPECT_NEAR(offset.y(), clickOffset.y(), tolerance);
        EXPECT_NEAR(ink.width() / 4.0, signatureSize.width(), tolerance);
        EXPECT_NEAR(ink.height() / 4.0, signatureSize.height(), tolerance);
    }

    QTemporaryDir folder;
    QString path;
    QString originalPath;
};

TEST_P(Signing, PutsTheSignatureWhereTheClickWasAndNothingElse)
{
    ASSERT_NO_FATAL_FAILURE(sign());

    EXPECT_EQ(qpdfCheck(path), QString());
    expectStampWhereItWasPlaced();
    const std::vector<QImage> images = pdfImagePixels(path);
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(differingPixels(images[0], images[1]), 0);
    for (const int page : {1, 2, 3})
        EXPECT_EQ(pdfText(path, page), pdfText(originalPath, page)) << page;
    for (const int page : {1, 3})
        EXPECT_EQ(largestDifference(renderWithPdftoppm(path, page, 72), renderWithPdftoppm(originalPath, page, 72)), 0);
}

INSTANTIATE_TEST_SUITE_P(Pages, Signing, ::testing::ValuesIn(kinds()),
                         [](const auto &kind) { return std::string(kind.param.name); });

} // namespace
