#include "platform/engine/ImageDecoder.h"

#include <QBuffer>
#include <QImageWriter>

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

/// 64 x 32 pixels: left half red, right half blue.
QImage halves(QImage::Format format = QImage::Format_RGB32)
{
    QImage image(2, 1, format);
    image.setPixelColor(0, 0, Qt::red);
    image.setPixelColor(1, 0, Qt::blue);
    return image.scaled(64, 32);
}

QByteArray encoded(QImage image, const char *format, QSize dotsPerMetre = {2835, 2835}, bool progressive = false)
{
    image.setDotsPerMeterX(dotsPerMetre.width());
    image.setDotsPerMeterY(dotsPerMetre.height());
    QBuffer buffer;
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(progressive);
    EXPECT_TRUE(writer.write(image)) << format;
    return buffer.data();
}

/// Its JFIF segment states the density: unit, dots across and dots down in hexadecimal digits.
QByteArray jpegWithJfif(const QByteArray &density)
{
    return encoded(halves(), "jpeg").replace(2, 18, QByteArray::fromHex("FFE000104A46494600 0101" + density + "0000"));
}

/// With one entry: tag, type, count and the value's first two bytes in hexadecimal digits.
QByteArray exif(const QByteArray &entry)
{
    return QByteArray::fromHex("FFE10022 457869660000 4D4D002A00000008 0001" + entry + "0000 00000000");
}

/// The start-of-frame segment claims another size: height and width in hexadecimal digits.
QByteArray jpegClaiming(const QByteArray &size, bool progressive = false)
{
    QByteArray jpeg = encoded(halves(), "jpeg", {}, progressive);
    return jpeg.replace(jpeg.indexOf(progressive ? "\xFF\xC2" : "\xFF\xC0") + 5, 4, QByteArray::fromHex(size));
}

ImagePtr decoded(const QByteArray &file)
{
    ImageDecoder decoder;
    const ImageReply reply = decoder.read(file);
    EXPECT_TRUE(reply.problem == ImageProblem::None && reply.jpegSize == decoder.jpegBytes().size());
    EXPECT_TRUE(reply.pixelSize == decoder.pixels().size() && reply.format == decoder.pixels().format());
    return Image::fromParts(decoder.pixels(), reply.size, decoder.jpegBytes());
}

TEST(ImageDecoder, StatedDensityGivesTheSizeInPoints)
{
    const std::pair<QByteArray, QSizeF> cases[] = {
        {encoded(halves(), "png", {5669, 11339}), {32, 8}},
        {encoded(halves(), "png", {200'000, 200'000}), {64, 32}}, // too fine to be true
        {jpegWithJfif("01 0120 0120"), {16, 8}},
        {jpegWithJfif("02 0064 0064"), {64 * 72 / 254.0, 32 * 72 / 254.0}}, // per centimetre
        {jpegWithJfif("00 0120 0120"), {64, 32}},                           // only a ratio
    };
    for (const auto &[bytes, expected] : cases)
        EXPECT_EQ(decoded(bytes)->size(), expected);
}

TEST(ImageDecoder, ExifOrientationIsAppliedToPixelsAndSize)
{
    // Where the stored picture's upper left, red corner belongs.
    const QPoint redCorners[] = {{5, 5}, {58, 5}, {58, 26}, {5, 26}, {5, 5}, {26, 5}, {26, 58}, {5, 58}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        // Twice as many dots per inch across as down: 64 x 32 pixels are a square, turned or not.
        const QByteArray number = QByteArray::number(orientation);
        const ImagePtr image =
            decoded(jpegWithJfif("01 0090 0048").insert(20, exif("0112 0003 00000001 000" + number)));
        EXPECT_EQ(image->pixels().size(), orientation >= 5 ? QSize(32, 64) : QSize(64, 32)) << orientation;
        EXPECT_TRUE(image->size() == QSizeF(32, 32) && image->jpegBytes().isEmpty() == (orientation != 1));
        const QColor corner = image->pixels().pixelColor(redCorners[orientation - 1]);
        EXPECT_TRUE(corner.red() > 200 && corner.blue() < 60) << orientation;
    }
}

TEST(ImageDecoder, JpegBytesAreTheFilesOwnWithoutWhatTellsOfItsOrigin)
{
    const QByteArray plain = jpegWithJfif("01 0048 0048");
    QByteArray jpeg = QByteArray(plain).insert(20, exif("8825 0004 00000001 0000")); // where the picture was taken
    for (const char *marker : {"E1", "E2", "ED", "EF", "FE"})
        jpeg.insert(20, QByteArray::fromHex(QByteArray("FF") + marker + "000A") + "Somebody");
    EXPECT_EQ(decoded(jpeg + "Somebody's second picture")->jpegBytes(), plain);
}

