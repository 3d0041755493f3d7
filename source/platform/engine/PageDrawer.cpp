#include "platform/engine/PageDrawer.h"

#include "platform/engine/LibraryCalls.h"

#include <cmath>
#include <cstring>

#include <poppler-qt6.h>

namespace inkory
{

namespace
{

void copyRows(const QImage &from, QImage &to)
{
    const QImage pixels = from.convertToFormat(to.format());
    const auto rowBytes = static_cast<std::size_t>(to.width()) * sizeof(QRgb);
    for (int y = 0; y < to.height(); ++y)
        std::memcpy(to.scanLine(y), pixels.constScanLine(y), rowBytes);
}

QImage drawn(const Poppler::Document *document, const DrawRequest &request, Cancellation &cancellation)
{
    const auto page = document && !cancellation.check() ? document->page(request.page) : nullptr;
    if (!page)
        return {};
    const double dotsPerInch = 72 * request.scale;
    const QRect region = request.region;
    const auto turn = static_cast<Poppler::Page::Rotation>(request.extraQuarterTurns & 3);
    return page->renderToImage(dotsPerInch, dotsPerInch, region.x(), region.y(), region.width(), region.height(), turn,
                               nullptr, nullptr, shouldAbort, QVariant::fromValue(&cancellation));
}

} // namespace

OpenReply PageDrawer::open(const QByteArray &document, const QByteArray &password, Repair repair)
{
    return m_document.open(document, password, repair);
}

std::vector<QSizeF> PageDrawer::measureAllPages()
{
    return guarded("the pages cannot be measured", std::vector<QSizeF>(), [this] {
        const Poppler::Document *document = m_document.library();
        std::vector<QSizeF> sizes;
        const int count = document ? document->numPages() : 0;
        sizes.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            const auto page = document->page(i);
            const QSizeF size = page ? page->pageSizeF() : QSizeF(0, 0);
            const bool isFinite = std::isfinite(size.width()) && std::isfinite(size.height());
            sizes.push_back(isFinite ? size : QSizeF(0, 0));
        }
        return sizes;
    });
}

bool PageDrawer::draw(const DrawRequest &request, QImage &target, const std::function<bool()> &isCancelled)
{
    if (!isDrawable(request) || target.size() != request.region.size() || target.format() != QImage::Format_RGB32)
        return false;
    return guarded("the page cannot be drawn", false, [&] {
        Cancellation cancellation{isCancelled};
        const QImage image = drawn(m_document.library(), request, cancellation);
        // A failed drawing is an image of one pixel.
        if (cancellation.check() || image.size() != target.size())
            return false;
        copyRows(image, target);
        return true;
    });
}

} // namespace inkory
