#include "platform/core/Image.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace inkory
{
namespace
{

/// Left half red, right half blue, the first row black.
QImage halves(int width, int height, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y, y == 0 ? Qt::black : x < width / 2 ? Qt::red : Qt::blue);
    return image;
}

QByteArray encoded(const QImage &image, const char *format, bool progressive = false)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    writer.setQuality(95);
    EXPECT_TRUE(writer.write(image)) << format;
    return bytes;
}

QByteArray bigEndian(quint16 number)
{
    QByteArray bytes(2, 0);
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray jpegSegment(int marker, const QByteArray &data)
{
    return QByteArray("\xFF").append(char(marker)) + bigEndian(quint16(data.size() + 2)) + data;
}

/// Behind the start marker.
QByteArray withSegment(QByteArray jpeg, int marker, const QByteArray &data)
{
    return jpeg.insert(2, jpegSegment(marker, data));
}

/// An EXIF segment that says nothing but how the picture is to be turned.
QByteArray exifOrientation(quint16 orientation)
{
    return QByteArray("Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01", 24) + bigEndian(orientation) +
           QByteArray(6, 0);
}

/// Without the JFIF segment that Qt writes.
QByteArray jpegWithJfif(int unit, quint16 x, quint16 y)
{
    QByteArray jpeg = encoded(halves(64, 32), "jpeg");
    jpeg.remove(2, 18);
    return withSegment(jpeg, 0xE0,
                       QByteArray("JFIF\0\x01\x01", 7) + char(unit) + bigEndian(x) + bigEndian(y) + QByteArray(2, 0));
}

QImage withDotsPerMetre(QImage image, int x, int y)
{
    image.setDotsPerMeterX(x);
    image.setDotsPerMeterY(y);
    return image;
}

QByteArray pngWithoutDensity(const QImage &image)
{
    QByteArray png = encoded(image, "png");
    if (const qsizetype chunk = png.indexOf("pHYs"); chunk > 0)
        png.remove(chunk - 4, 21);
    return png;
}

class ImageTest : public ::testing::Test
{
protected:
    Result<ImagePtr> load(const QByteArray &bytes, const QString &name = u"image"_qs)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        return Image::fromFile(file.fileName());
    }
    QString failure(const QByteArray &bytes)
    {
        const Result<ImagePtr> result = load(bytes);
        return result ? QString() : result.error().message;
    }

    QTemporaryDir m_folder;
};

