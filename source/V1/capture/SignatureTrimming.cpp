#include "V1/capture/SignatureTrimming.h"

#include <algorithm>

namespace inkory
{

namespace
{

constexpr int margin = 10; // pixels

bool isDrawn(QRgb pixel)
{
    return qAlpha(pixel) > 0;
}

} // namespace

QRect drawnPixels(const QImage &drawing)
{
    const QImage image = drawing.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int left = image.width();
    int right = -1;
    int top = -1;
    int bottom = -1;
    for (int y = 0; y < image.height(); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        const QRgb *end = row + image.width();
        const QRgb *first = std::find_if(row, end, isDrawn);
        if (first == end)
            continue;
        const QRgb *last = end - 1;
        while (!isDrawn(*last))
            --last;
        left = std::min(left, static_cast<int>(first - row));
        right = std::max(right, static_cast<int>(last - row));
        top = top < 0 ? y : top;
        bottom = y;
    }
    return bottom < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

ImagePtr trimmedSignature(const QImage &drawing)
{
    const QRect drawn = drawnPixels(drawing);
    if (drawn.isEmpty())
        return nullptr;
    // The far edges are exclusive: the margin after the last drawn pixel is one pixel less than the one before the
    // first.
    const int left = std::max(drawn.left() - margin, 0);
    const int top = std::max(drawn.top() - margin, 0);
    const int right = std::min(drawn.right() + margin, drawing.width());
    const int bottom = std::min(drawn.bottom() + margin, drawing.height());
    return Image::fromPixels(drawing.copy(left, top, right - left, bottom - top));
}

} // namespace inkory
