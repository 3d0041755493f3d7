#include "platform/engine/ImageDecoder.h"
#include "platform/engine/WriterTestFiles.h"

using namespace inkory;

namespace
{

/// A picture with every alpha, gradients and noise, without any symmetry.
QImage colorfulPixels()
{
    QImage pixels(61, 47, QImage::Format_ARGB32);
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const int alpha = (x * 7 + y * 3) % 256;
            pixels.setPixel(x, y, qRgba(x * 4, (y * 31) % 256, (x * y * 13) % 256, alpha));
        }
    }
    return pixels;
}

/// The image on both of two pages.
QString written(const QTemporaryDir &folder, const ImagePtr &image)
{
    return test::writtenFile(folder, test::drawingChange(test::manyPages(2), {{0, {50, 300, 100, 100}, image},
                                                                              {1, {200, 300, 100, 100}, image}}));
}

TEST(WriterImage, IsStoredOnceAndLosslessWithItsTransparency)
{
    const QTemporaryDir folder;
    const QImage pixels = colorfulPixels();
    const QString path = written(folder, Image::fromPixels(pixels));
    const auto listed = test::pdfImages(path);
    ASSERT_EQ(listed.size(), 4U) << "image and mask on each page";
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
            const QRgb color = qAlpha(expected) > 0 ? expected : stored[0].pixel(x, y); // any where nobody sees it
            ASSERT_EQ(stored[0].pixel(x, y) | 0xff000000U, color | 0xff000000U) << x << ", " << y;
        }
    }
}

TEST(WriterImage, PassesJpegFilesThrough)
{
    const QTemporaryDir folder;
    const QString jpegPath = folder.filePath(QStringLiteral("a.jpg"));
    ASSERT_TRUE(colorfulPixels().save(jpegPath, "JPG", 80));
    ImageDecoder decoder;
    const QSizeF size = decoder.read(test::readFile(jpegPath)).size;
    const QString path = written(folder, Image::fromParts(decoder.pixels(), size, decoder.jpegBytes()));
    const auto listed = test::pdfImages(path);
    ASSERT_EQ(listed.size(), 2U);
    EXPECT_EQ(listed[0].encoding, QStringLiteral("jpeg"));
    EXPECT_EQ(listed[0].object, listed[1].object);
    EXPECT_EQ(test::readFile(path).count(test::readFile(jpegPath)), 1);
}

} // namespace
