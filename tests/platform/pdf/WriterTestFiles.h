#pragma once

#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/OverlayRecorder.h"
#include "platform/pdf/PDFPage.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace inkory::test
{

/// An image to be drawn on a page (numbered from 0), in its space.
struct DrawnImage
{
    int page = 0;
    PageRect rect;
    ImagePtr image;
};

/// A request that keeps all pages as the file has them and draws these images on them.
inline WriteRequest drawingRequest(const QByteArray &file, const std::vector<DrawnImage> &images,
                                   const QByteArray &password = {})
{
    WriteRequest request{file, password, {}, {}, {}};
    OverlayRecorder recorder;
    for (const PageGeometry &geometry : makeDocumentWriter()->readStructure(file, password).pages) {
        const int index = static_cast<int>(request.pages.size());
        const PDFPage page(geometry, index);
        WritePage written{index, geometry.rotation, -1, {geometry.cropBox.x, geometry.cropBox.y}};
        for (const DrawnImage &drawn : images) {
            if (drawn.page != index)
                continue;
            if (written.overlayPage < 0)
                written.overlayPage = recorder.beginPage(page);
            recorder.painter().setTransform(recorder.transformForBox(page, DisplayBox::CropBox));
            recorder.drawImage({drawn.rect.x, drawn.rect.y, drawn.rect.width, drawn.rect.height}, drawn.image, 1);
        }
        request.pages.push_back(written);
    }
    request.overlays = recorder.finish();
    request.images = recorder.images();
    return request;
}

/// A request that draws an opaque green rectangle on one page.
inline WriteRequest stampRequest(const QByteArray &file, int page, const PageRect &rect,
                                 const QByteArray &password = {})
{
    QImage pixels(8, 8, QImage::Format_RGB32);
    pixels.fill(Qt::green);
    return drawingRequest(file, {{page, rect, Image::fromPixels(pixels)}}, password);
}

/// Writes into a file, which the checking program has to find clean, and answers its path.
inline QString writtenFile(const QTemporaryDir &folder, const WriteRequest &request)
{
    const Result<QByteArray> bytes = makeDocumentWriter()->write(request);
    EXPECT_TRUE(bytes) << bytes.error().message.toStdString();
    const QString path = writeFile(folder.path(), QStringLiteral("out.pdf"), bytes ? *bytes : QByteArray());
    EXPECT_EQ(qpdfCheck(path, QString::fromUtf8(request.password)), QString());
    return path;
}

} // namespace inkory::test
