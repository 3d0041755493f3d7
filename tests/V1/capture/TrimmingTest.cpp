#include "V1/capture/PadImage.h"
#include "V1/capture/SignatureTrimming.h"
#include "platform/pdf/ImageFile.h"
#include "support/Tools.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace inkory;

namespace
{

QImage imageWith(const std::vector<QPoint> &pixels, double ratio = 1)
{
    QImage image = emptyPadImage(QSizeF(100, 80) / ratio, ratio);
    for (const QPoint &pixel : pixels)
        image.setPixelColor(pixel, QColor(0, 0, 0, 1));
    return image;
}

TEST(Trimming, LeavesTenPixelsWhereThereAreAsMany)
{
    const auto check = [](const std::vector<QPoint> &drawn, QSize size, QPoint first) {
        const QImage trimmed = trimmedSignature(imageWith(drawn))->pixels();
        EXPECT_EQ(trimmed.size(), size);
        EXPECT_EQ(drawnPixels(trimmed).topLeft(), first);
    };
    check({{30, 40}, {50, 45}}, {40, 25}, {10, 10});
    check({{3, 79}}, {13, 11}, {3, 10});
    check({{99, 0}}, {11, 10}, {10, 0});
    check({{0, 0}, {99, 79}}, {100, 80}, {0, 0});
    EXPECT_EQ(trimmedSignature(imageWith({})), nullptr);
    EXPECT_EQ(trimmedSignature({}), nullptr);
}

TEST(Trimming, KeepsTheDensityInTheFileToo)
{
    const QTemporaryDir folder;
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        const QByteArray png = trimmedSignature(imageWith({{30, 40}, {50, 45}}, ratio))->pngBytes().value();
        const QString path = test::writeFile(folder.path(), QString::number(ratio), png);
        EXPECT_NEAR(readImageFile(path).value()->size().width(), 40 / ratio, 0.01);
    }
}

TEST(PadImage, RoundsPixelsUpAndHasOneDensity)
{
    EXPECT_EQ(emptyPadImage(QSizeF(501, 301), 1.25).size(), QSize(627, 377));
    EXPECT_EQ(emptyPadImage(QSizeF(501, 301), 1.75).size(), QSize(877, 527));
    EXPECT_EQ(emptyPadImage(QSizeF(400, 200), 1.1).size(), QSize(440, 220));
    EXPECT_EQ(emptyPadImage(QSizeF(501, 301), 1.5).deviceIndependentSize(), QSizeF(752 / 1.5, 452 / 1.5));
    EXPECT_TRUE(emptyPadImage(QSizeF(0, 10), 2).isNull());
}

} // namespace
