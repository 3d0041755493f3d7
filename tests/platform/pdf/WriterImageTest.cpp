#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/ImageStream.h"
#include "platform/pdf/WriterTestFiles.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QBuffer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

using test::makePdf;
using test::PageSpec;

/// A picture with every alpha, gradients and noise, without any symmetry.
QImage colorfulPixels(bool withAlpha)
{
    QImage pixels(61, 47, QImage::Format_ARGB32);
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const int alpha = withAlpha ? (x * 7 + y * 3) % 256 : 255;
            pixels.setPixel(x, y, qRgba(x * 4, (y * 31) % 256, (x * y * 13) % 256, alpha));
        }
    }
    return pixels;
}

QImage grayPixels()
{
    QImage pixels(33, 20, QImage::Format_Grayscale8);
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x)
            pixels.scanLine(y)[x] = static_cast<uchar>(x * 7 + y);
    }
    return pixels;
}

/// What the images become, drawn one beside the other on each of `pageCount` pages.
QString written(const QTemporaryDir &folder, const std::vector<ImagePtr> &images, int pageCount)
{
    WriteRequest request = test::unchangedRequest(makePdf(std::vector<PageSpec>(static_cast<std::size_t>(pageCount))));
    std::vector<test::OverlayImage> drawn;
    for (int i = 0; i < static_cast<int>(images.size()); ++i)
        drawn.push_back({QRectF(50 + 120 * i, 300, 100, 100), i});
    request.overlays =
        test::makeOverlays(std::vector<test::OverlayPage>(static_cast<std::size_t>(pageCount), {{612, 792}, drawn}));
    request.images = images;
    for (WritePage &page : request.pages)
        page.overlayPage = page.sourcePage;
    const Result<QByteArray> bytes = makeDocumentWriter()->write(request);
    EXPECT_TRUE(bytes);
    const QString path = test::writeFile(folder.path(), QStringLiteral("images.pdf"), bytes ? *bytes : QByteArray());
    EXPECT_EQ(test::qpdfCheck(path), QString());
    return path;
}

TEST(WriterImage, IsStoredOnceAndLosslessWithItsTransparency)
{
    const QTemporaryDir folder;
    const QImage pixels = colorfulPixels(true);
    const QString path = written(folder, {Image::fromPixels(pixels)}, 2);
    const auto listed = test::pdfImages(path);
    ASSERT_EQ(listed.size(), 4U) << "image and mask on each page";
    EXPECT_EQ(listed[0].type, QStringLiteral("image"));
    EXPECT_EQ(listed[0].color, QStringLiteral("rgb"));
    EXPECT_EQ(listed[0].encoding, QStringLiteral("image"));
    EXPECT_EQ(listed[1].type, QStringLiteral("smask"));
    EXPECT_EQ(listed[0].object, listed[2].object);
    EXPECT_EQ(listed[1].object, listed[3].object);

    const auto stored = test::pdfImagePixels(path);
    ASSERT_EQ(stored.size(), 4U);
    const QImage alpha = stored[1].convertToFormat(QImage::Format_Grayscale8);
    ASSERT_EQ(stored[0].size(), pixels.size());
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const QRgb expected = pixels.pixel(x, y);
            ASSERT_EQ(alpha.constScanLine(y)[x], qAlpha(expected)) << x << ", " << y;
            if (qAlpha(expected) > 0) {
                ASSERT_EQ(stored[0].pixel(x, y) | 0xff000000U, expected | 0xff000000U) << x << ", " << y;
            }
        }
    }
}

TEST(WriterImage, IsStoredWithoutMaskWhereOpaqueAndAsGrayWhereGray)
{
    const QTemporaryDir folder;
    const QImage color = colorfulPixels(false);
    const QString path = written(folder, {Image::fromPixels(color), Image::fromPixels(grayPixels())}, 1);
    const auto listed = test::pdfImages(path);
    const auto stored = test::pdfImagePixels(path);
    ASSERT_EQ(listed.size(), 2U);
    ASSERT_EQ(stored.size(), 2U);
    EXPECT_EQ(listed[0].color, QStringLiteral("rgb"));
    EXPECT_EQ(stored[0].convertToFormat(QImage::Format_RGB32), color.convertToFormat(QImage::Format_RGB32));
    EXPECT_EQ(listed[1].color, QStringLiteral("gray"));
    EXPECT_EQ(stored[1].convertToFormat(QImage::Format_Grayscale8), grayPixels());
}

