#include "platform/widgets/PageImageStore.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PDFPage.h"
#include "platform/widgets/PageLayout.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>
#include <utility>

namespace inkory
{

namespace
{

// Above this many pixels only a part of a page is drawn: about a 4K screen full.
constexpr qint64 maxPixelsOfWholePage = 9'000'000;
// Images longer than this cannot be drawn.
constexpr int maxImageSide = 32'767;
// How much more than needed is drawn on each side then, so that a short scroll needs no new image.
constexpr int marginOfPart = 256;
// What all images may take together, apart from the ones being shown. Thumbnails are small and many.
constexpr qint64 maxBytes = 96LL * 1024 * 1024;
constexpr qint64 maxThumbnailBytes = 24LL * 1024 * 1024;

qint64 maxBytesFor(DrawPriority priority)
{
    return priority == DrawPriority::Thumbnail ? maxThumbnailBytes : maxBytes;
}

QRect wholePage(const PDFPage &page, double scale)
{
    const QSizeF size = page.shownSize() * scale;
    return {0, 0, static_cast<int>(PageLayout::wholePixels(size.width())),
            static_cast<int>(PageLayout::wholePixels(size.height()))};
}

bool isOneImage(const QRect &page)
{
    return static_cast<qint64>(page.width()) * page.height() <= maxPixelsOfWholePage && page.width() <= maxImageSide &&
           page.height() <= maxImageSide;
}

bool shows(const PageImageStore::Piece &piece, double scale, const QRect &needed)
{
    return qFuzzyCompare(piece.scale, scale) && piece.region.contains(needed);
}

} // namespace

PageImageStore::PageImageStore(DrawPriority priority, QObject *parent) : QObject(parent), m_priority(priority) {}

PageImageStore::~PageImageStore()
{
    setDocument(nullptr);
}

void PageImageStore::setDocument(PDFDocument *document)
{
    for (const auto &[key, request] : m_requests)
        cancel(request);
    m_requests.clear();
    m_held.clear();
    m_shown = m_asked = {};
    m_document = document;
}

void PageImageStore::Range::include(int index)
{
    first = last < first ? index : std::min(first, index);
    last = std::max(last, index);
}

int PageImageStore::Range::distanceTo(int index) const
{
    return std::max({first - index, index - last, 0});
}

PageImageStore::Key PageImageStore::keyOf(const PDFPage &page)
{
    return {page.sourceIndex(), page.extraQuarterTurns()};
}

qint64 PageImageStore::bytesOf(const Held &held)
{
    return held.piece.image.sizeInBytes() + held.whole.image.sizeInBytes();
}

qint64 PageImageStore::heldBytes() const
{
    qint64 bytes = 0;
    for (const auto &[key, held] : m_held)
        bytes += bytesOf(held);
    return bytes;
}

const PageImageStore::Piece *PageImageStore::piece(const PDFPage &page, double scale, const QRect &wanted,
                                                   Missing missing)
{
    const QRect needed = wanted & wholePage(page, scale);
    m_asked.include(page.index());
    const auto held = m_held.find(keyOf(page));
    if (held != m_held.end()) {
        held->second.lastUse = m_frame;
        held->second.pageIndex = page.index();
        if (shows(held->second.piece, scale, needed))
            return &held->second.piece;
        if (shows(held->second.whole, scale, needed)) {
            held->second.piece = std::exchange(held->second.whole, {});
            return &held->second.piece;
        }
    }
    if (missing == Missing::Request && !needed.isEmpty() && !hasFailed(page, scale, needed))
        request(page, scale, needed);
    return nullptr;
}

const PageImageStore::Piece *PageImageStore::standIn(const PDFPage &page) const
{
    const auto held = m_held.find(keyOf(page));
    return held != m_held.end() && !held->second.piece.image.isNull() ? &held->second.piece : nullptr;
}

const PageImageStore::Piece *PageImageStore::backdrop(const PDFPage &page) const
{
    const auto held = m_held.find(keyOf(page));
    return held != m_held.end() && !held->second.whole.image.isNull() ? &held->second.whole : nullptr;
}

bool PageImageStore::hasFailed(const PDFPage &page, double scale, const QRect &wanted) const
{
    const QRect needed = wanted & wholePage(page, scale);
    const auto held = m_held.find(keyOf(page));
    return held != m_held.end() && !shows(held->second.piece, scale, needed) &&
           qFuzzyCompare(held->second.failedScale, scale) && held->second.failedRegion.contains(needed);
}

void PageImageStore::retry(const PDFPage &page)
{
    for (auto &[key, held] : m_held) {
        if (key.sourceIndex == page.sourceIndex())
            held.failedScale = 0;
    }
}

QRect PageImageStore::regionToDraw(const PDFPage &page, double scale, const QRect &needed)
{
    const QRect whole = wholePage(page, scale);
    if (isOneImage(whole))
        return whole;
    return needed.marginsAdded({marginOfPart, marginOfPart, marginOfPart, marginOfPart}) & whole;
}

DrawToken PageImageStore::draw(const PDFPage &page, double scale, const QRect &region, DrawPriority priority)
{
    const Key key = keyOf(page);
    m_held[key].pageIndex = page.index();
    return m_document->pageSource()->draw({key.sourceIndex, key.extraQuarterTurns, scale, region}, priority,
                                          [this, key, isPart = region != wholePage(page, scale)](
                                              const Result<QImage> &image) { arrived(key, isPart, image); });
}

void PageImageStore::request(const PDFPage &page, double scale, const QRect &needed)
{
    const auto former = m_requests.find(keyOf(page));
    const bool isRequested = former != m_requests.end() && qFuzzyCompare(former->second.scale, scale) &&
                             former->second.region.contains(needed);
    if (isRequested && former->second.token != 0) {
        former->second.wanted = true;
        return;
    }
    const QRect region = isRequested ? former->second.region : regionToDraw(page, scale, needed);
    if (!m_document || !m_document->pageSource() || region.isEmpty())
        return;
    if (former != m_requests.end() && !isRequested)
        cancel(former->second);
    const DrawToken aheadToken = isRequested ? former->second.aheadToken : 0; // it may be nearly done
    m_requests[keyOf(page)] = {draw(page, scale, region, m_priority), aheadToken, scale, region, true};
}

void PageImageStore::drawAhead(const std::vector<const PDFPage *> &pages, double scale)
{
    if (!m_document || !m_document->pageSource())
        return;
    std::erase_if(m_requests, [&](const auto &entry) {
        const bool isStale = entry.second.token == 0 && std::none_of(pages.begin(), pages.end(), [&](const auto *page) {
                                 return keyOf(*page) == entry.first && qFuzzyCompare(entry.second.scale, scale);
                             });
        if (isStale)
            cancel(entry.second);
        return isStale;
    });
    qint64 bytes = 0;
    for (const auto &[key, held] : m_held)
        bytes += isShown(held) ? bytesOf(held) : 0;
    for (const PDFPage *page : pages) {
        const QRect whole = wholePage(*page, scale);
        bytes += static_cast<qint64>(whole.width()) * whole.height() * static_cast<qint64>(sizeof(QRgb));
        const auto held = m_held.find(keyOf(*page));
        const bool isHeld = held != m_held.end() && shows(held->second.piece, scale, whole);
        if (!isOneImage(whole) || bytes > maxBytesFor(m_priority) || isHeld || hasFailed(*page, scale, whole) ||
            m_requests.contains(keyOf(*page)))
            continue;
        m_requests[keyOf(*page)] = {0, draw(*page, scale, whole, DrawPriority::Idle), scale, whole, false};
    }
}

void PageImageStore::cancel(const Request &request)
{
    if (!m_document || !m_document->pageSource())
        return;
    m_document->pageSource()->cancel(request.token);
    m_document->pageSource()->cancel(request.aheadToken);
}

void PageImageStore::arrived(const Key &key, bool isPart, const Result<QImage> &image)
{
    const auto found = m_requests.find(key);
    if (found == m_requests.end())
        return;
    const Request request = m_requests.extract(found).mapped();
    cancel(request); // where it was being drawn twice
    Held &held = m_held[key];
    if (request.token != 0)
        held.lastUse = m_frame;
    if (image) {
        keep(held, {request.scale, request.region, *image, isPart});
    } else {
        held.failedScale = request.scale;
        held.failedRegion = request.region;
    }
    dropFarthest();
    Q_EMIT pieceArrived(key.sourceIndex);
}

void PageImageStore::keep(Held &held, const Piece &arrival)
{
    if (!arrival.isPart)
        held.whole = {};
    else if (!held.piece.isPart && !held.piece.image.isNull())
        held.whole = held.piece;
    held.piece = arrival;
    held.failedScale = 0;
}

void PageImageStore::cancelStaleRequests()
{
    ++m_frame;
    m_shown = std::exchange(m_asked, {});
    const bool isSomethingMissing =
        std::any_of(m_requests.begin(), m_requests.end(), [](const auto &entry) { return entry.second.wanted; });
    for (auto request = m_requests.begin(); request != m_requests.end();) {
        const bool wasWanted = std::exchange(request->second.wanted, false);
        const bool isStale = request->second.token == 0 ? isSomethingMissing : !wasWanted;
        if (isStale)
            cancel(request->second);
        request = isStale ? m_requests.erase(request) : std::next(request);
    }
}

void PageImageStore::dropFarthest()
{
    const auto rank = [this](const Held &held) {
        return std::make_tuple(!isShown(held), m_shown.distanceTo(held.pageIndex), m_frame - held.lastUse);
    };
    for (qint64 bytes = heldBytes(); bytes > maxBytesFor(m_priority);) {
        const auto last = std::max_element(m_held.begin(), m_held.end(), [&](const auto &a, const auto &b) {
            return rank(a.second) < rank(b.second);
        });
        if (isShown(last->second))
            return; // it would be asked for again at once
        bytes -= bytesOf(last->second);
        m_held.erase(last);
    }
}

} // namespace inkory
