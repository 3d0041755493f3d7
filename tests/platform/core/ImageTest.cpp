#include "platform/core/Image.h"

#include <gtest/gtest.h>

using namespace inkory;

TEST(Image, KeepsDecodedPixelsWhereTheyAreAndBringsOthersIntoForm)
{
    for (const auto format : {QImage::Format_Grayscale8, QImage::Format_RGB32, QImage::Format_ARGB32}) {
        const QImage pixels(8, 4, format);
        const ImagePtr image = Image::fromParts(pixels, {4, 1}, "jpeg");
        EXPECT_EQ(image->pixels().constBits(), pixels.constBits());
        EXPECT_TRUE(image->size() == QSizeF(4, 1) && image->jpegBytes() == "jpeg");
    }
    QImage other(8, 4, QImage::Format_RGBA64_Premultiplied);
    other.fill(QColor(255, 0, 0, 51));
    other.setText(u"Author"_qs, u"Somebody"_qs);
    const QImage normalized = Image::fromParts(other, {8, 4}, {})->pixels();
    EXPECT_EQ(normalized.format(), QImage::Format_ARGB32);
    EXPECT_EQ(normalized.pixel(7, 3), qRgba(255, 0, 0, 51));
    EXPECT_TRUE(normalized.textKeys().isEmpty());
}
