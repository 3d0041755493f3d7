#include "platform/pdf/EngineValues.h"

namespace inkory
{

bool isDrawable(const DrawRequest &request)
{
    constexpr int maxSide = 32'767;
    constexpr qint64 maxPixels = 64'000'000;
    constexpr double maxScale = 1000;
    const QSize size = request.region.size();
    return !request.region.isEmpty() && size.width() <= maxSide && size.height() <= maxSide &&
           qint64(size.width()) * size.height() <= maxPixels && request.scale > 0 && request.scale <= maxScale;
}

} // namespace inkory