TEST(ImageDecoder, CmykJpegComesOutInItsColours)
{
    // 16 x 16 pixels of RGB (200, 30, 40), stored inverted as Adobe's programs do.
    const ImagePtr image = decoded(QByteArray::fromBase64(
        "/9j/7gAOQWRvYmUAZAAAAAAC/9sAQwACAQEBAQECAQEBAgICAgIEAwICAgIFBAQDBAYFBgYGBQYGBgcJCAYHCQcGBggLCAkKCgoK"
        "CgYICwwLCgwJCgoK/9sAQwECAgICAgIFAwMFCgcGBwoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoK"
        "CgoKCgoK/8AAFAgAEAAQBAERAAIRAQMRAQQRAP/EABYAAQEBAAAAAAAAAAAAAAAAAAAHCf/EABQQAQAAAAAAAAAAAAAAAAAAAAD/"
        "xAAWAQEBAQAAAAAAAAAAAAAAAAAABwn/xAAUEQEAAAAAAAAAAAAAAAAAAAAA/9oADgQBAAIRAxEEAAA/AK4vDFNpAAAAA//Z"));
    const QRgb color = image->pixels().pixel(8, 8);
    EXPECT_LT(qAbs(qRed(color) - 200) + qAbs(qGreen(color) - 30) + qAbs(qBlue(color) - 40), 12);
    EXPECT_TRUE(image->jpegBytes().isEmpty());
}

TEST(ImageDecoder, LargeImagesAreScaledDownButKeepTheirSizeInPoints)
{
    // As a whole, the first would be larger than what may be decoded.
    for (const auto &[format, size] : {std::pair("jpeg", QSize(12800, 6400)), std::pair("png", QSize(8000, 4000))}) {
        QImage large(size, QImage::Format_Grayscale8);
        large.fill(128);
        const ImagePtr image = decoded(encoded(large, format, {5669, 5669}));
        EXPECT_TRUE(image->size() == QSizeF(size) / 2 && image->jpegBytes().isEmpty());
        EXPECT_EQ(image->pixels().size(), QSize(5000, 2500)) << format; // 12.5 megapixels
    }
}

TEST(ImageDecoder, RefusesCutOffDamagedForeignAndHugeFiles)
{
    const QByteArray png = encoded(halves(), "png");
    const QByteArray damaged = QByteArray(png).replace(png.indexOf("IDAT") + 10, 1, "U");
    // A thumbnail's end marker is not the picture's.
    const QByteArray jpeg = encoded(halves(), "jpeg").insert(2, QByteArray::fromHex("FFE1000C 457869660000 FFD8FFD9"));
    const std::pair<ImageProblem, QList<QByteArray>> cases[] = {
        {ImageProblem::None, {png, jpeg}},
        {ImageProblem::CutOff, {png.chopped(1), png.chopped(12), encoded(halves(), "bmp").chopped(100)}},
        {ImageProblem::CutOff, {jpeg.chopped(1), jpeg.first(jpeg.size() / 2)}},
        {ImageProblem::Damaged, {damaged, encoded(halves(), "ppm").chopped(100)}},
        {ImageProblem::UnknownKind, {{}, "<svg/>", "<?xml version='1.0'?><svg/>", encoded(halves(), "xpm")}},
        {ImageProblem::UnknownKind, {"%PDF-1.4", "BMX bicycles: a text.", png.first(7), QByteArray("\0\0\1\0\0\0", 6)}},
    };
    ImageDecoder decoder;
    for (const auto &[problem, files] : cases)
        for (const QByteArray &file : files)
            EXPECT_EQ(decoder.read(file).problem, problem) << file.left(30).toStdString();
    const std::pair<QByteArray, QSize> huge[] = {
        {jpegClaiming("FFDC FFDC"), {65500, 65500}},
        {jpegClaiming("2711 4E20"), {20000, 10001}},
        {jpegClaiming("000A 8000"), {32768, 10}},
        {jpegClaiming("1F41 1F41", true), {8001, 8001}},
    };
    for (const auto &[file, claimed] : huge) {
        const ImageReply reply = decoder.read(file);
        EXPECT_TRUE(reply.problem == ImageProblem::TooLarge && reply.pixelSize == claimed) << claimed.width();
        EXPECT_TRUE(decoder.pixels().isNull());
    }
}

} // namespace
