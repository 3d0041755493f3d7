#include "platform/pdf/PageGeometry.h"

namespace inkory
{

int normalizedRotation(int degrees)
{
    const int turned = degrees % 360;
    return turned % 90 != 0 ? 0 : (turned + 360) % 360;
}

QSizeF shownSize(const PageRect &box, int rotation)
{
    const bool turned = normalizedRotation(rotation) % 180 != 0;
    return turned ? QSizeF(box.height, box.width) : QSizeF(box.width, box.height);
}

QTransform shownPageTransform(const PageRect &box, int rotation)
{
    switch (normalizedRotation(rotation)) {
    case 90:
        return {0, 1, 1, 0, -box.y, -box.x};
    case 180:
        return {-1, 0, 0, 1, box.maxX(), -box.y};
    case 270:
        return {0, -1, -1, 0, box.maxY(), box.maxX()};
    default:
        return {1, 0, 0, -1, -box.x, box.maxY()};
    }
}

} // namespace inkory
