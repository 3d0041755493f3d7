#pragma once

#include "platform/engine/QpdfWriter.h"
#include "platform/pdf/OverlayRecorder.h"
#include "platform/pdf/PDFPage.h"
#include "support/PdfSamples.h"
#include "support/Tools.h"

#include <algorithm>

namespace inkory::test
{

/// An image to be drawn on a page (numbered from 0), in its space.
struct DrawnImage
{
    int page = 0;
    PageRect rect;
    ImagePtr image;
};

/// A document and how it is to be changed.
struct Change
{
    QByteArray original;
    QByteArray password;
    WriteRequest request;
};

/// Keeps all pages as the file has them and draws these images on them.
inline Change drawingChange(const QByteArray &file, const std::vector<DrawnImage> &images,
                            const QByteArray &password = {})
{
    Change change{file, password, {}};
    OverlayRecorder recorder;
    for (const PageGeometry &geometry : readStructure(file, password).pages) {
        const int index = static_cast<int>(change.request.pages.size());
        const PDFPage page(geometry, index);
        WritePage written{index, geometry.rotation, {}, {geometry.cropBox.x, geometry.cropBox.y}};
        const auto isHere = [index](const DrawnImage &drawn) { return drawn.page == index; };
        if (std::any_of(images.begin(), images.end(), isHere))
            recorder.beginPage(page);
        for (const DrawnImage &drawn : images) {
            if (!isHere(drawn))
                continue;
            recorder.painter().setTransform(recorder.transformForBox(page, DisplayBox::CropBox));
            recorder.drawImage({drawn.rect.x, drawn.rect.y, drawn.rect.width, drawn.rect.height}, drawn.image, 1);
        }
        written.pieces = recorder.endPage();
        change.request.pages.push_back(written);
    }
    change.request.overlays = recorder.finish();
    change.request.images = recorder.images();
    return change;
}

/// Draws an opaque green rectangle on one page.
inline Change stampChange(const QByteArray &file, int page, const PageRect &rect, const QByteArray &password = {})
{
    QImage pixels(8, 8, QImage::Format_RGB32);
    pixels.fill(Qt::green);
    return drawingChange(file, {{page, rect, Image::fromPixels(pixels)}}, password);
}

inline WrittenDocument write(const Change &change)
{
    return writeDocument(change.original, change.password, change.request);
}

/// Writes into a file, which the checking program has to find clean, and answers its path.
inline QString writtenFile(const QTemporaryDir &folder, const Change &change)
{
    const WrittenDocument written = write(change);
    EXPECT_EQ(written.problem, WriteProblem::None);
    const QString path = writeFile(folder.path(), QStringLiteral("out.pdf"), written.bytes);
    EXPECT_EQ(qpdfCheck(path, QString::fromUtf8(change.password)), QString());
    return path;
}

} // namespace inkory::test
