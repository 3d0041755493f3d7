#include "platform/core/Image.h"

#include "support/Tools.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

/// 64 x 32 pixels: left half red, right half blue.
QImage halves(QImage::Format format = QImage::Format_RGB32)
{
    QImage image(64, 32, format);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 64; ++x)
            image.setPixelColor(x, y, x < 32 ? Qt::red : Qt::blue);
    return image;
}

QByteArray encoded(QImage image, const char *format, QSize dotsPerMetre = {2835, 2835}, bool progressive = false)
{
    image.setDotsPerMeterX(dotsPerMetre.width());
    image.setDotsPerMeterY(dotsPerMetre.height());
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    writer.setQuality(95);
    EXPECT_TRUE(writer.write(image)) << format;
    return buffer.data();
}

/// With a JFIF segment that states the density: unit, dots across and dots down in hexadecimal digits.
QByteArray jpegWithJfif(const QByteArray &density)
{
    return encoded(halves(), "jpeg").replace(2, 18, QByteArray::fromHex("FFE000104A46494600 0101" + density + "0000"));
}

/// The start-of-frame segment claims another size: height and width in hexadecimal digits.
QByteArray jpegClaiming(const QByteArray &size, bool progressive = false)
{
    QByteArray jpeg = encoded(halves(), "jpeg", {}, progressive);
    return jpeg.replace(jpeg.indexOf(progressive ? "\xFF\xC2" : "\xFF\xC0") + 5, 4, QByteArray::fromHex(size));
}

class ImageTest : public ::testing::Test
{
protected:
    Result<ImagePtr> load(const QByteArray &bytes)
    {
        return Image::fromFile(test::writeFile(m_folder.path(), u"image"_qs, bytes));
    }

    QTemporaryDir m_folder;
};

TEST_F(ImageTest, PngIsReadBackWithTheSamePixelsAndSize)
{
    for (const double ratio : {1.0, 1.25, 2.0}) {
        QImage pixels = halves(QImage::Format_ARGB32);
        pixels.setPixelColor(3, 3, QColor(1, 2, 3, 4));
        pixels.setText(u"Author"_qs, u"Somebody"_qs);
        pixels.setDevicePixelRatio(ratio);
        const QByteArray png = Image::fromPixels(pixels)->pngBytes().value();
        EXPECT_FALSE(png.contains("Somebody"));
        const ImagePtr again = load(png).value();
        EXPECT_EQ(again->size(), QSizeF(64, 32) / ratio);
        EXPECT_EQ(again->pixels().pixel(3, 3), qRgba(1, 2, 3, 4));
        EXPECT_EQ(again->pixels().pixel(60, 20), qRgb(0, 0, 255));
    }
}

TEST_F(ImageTest, StatedDensityGivesTheSizeInPoints)
{
    const std::pair<QByteArray, QSizeF> cases[] = {
        {encoded(halves(), "png", {5669, 5669}), {32, 16}},
        {encoded(halves(), "png", {5669, 11339}), {32, 8}},
        {encoded(halves(), "png", {200'000, 200'000}), {64, 32}}, // too fine to be true
        {jpegWithJfif("01 0120 0120"), {16, 8}},
        {jpegWithJfif("02 0064 0064"), {64 * 72 / 254.0, 32 * 72 / 254.0}}, // per centimetre
        {jpegWithJfif("00 0120 0120"), {64, 32}},                           // only a ratio
    };
    for (const auto &[bytes, expected] : cases) {
        const ImagePtr image = load(bytes).value();
        EXPECT_NEAR(image->size().width(), expected.width(), 1e-9);
        EXPECT_NEAR(image->size().height(), expected.height(), 1e-9);
    }
}

TEST_F(ImageTest, ExifOrientationIsAppliedToPixelsAndSize)
{
    // Where the stored picture's upper left, red corner belongs.
    const QPoint redCorners[] = {{5, 5}, {58, 5}, {58, 26}, {5, 26}, {5, 5}, {26, 5}, {26, 58}, {5, 58}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        // Twice as many dots per inch across as down: 64 x 32 pixels are a square, turned or not.
        QByteArray jpeg = jpegWithJfif("01 0090 0048");
        jpeg.insert(20, QByteArray::fromHex("FFE10022 457869660000 4D4D002A00000008 0001 0112 0003 00000001 000" +
                                            QByteArray::number(orientation) + "0000 00000000"));
        const ImagePtr image = load(jpeg).value();
        EXPECT_EQ(image->pixels().size(), orientation >= 5 ? QSize(32, 64) : QSize(64, 32));
        EXPECT_EQ(image->size(), QSizeF(32, 32));
        EXPECT_EQ(image->jpegBytes().isEmpty(), orientation != 1);
        const QColor corner = image->pixels().pixelColor(redCorners[orientation - 1]);
        EXPECT_GT(corner.red(), 200);
        EXPECT_LT(corner.blue(), 60);
    }
}

