#pragma once

#include "platform/core/Image.h"
#include "platform/pdf/OverlayPiece.h"
#include "platform/pdf/PageGeometry.h"

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QRgb>
#include <QSize>
#include <QSizeF>

#include <cstdint>
#include <vector>

// What crosses between the window's process and the engine's process, as values. No text that a person reads is among
// them: the window chooses its sentences itself.

namespace inkory
{

/// More pages than this are not opened.
constexpr int maxPageCount = 100'000;
/// In points; what is larger is cut off.
constexpr double maxPageSide = 14'400;
/// A box that is smaller has no area. Whoever divides by a side gets a number that can be used.
constexpr double minPageSide = 1e-3;
/// Coordinates in files that are farther from 0 are taken for damage.
constexpr double farthest = 2e9;

/// Bytes of a document, also of one that is to be written.
constexpr std::int64_t maxFileSize = 2'147'483'647;

/// Pixels of a decoded image file: larger ones are scaled down.
constexpr std::int64_t maxImagePixels = 12'500'000;

/// Address space in bytes that a helper has for itself; what it is given to map comes on top.
constexpr std::int64_t helperAddressSpace = 1536LL << 20;

enum class OpenProblem : std::int32_t {
    None,
    PasswordNeeded,
    PasswordWrong,
    ProtectionUnknown,
    NotPdf,
    Damaged,
    NoPages,
    TooManyPages,
    Last = TooManyPages
};

/// What opening a file for drawing found.
struct OpenReply
{
    OpenProblem problem = OpenProblem::Damaged;
    /// Whether the pages were found only after the file had been repaired.
    bool isRepaired = false;
    /// At most maxPageCount.
    int pageCount = 0;
    /// The first page's size as displayed, in points: between 1 and maxPageSide a side, whatever the file says.
    QSizeF firstPageSize;
};

/// One region of one page as an image.
struct DrawRequest
{
    /// From 0, in the file's own order.
    int page = 0;
    /// How far the page is turned beyond what the file says, in quarter turns clockwise, 0 to 3.
    int extraQuarterTurns = 0;
    /// Pixels per point.
    double scale = 1;
    /// The part to draw, in pixels of the whole shown page at that scale: origin upper left, y downward. What lies
    /// outside the page is white.
    QRect region;

    bool operator==(const DrawRequest &) const = default;
};

/// Whether the request can be drawn at all: a region that is not empty, of at most 64 megapixels and 32,767 pixels a
/// side, at a scale above 0 and up to 1000.
bool isDrawable(const DrawRequest &request);

enum class WriteProblem : std::int32_t {
    None,
    Damaged,
    ProtectionUnknown,
    ChangesForbidden,
    NotBuilt,
    Last = NotBuilt
};

/// What the writing library says about a file.
struct FileStructure
{
    /// Why the file cannot be written.
    WriteProblem problem = WriteProblem::None;
    /// Whether the library had to repair the file to read it.
    bool isRepaired = false;
    /// Also known for some files that cannot be written.
    std::vector<PageGeometry> pages;
};

/// One page of the file to be written.
struct WritePage
{
    /// From 0: which page of the original file it is.
    int sourcePage = 0;
    /// The page's rotation, 0, 90, 180 or 270 degrees.
    int rotation = 0;
    /// What lies over it, from the lowest to the uppermost; none: nothing. All of one size.
    std::vector<OverlayPiece> pieces;
    /// Where the lower left corner of the pieces stands, in page space.
    PagePoint overlayOrigin;

    bool operator==(const WritePage &) const = default;
};

/// How a document is to be changed.
struct WriteRequest
{
    /// All pages in their new order; each page of the original exactly once.
    std::vector<WritePage> pages;
    /// A PDF file with one page for each piece: what the stamps drew, y upward from its lower left corner, 1 unit =
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

enum class ImageProblem : std::int32_t { None, UnknownKind, CutOff, TooLarge, Damaged, Last = Damaged };

/// What looking at an image file, and decoding it, found.
struct ImageReply
{
    ImageProblem problem = ImageProblem::Damaged;
    /// Of the pixels; with the problem TooLarge, what the file claims.
    QSize pixelSize;
    /// Grayscale8, RGB32 or ARGB32.
    QImage::Format format = QImage::Format_Invalid;
    /// In points.
    QSizeF size;
    /// The bytes of Image::jpegBytes(), 0 for none.
    qint64 jpegSize = 0;
};

} // namespace inkory
