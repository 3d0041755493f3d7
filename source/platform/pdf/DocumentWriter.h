#pragma once

#include "platform/core/Image.h"
#include "platform/core/Result.h"
#include "platform/pdf/PageGeometry.h"

#include <QByteArray>
#include <QRgb>
#include <QString>

#include <memory>
#include <vector>

namespace inkory
{

/// What the writing library says about a file.
struct FileStructure
{
    std::vector<PageGeometry> pages;
    /// Empty if the file can be written; otherwise the sentence for the person (damaged, protected against changes,
    /// ...).
    QString cannotWriteReason;
};

/// One page of the file to be written.
struct WritePage
{
    /// From 0: which page of the original file it is.
    int sourcePage = 0;
    /// The page's rotation, 0, 90, 180 or 270 degrees.
    int rotation = 0;
    /// Which page of WriteRequest::overlays lies over it, from 0; -1 for none.
    int overlayPage = -1;
    /// Where the overlay page's lower left corner stands, in page space.
    PagePoint overlayOrigin;
};

/// Everything that a save needs, as values.
struct WriteRequest
{
    /// The original file. Shared, not copied: has to stay valid during the call.
    QByteArray original;
    QByteArray password;
    /// All pages in their new order; each page of the original exactly once.
    std::vector<WritePage> pages;
    /// A PDF file with one page per stamped page: what the stamps drew, y upward from its lower left corner, 1 unit =
    /// 1/72 inch. In it, image i of `images` is a 1 x 1 picture of the colour overlayMarkerColor(i); the writer puts
    /// the real image in its place, stored once however often it is drawn. Empty when no page has an overlay.
    QByteArray overlays;
    std::vector<ImagePtr> images;
};

/// The colour that stands for image `index` (0 to 2^24 - 1) in an overlay: its number as 0xRRGGBB.
constexpr QRgb overlayMarkerColor(int index)
{
    return 0xff000000U | static_cast<QRgb>(index);
}

/// Reads a file's structure and writes files, with the writing library. Callable from any thread, also from several at
/// once.
class DocumentWriter
{
public:
    virtual ~DocumentWriter() = default;

    virtual FileStructure readStructure(const QByteArray &file, const QByteArray &password) = 0;

    /// The whole new file. Every overlay becomes one form XObject drawn after the page's content under the page's
    /// initial graphics state; everything else of the file stays as it was, encryption included (of the older of
    /// two ciphers in one kind of file the library makes the newer one; passwords and permissions stay). The result has
    /// been read again and has as many pages as asked for. Fails with a sentence for the person.
    virtual Result<QByteArray> write(const WriteRequest &request) = 0;
};

std::unique_ptr<DocumentWriter> makeDocumentWriter();

} // namespace inkory
