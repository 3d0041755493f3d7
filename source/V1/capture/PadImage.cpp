#include "V1/capture/PadImage.h"

#include <cmath>

namespace inkory
{

namespace
{

// 400 × 1.1 is a little more than 440 in binary numbers, and must not become 441.
int wholePixels(double pixels)
{
    constexpr double tolerance = 1e-6;
    return static_cast<int>(std::ceil(pixels - tolerance));
}

} // namespace

QImage emptyPadImage(QSizeF size, double devicePixelRatio)
{
    const QSizeF pixels = size * devicePixelRatio;
    QImage image(wholePixels(pixels.width()), wholePixels(pixels.height()), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    return image;
}

} // namespace inkory
