#include "platform/pdf/PageText.h"

#include "platform/pdf/EngineValues.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace inkory
{

bool isPlace(const QRectF &rectangle)
{
    const std::array numbers = {rectangle.x(), rectangle.y(), rectangle.width(), rectangle.height()};
    return !rectangle.isEmpty() &&
           std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::abs(number) <= farthest; });
}

bool isLinkAddress(const QString &address)
{
    const std::array schemes = {QLatin1String("http://"), QLatin1String("https://"), QLatin1String("mailto:")};
    return address.size() <= PageLink::longestAddress && address.isValidUtf16() &&
           std::any_of(schemes.begin(), schemes.end(),
                       [&](QLatin1String scheme) { return address.startsWith(scheme, Qt::CaseInsensitive); });
}

QString withoutTornPairs(const QString &text, qsizetype most)
{
    QString cut = text.left(most);
    if (text.size() > most && !cut.isEmpty() && cut.back().isHighSurrogate())
        cut.chop(1);
    return cut.isValidUtf16() ? cut : QString::fromUtf8(cut.toUtf8());
}

bool isFindable(const FindRequest &request)
{
    return request.text.size() <= FindRequest::longestText && request.text.isValidUtf16() && request.firstPage >= 0 &&
           request.firstPage < request.endPage && request.endPage <= maxPageCount;
}

} // namespace inkory