TEST(WriterImage, OfInkIsOneChannelAndItsMask)
{
    // Ink on nothing: the colour is the same everywhere, so that edges do not turn dark or light when scaled.
    const QTemporaryDir folder;
    QImage ink(40, 30, QImage::Format_ARGB32_Premultiplied);
    ink.fill(Qt::transparent);
    for (int x = 5; x < 30; ++x)
        ink.setPixelColor(x, x % 20 + 3, QColor(0, 0, 160));
    const auto stored = test::pdfImagePixels(written(folder, {Image::fromPixels(ink)}, 1));
    ASSERT_EQ(stored.size(), 2U);
    EXPECT_EQ(stored[0].pixelColor(20, 7), QColor(0, 0, 160));
    EXPECT_EQ(stored[0].pixelColor(5, 8), QColor(0, 0, 160));
    EXPECT_EQ(stored[0].pixelColor(0, 29), QColor(0, 0, 160));
}

TEST(WriterImage, PassesJpegFilesThrough)
{
    const QTemporaryDir folder;
    const QString jpegPath = folder.filePath(QStringLiteral("a.jpg"));
    ASSERT_TRUE(colorfulPixels(false).convertToFormat(QImage::Format_RGB32).save(jpegPath, "JPG", 80));
    const auto image = Image::fromFile(jpegPath);
    ASSERT_TRUE(image);
    ASSERT_FALSE((*image)->jpegBytes().isEmpty());
    const QString path = written(folder, {*image}, 2);
    const auto listed = test::pdfImages(path);
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed[0].encoding, QStringLiteral("jpeg"));
    EXPECT_EQ(listed[0].object, listed[1].object);
    EXPECT_EQ(test::readFile(path).count((*image)->jpegBytes()), 1);
}

TEST(WriterImage, CannotBeWrittenWithoutPixels)
{
    WriteRequest request = test::stampRequest(makePdf({PageSpec()}), 0, {50, 100, 50, 50});
    request.images = {nullptr};
    EXPECT_FALSE(makeDocumentWriter()->write(request));
    request.images = {Image::fromPixels(QImage())};
    EXPECT_FALSE(makeDocumentWriter()->write(request));
}

TEST(PngPredictor, ChoosesTheFilterOfTheSmallestDifferences)
{
    const auto rows = [](std::initializer_list<int> bytes) { return std::string(bytes.begin(), bytes.end()); };
    // A slope is best as differences to the left, a repeated row as differences to the row above.
    EXPECT_EQ(withPngPredictor(rows({10, 12, 14, 16, 10, 12, 14, 16}), 4, 1), rows({1, 10, 2, 2, 2, 2, 0, 0, 0, 0}));
    // With three bytes a pixel, "left" is the same channel of the pixel before.
    EXPECT_EQ(withPngPredictor(rows({90, 50, 20, 91, 51, 21}), 6, 3), rows({1, 90, 50, 20, 1, 1, 1}));
    EXPECT_EQ(withPngPredictor(rows({0, 0, 0}), 3, 1), rows({0, 0, 0, 0}));
}

TEST(JpegFrame, IsReadFromTheFirstFrameHeader)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    ASSERT_TRUE(colorfulPixels(false).save(&buffer, "JPG"));
    const JpegFrame frame = readJpegFrame(bytes.toStdString());
    EXPECT_EQ(frame.width, 61);
    EXPECT_EQ(frame.height, 47);
    EXPECT_EQ(frame.components, 3);
    EXPECT_EQ(frame.bitsPerComponent, 8);
    EXPECT_EQ(readJpegFrame(bytes.left(20).toStdString()).components, 0);
    EXPECT_EQ(readJpegFrame("no picture").components, 0);
}

} // namespace

} // namespace inkory