TEST_F(ImageTest, PixelsHaveTheSizeThatTheirRatioGives)
{
    QImage pixels(752, 452, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    pixels.setDevicePixelRatio(2);
    const ImagePtr image = Image::fromPixels(pixels);
    EXPECT_EQ(image->size(), QSizeF(376, 226));
    EXPECT_EQ(image->pixels().format(), QImage::Format_ARGB32);
    EXPECT_TRUE(image->jpegBytes().isEmpty());
    EXPECT_EQ(Image::fromPixels({})->size(), QSizeF(0, 0));
    EXPECT_FALSE(Image::fromPixels({})->pngBytes());
}

class PngOfRatio : public ImageTest, public ::testing::WithParamInterface<double>
{
};

TEST_P(PngOfRatio, IsReadBackWithTheSamePixelsAndSize)
{
    QImage pixels = halves(752, 452, QImage::Format_ARGB32);
    pixels.setPixelColor(3, 3, QColor(1, 2, 3, 4));
    pixels.setText(u"Author"_qs, u"Somebody"_qs);
    pixels.setDevicePixelRatio(GetParam());
    const ImagePtr image = Image::fromPixels(pixels);
    const Result<QByteArray> png = image->pngBytes();
    ASSERT_TRUE(png);
    EXPECT_TRUE(image->pixels().textKeys().isEmpty());
    EXPECT_FALSE(png->contains("Somebody"));
    const Result<ImagePtr> again = load(*png);
    ASSERT_TRUE(again);
    EXPECT_NEAR((*again)->size().width(), 752 / GetParam(), 1e-9);
    EXPECT_NEAR((*again)->size().height(), 452 / GetParam(), 1e-9);
    EXPECT_EQ((*again)->pixels().pixel(3, 3), qRgba(1, 2, 3, 4));
    EXPECT_EQ((*again)->pixels().pixel(700, 400), qRgb(0, 0, 255));
}

INSTANTIATE_TEST_SUITE_P(Ratios, PngOfRatio, ::testing::Values(1, 1.25, 1.5, 2, 3));

struct DensityCase
{
    const char *name;
    QByteArray bytes; // of a picture of 64 x 32 pixels
    QSizeF expected;
};

class StatedDensity : public ImageTest, public ::testing::WithParamInterface<DensityCase>
{
};

TEST_P(StatedDensity, GivesTheSizeInPoints)
{
    const Result<ImagePtr> image = load(GetParam().bytes);
    ASSERT_TRUE(image);
    EXPECT_NEAR((*image)->size().width(), GetParam().expected.width(), 1e-9);
    EXPECT_NEAR((*image)->size().height(), GetParam().expected.height(), 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    All, StatedDensity,
    ::testing::Values(
        DensityCase{"PngNone", pngWithoutDensity(halves(64, 32)), {64, 32}},
        DensityCase{"Png144", encoded(withDotsPerMetre(halves(64, 32), 5669, 5669), "png"), {32, 16}},
        DensityCase{"PngTwoDensities", encoded(withDotsPerMetre(halves(64, 32), 5669, 11339), "png"), {32, 8}},
        DensityCase{"PngFractional",
                    encoded(withDotsPerMetre(halves(64, 32), 4000, 4000), "png"),
                    {64 * 72 / 101.6, 32 * 72 / 101.6}},
        DensityCase{"PngTooFine", encoded(withDotsPerMetre(halves(64, 32), 200'000, 200'000), "png"), {64, 32}},
        DensityCase{"PngTooCoarse", encoded(withDotsPerMetre(halves(64, 32), 390, 390), "png"), {64, 32}},
        DensityCase{"JpegDotsPerInch", jpegWithJfif(1, 288, 288), {16, 8}},
        DensityCase{"JpegDotsPerCentimetre", jpegWithJfif(2, 100, 100), {64 * 72 / 254.0, 32 * 72 / 254.0}},
        DensityCase{"JpegRatioOnly", jpegWithJfif(0, 288, 288), {64, 32}},
        DensityCase{"JpegOneDotPerInch", jpegWithJfif(1, 1, 1), {64, 32}},
        DensityCase{"Bmp144", encoded(withDotsPerMetre(halves(64, 32), 5669, 5669), "bmp"), {32, 16}}),
    [](const auto &each) { return each.param.name; });

class ExifOrientation : public ImageTest, public ::testing::WithParamInterface<int>
{
};

TEST_P(ExifOrientation, IsAppliedToPixelsAndSize)
{
    // Two dots per inch across for one down, so that turning shows in the size, too.
    QByteArray jpeg = jpegWithJfif(1, 144, 72);
    jpeg.insert(20, jpegSegment(0xE1, exifOrientation(quint16(GetParam()))));
    const Result<ImagePtr> image = load(jpeg);
    ASSERT_TRUE(image);
    const bool turned = GetParam() >= 5;
    EXPECT_EQ((*image)->pixels().size(), turned ? QSize(32, 64) : QSize(64, 32));
    EXPECT_EQ((*image)->size(), turned ? QSizeF(32, 32) : QSizeF(32, 32));
    EXPECT_EQ((*image)->jpegBytes().isEmpty(), GetParam() != 1);
    // Where the stored picture's upper left, red corner belongs.
    const bool redIsRight = GetParam() == 2 || GetParam() == 3 || GetParam() == 6 || GetParam() == 7;
    const bool redIsBelow = GetParam() == 3 || GetParam() == 4 || GetParam() == 7 || GetParam() == 8;
    const QSize size = (*image)->pixels().size();
    const QColor corner =
        (*image)->pixels().pixelColor(redIsRight ? size.width() - 6 : 5, redIsBelow ? size.height() - 6 : 5);
    EXPECT_GT(corner.red(), 200);
    EXPECT_LT(corner.blue(), 60);
}

INSTANTIATE_TEST_SUITE_P(All, ExifOrientation, ::testing::Range(1, 9));

TEST_F(ImageTest, JpegBytesAreTheFilesOwnWithoutWhatTellsOfItsOrigin)
{
    const QByteArray plain = jpegWithJfif(1, 72, 72);
    QByteArray jpeg = plain;
    for (const int marker : {0xE1, 0xE2, 0xED, 0xEF, 0xFE})
        jpeg.insert(20, jpegSegment(marker, "taken by Somebody"));
    jpeg.insert(20, jpegSegment(0xE0, QByteArray("JFXX\0 Somebody's thumbnail", 26)));
    const Result<ImagePtr> image = load(jpeg + "Somebody's second picture");
    ASSERT_TRUE(image);
    EXPECT_EQ((*image)->jpegBytes(), plain);

    const QByteArray profile = QByteArray("ICC_PROFILE\0\x01\x01", 14);
    jpeg = withSegment(plain, 0xE2, profile);
    EXPECT_EQ((*load(jpeg))->jpegBytes(), jpeg);
}

TEST_F(ImageTest, JpegBytesExistForGrayAndProgressiveFilesButOnlyForThose)
{
    const QImage gray = halves(64, 32).convertToFormat(QImage::Format_Grayscale8);
    const Result<ImagePtr> grayImage = load(encoded(gray, "jpeg"));
    ASSERT_TRUE(grayImage);
    EXPECT_FALSE((*grayImage)->jpegBytes().isEmpty());
    EXPECT_EQ((*grayImage)->pixels().format(), QImage::Format_Grayscale8);
    EXPECT_FALSE((*load(encoded(halves(64, 32), "jpeg", true)))->jpegBytes().isEmpty());
    EXPECT_TRUE((*load(encoded(halves(64, 32), "png")))->jpegBytes().isEmpty());
}

TEST_F(ImageTest, CmykJpegComesOutInItsColours)
{
    // 16 x 16 pixels of RGB (200, 30, 40), stored inverted as Adobe's programs do.
    const QByteArray jpeg = QByteArray::fromBase64(
        "/9j/7gAOQWRvYmUAZAAAAAAC/9sAQwACAQEBAQECAQEBAgICAgIEAwICAgIFBAQDBAYFBgYGBQYGBgcJCAYHCQcGBggLCAkKCgoK"
        "CgYICwwLCgwJCgoK/9sAQwECAgICAgIFAwMFCgcGBwoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoK"
        "CgoKCgoK/8AAFAgAEAAQBAERAAIRAQMRAQQRAP/EABYAAQEBAAAAAAAAAAAAAAAAAAAHCf/EABQQAQAAAAAAAAAAAAAAAAAAAAD/"
        "xAAWAQEBAQAAAAAAAAAAAAAAAAAABwn/xAAUEQEAAAAAAAAAAAAAAAAAAAAA/9oADgQBAAIRAxEEAAA/AK4vDFNpAAAAA//Z");
    const Result<ImagePtr> image = load(jpeg);
    ASSERT_TRUE(image);
    const QColor color = (*image)->pixels().pixelColor(8, 8);
    EXPECT_NEAR(color.red(), 200, 4);
    EXPECT_NEAR(color.green(), 30, 4);
    EXPECT_NEAR(color.blue(), 40, 4);
    EXPECT_TRUE((*image)->jpegBytes().isEmpty());
}

struct FormatCase
{
    QImage::Format stored;
    QImage::Format expected;
};

class PixelFormat : public ImageTest, public ::testing::WithParamInterface<FormatCase>
{
};

TEST_P(PixelFormat, IsTheSimplestThatHoldsThePixels)
{
    const Result<ImagePtr> image = load(encoded(halves(64, 32).convertToFormat(GetParam().stored), "png"));
    ASSERT_TRUE(image);
    EXPECT_EQ((*image)->pixels().format(), GetParam().expected);
    EXPECT_EQ((*image)->pixels().pixel(5, 0), qRgb(0, 0, 0));
    if (GetParam().expected != QImage::Format_Grayscale8) {
        EXPECT_EQ((*image)->pixels().pixel(60, 20), qRgb(0, 0, 255));
    }
}

INSTANTIATE_TEST_SUITE_P(All, PixelFormat,
                         ::testing::Values(FormatCase{QImage::Format_RGB32, QImage::Format_RGB32},
                                           FormatCase{QImage::Format_ARGB32, QImage::Format_ARGB32},
                                           FormatCase{QImage::Format_RGBA64, QImage::Format_ARGB32},
                                           FormatCase{QImage::Format_RGBX64, QImage::Format_RGB32},
                                           FormatCase{QImage::Format_Grayscale16, QImage::Format_Grayscale8},
                                           FormatCase{QImage::Format_Indexed8, QImage::Format_RGB32},
                                           FormatCase{QImage::Format_Mono, QImage::Format_Grayscale8}));

TEST_F(ImageTest, ColorsOfAnotherSpaceBecomeSRgb)
{
    QImage linear(8, 8, QImage::Format_RGB32);
    linear.fill(qRgb(55, 55, 55)); // 55 / 255 of the light is 0.5029 in sRGB
    linear.setColorSpace(QColorSpace::SRgbLinear);
    const Result<ImagePtr> image = load(encoded(linear, "png"));
    ASSERT_TRUE(image);
    EXPECT_NEAR(qRed((*image)->pixels().pixel(4, 4)), 128, 1);
    EXPECT_FALSE((*image)->pixels().colorSpace().isValid());
}

TEST_F(ImageTest, FormatIsDecidedByTheContent)
{
    EXPECT_TRUE(load(encoded(halves(64, 32), "png"), u"photo.jpg"_qs));
    EXPECT_TRUE(load(encoded(halves(64, 32), "jpeg"), u"no extension"_qs));
}

TEST_F(ImageTest, LargeImagesAreScaledDownButKeepTheirSizeInPoints)
{
    QImage large(8000, 4000, QImage::Format_Grayscale8); // 32 megapixels
    large.fill(128);
    for (const char *format : {"jpeg", "png"}) {
        const Result<ImagePtr> image = load(encoded(withDotsPerMetre(large, 5669, 5669), format));
        ASSERT_TRUE(image) << format;
        EXPECT_EQ((*image)->size(), QSizeF(4000, 2000));
        const QSize size = (*image)->pixels().size();
        EXPECT_EQ(size, QSize(6928, 3464)) << format; // 8000 and 4000 times the square root of 3/4
        EXPECT_TRUE((*image)->jpegBytes().isEmpty());
    }
}

TEST_F(ImageTest, CutOffFilesFailAndSayThatTheyAre)
{
    const QString cutOff = u"The image is incomplete: the file has been cut off."_qs;
    const QByteArray gif = QByteArray::fromBase64("R0lGODlhAQABAIAAAP8AAAAAACwAAAAAAQABAAACAkQBADs=");
    ASSERT_TRUE(load(gif));
    EXPECT_EQ(failure(gif.chopped(4)), cutOff);
    const QByteArray png = encoded(halves(64, 32), "png");
    EXPECT_EQ(failure(png.chopped(1)), cutOff);
    EXPECT_EQ(failure(png.chopped(12)), cutOff);
    EXPECT_EQ(failure(encoded(halves(64, 32), "bmp").chopped(100)), cutOff);
    // A thumbnail's end marker is not the picture's.
    const QByteArray jpeg =
        withSegment(encoded(halves(64, 32), "jpeg"), 0xE1, QByteArray("Exif\0\0\xFF\xD8\xFF\xD9", 10));
    ASSERT_TRUE(load(jpeg));
    EXPECT_EQ(failure(jpeg.chopped(1)), cutOff);
    EXPECT_EQ(failure(jpeg.first(jpeg.size() / 2)), cutOff);
    EXPECT_EQ(failure(jpeg.first(40)), cutOff);
}

TEST_F(ImageTest, OtherThanImagesFailWithASentence)
{
    const QString unknown = u"The file is not an image of a known kind."_qs;
    EXPECT_EQ(failure({}), unknown);
    EXPECT_EQ(failure("<html><body>404</body></html>"), unknown);
    EXPECT_EQ(failure("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"), unknown);
    QByteArray broken = encoded(halves(64, 32), "png");
    broken[broken.indexOf("IDAT") + 10] ^= 0x55;
    EXPECT_EQ(failure(broken), u"The image is damaged and cannot be read."_qs);
    EXPECT_EQ(Image::fromFile(m_folder.filePath(u"none"_qs)).error().message, u"The file does not exist."_qs);
    EXPECT_EQ(Image::fromFile(m_folder.path()).error().message, u"It is not a file."_qs);
}

TEST_F(ImageTest, ImagesOverTheLimitsFailBeforeTheyAreDecoded)
{
    // A start-of-frame segment that claims another size: height before width.
    const auto claiming = [](quint16 width, quint16 height, bool progressive) {
        QByteArray jpeg = encoded(halves(64, 32), "jpeg", progressive);
        const qsizetype frame = jpeg.indexOf(progressive ? "\xFF\xC2" : "\xFF\xC0");
        return jpeg.replace(frame + 5, 4, bigEndian(height) + bigEndian(width));
    };
    EXPECT_EQ(failure(claiming(65500, 65500, false)), u"The image is too large: it has 65500 × 65500 pixels."_qs);
    EXPECT_EQ(failure(claiming(32768, 10, false)), u"The image is too large: it has 32768 × 10 pixels."_qs);
    EXPECT_EQ(failure(claiming(20000, 10001, false)), u"The image is too large: it has 20000 × 10001 pixels."_qs);
    EXPECT_EQ(failure(claiming(8001, 8001, true)), u"The image is too large: it has 8001 × 8001 pixels."_qs);
}

TEST_F(ImageTest, ExtensionsAreThoseOfPixelFormatsInBothCases)
{
    const QStringList &extensions = Image::fileExtensions();
    for (const QString &each : {u"png"_qs, u"PNG"_qs, u"jpg"_qs, u"JPG"_qs, u"jpeg"_qs, u"JPEG"_qs})
        EXPECT_EQ(extensions.count(each), 1) << each.toStdString();
    for (const QString &each : {u"svg"_qs, u"SVG"_qs, u"svgz"_qs, u"pdf"_qs})
        EXPECT_FALSE(extensions.contains(each)) << each.toStdString();
}

} // namespace
} // namespace inkory
