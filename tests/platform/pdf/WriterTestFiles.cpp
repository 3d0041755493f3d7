#include "platform/pdf/WriterTestFiles.h"

#include <QBuffer>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <cmath>

namespace inkory::test
{

QByteArray makeOverlays(const std::vector<OverlayPage> &pages)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(72);
    writer.setPageMargins(QMarginsF());
    QPainter painter;
    for (const OverlayPage &page : pages) {
        writer.setPageSize(QPageSize(page.size, QPageSize::Point, QStringLiteral("o"), QPageSize::ExactMatch));
        if (painter.isActive())
            writer.newPage();
        else
            painter.begin(&writer);
        painter.setRenderHint(QPainter::LosslessImageRendering);
        for (const OverlayImage &image : page.images) {
            QImage marker(1, 1, QImage::Format_RGB32);
            marker.fill(overlayMarkerColor(image.index));
            const double top = page.size.height() - image.rect.y() - image.rect.height();
            painter.drawImage(QRectF(QPointF(image.rect.x(), top), image.rect.size()), marker);
        }
    }
    painter.end();
    return bytes;
}

WriteRequest unchangedRequest(const QByteArray &file, const QByteArray &password)
{
    WriteRequest request{file, password, {}, {}, {}};
    const FileStructure structure = makeDocumentWriter()->readStructure(file, password);
    for (const PageGeometry &page : structure.pages)
        request.pages.push_back({static_cast<int>(request.pages.size()), page.rotation, -1, {}});
    return request;
}

WriteRequest stampRequest(const QByteArray &file, int page, const PageRect &rect, const QByteArray &password)
{
    WriteRequest request = unchangedRequest(file, password);
    const PageRect box =
        makeDocumentWriter()->readStructure(file, password).pages.at(static_cast<std::size_t>(page)).cropBox;
    const QRectF inOverlay(rect.x - box.x, rect.y - box.y, rect.width, rect.height);
    request.overlays = makeOverlays({{QSizeF(std::ceil(box.width), std::ceil(box.height)), {{inOverlay, 0}}}});
    request.images = {redImage()};
    request.pages.at(static_cast<std::size_t>(page)).overlayPage = 0;
    request.pages.at(static_cast<std::size_t>(page)).overlayOrigin = {box.x, box.y};
    return request;
}

ImagePtr redImage()
{
    QImage pixels(8, 8, QImage::Format_RGB32);
    pixels.fill(Qt::red);
    return Image::fromPixels(pixels);
}

} // namespace inkory::test