TEST_F(ImageTest, JpegBytesAreTheFilesOwnWithoutWhatTellsOfItsOrigin)
{
    const QByteArray plain = jpegWithJfif("01 0048 0048");
    QByteArray jpeg = plain;
    for (const char *marker : {"E1", "E2", "ED", "EF", "FE"})
        jpeg.insert(20, QByteArray::fromHex(QByteArray("FF") + marker + "000A") + "Somebody");
    const ImagePtr image = load(jpeg + "Somebody's second picture").value();
    EXPECT_EQ(image->jpegBytes(), plain);
}

TEST_F(ImageTest, CmykJpegComesOutInItsColours)
{
    // 16 x 16 pixels of RGB (200, 30, 40), stored inverted as Adobe's programs do.
    const QByteArray jpeg = QByteArray::fromBase64(
        "/9j/7gAOQWRvYmUAZAAAAAAC/9sAQwACAQEBAQECAQEBAgICAgIEAwICAgIFBAQDBAYFBgYGBQYGBgcJCAYHCQcGBggLCAkKCgoK"
        "CgYICwwLCgwJCgoK/9sAQwECAgICAgIFAwMFCgcGBwoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoK"
        "CgoKCgoK/8AAFAgAEAAQBAERAAIRAQMRAQQRAP/EABYAAQEBAAAAAAAAAAAAAAAAAAAHCf/EABQQAQAAAAAAAAAAAAAAAAAAAAD/"
        "xAAWAQEBAQAAAAAAAAAAAAAAAAAABwn/xAAUEQEAAAAAAAAAAAAAAAAAAAAA/9oADgQBAAIRAxEEAAA/AK4vDFNpAAAAA//Z");
    const ImagePtr image = load(jpeg).value();
    const QColor color = image->pixels().pixelColor(8, 8);
    EXPECT_NEAR(color.red(), 200, 4);
    EXPECT_NEAR(color.green(), 30, 4);
    EXPECT_NEAR(color.blue(), 40, 4);
    EXPECT_TRUE(image->jpegBytes().isEmpty());
}

TEST_F(ImageTest, LargeImagesAreScaledDownButKeepTheirSizeInPoints)
{
    QImage large(8000, 4000, QImage::Format_Grayscale8); // 32 megapixels
    large.fill(128);
    for (const char *format : {"jpeg", "png"}) {
        const ImagePtr image = load(encoded(large, format, {5669, 5669})).value();
        EXPECT_EQ(image->size(), QSizeF(4000, 2000));
        // 8000 and 4000 times the square root of 12.5/32
        EXPECT_EQ(image->pixels().size(), QSize(5000, 2500)) << format;
        EXPECT_TRUE(image->jpegBytes().isEmpty());
    }
}

TEST_F(ImageTest, CutOffDamagedForeignAndHugeFilesFailWithASentence)
{
    const QString cutOff = u"The image is incomplete: the file has been cut off."_qs;
    const QString unknown = u"The file is not an image of a known kind."_qs;
    const QString tooLarge = u"The image is too large: it has %1 pixels."_qs;
    const QByteArray png = encoded(halves(), "png");
    QByteArray damaged = png;
    damaged[damaged.indexOf("IDAT") + 10] ^= 0x55;
    // A thumbnail's end marker is not the picture's.
    const QByteArray jpeg = encoded(halves(), "jpeg").insert(2, QByteArray::fromHex("FFE1000C 457869660000 FFD8FFD9"));
    ASSERT_TRUE(load(jpeg));

    const std::pair<QByteArray, QString> cases[] = {
        {png.chopped(1), cutOff},
        {png.chopped(12), cutOff},
        {encoded(halves(), "bmp").chopped(100), cutOff},
        {jpeg.chopped(1), cutOff},
        {jpeg.first(jpeg.size() / 2), cutOff},
        {damaged, u"The image is damaged and cannot be read."_qs},
        {{}, unknown},
        {"<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>", unknown},
        {jpegClaiming("FFDC FFDC"), tooLarge.arg(u"65500 × 65500"_qs)},
        {jpegClaiming("000A 8000"), tooLarge.arg(u"32768 × 10"_qs)},
        {jpegClaiming("2711 4E20"), tooLarge.arg(u"20000 × 10001"_qs)},
        {jpegClaiming("1F41 1F41", true), tooLarge.arg(u"8001 × 8001"_qs)},
    };
    for (const auto &[bytes, message] : cases) {
        const Result<ImagePtr> image = load(bytes);
        ASSERT_FALSE(image) << message.toStdString();
        EXPECT_EQ(image.error().message, message);
    }
}

} // namespace
