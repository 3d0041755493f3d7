#include "platform/widgets/PageImageStore.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PDFPage.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

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
// What all images may take together, apart from the ones being shown.
constexpr qint64 maxBytes = 96LL * 1024 * 1024;

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
    if (m_document && m_document->pageSource()) {
        for (const auto &[key, request] : m_requests)
            m_document->pageSource()->cancel(request.token);
    }
    m_requests.clear();
    m_held.clear();
    m_document = document;
}

PageImageStore::Key PageImageStore::keyOf(const PDFPage &page)
{
    return {page.sourceIndex(), page.extraQuarterTurns()};
}

const PageImageStore::Piece *PageImageStore::piece(const PDFPage &page, double scale, const QRect &needed)
{
    const Key key = keyOf(page);
    const auto held = m_held.find(key);
    if (held != m_held.end()) {
        held->second.lastUse = m_frame;
        if (shows(held->second.piece, scale, needed))
            return &held->second.piece;
    }
    if (hasFailed(page, scale, needed))
        return nullptr;
    const auto requested = m_requests.find(key);
    if (requested != m_requests.end() && qFuzzyCompare(requested->second.scale, scale) &&
        requested->second.region.contains(needed)) {
        requested->second.wanted = true;
    } else {
        request(key, scale, regionToDraw(page, scale, needed));
    }
    return nullptr;
}

const PageImageStore::Piece *PageImageStore::standIn(const PDFPage &page) const
{
    const auto held = m_held.find(keyOf(page));
    return held != m_held.end() && !held->second.piece.image.isNull() ? &held->second.piece : nullptr;
}

bool PageImageStore::hasFailed(const PDFPage &page, double scale, const QRect &needed) const
{
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

QRect PageImageStore::regionToDraw(const PDFPage &page, double scale, const QRect &needed) const
{
    const QSizeF size = page.shownSize() * scale;
    const QRect whole(0, 0, qCeil(size.width()), qCeil(size.height()));
    if (static_cast<qint64>(whole.width()) * whole.height() <= maxPixelsOfWholePage && whole.width() <= maxImageSide &&
        whole.height() <= maxImageSide)
        return whole;
    return needed.marginsAdded({marginOfPart, marginOfPart, marginOfPart, marginOfPart}) & whole;
}

void PageImageStore::request(const Key &key, double scale, const QRect &region)
{
    PageSource *source = m_document ? m_document->pageSource() : nullptr;
    if (!source || region.isEmpty())
        return;
    const auto former = m_requests.find(key);
    if (former != m_requests.end())
        source->cancel(former->second.token);
    const DrawRequest wanted{key.sourceIndex, key.extraQuarterTurns, scale, region};
    const DrawToken token =
        source->draw(wanted, m_priority, [this, key](const Result<QImage> &image) { arrived(key, image); });
    m_requests[key] = {token, scale, region, true};
}

void PageImageStore::arrived(const Key &key, const Result<QImage> &image)
{
    const auto request = m_requests.find(key);
    if (request == m_requests.end())
        return;
    Held &held = m_held[key];
    held.lastUse = m_frame;
    if (image) {
        held.piece = {request->second.scale, request->second.region, *image};
        held.failedScale = 0;
    } else {
        held.failedScale = request->second.scale;
        held.failedRegion = request->second.region;
    }
    m_requests.erase(request);
    dropLeastUsed();
    Q_EMIT pieceArrived(key.sourceIndex);
}

void PageImageStore::cancelStaleRequests()
{
    ++m_frame;
    PageSource *source = m_document ? m_document->pageSource() : nullptr;
    for (auto request = m_requests.begin(); request != m_requests.end();) {
        if (std::exchange(request->second.wanted, false)) {
            ++request;
            continue;
        }
        if (source)
            source->cancel(request->second.token);
        request = m_requests.erase(request);
    }
}

void PageImageStore::dropLeastUsed()
{
    qint64 bytes = 0;
    for (const auto &[key, held] : m_held)
        bytes += held.piece.image.sizeInBytes();
    while (bytes > maxBytes) {
        const auto oldest = std::min_element(m_held.begin(), m_held.end(), [](const auto &a, const auto &b) {
            return a.second.lastUse < b.second.lastUse;
        });
        if (oldest->second.lastUse + 1 >= m_frame)
            return; // shown in the last frame: it would be asked for again at once
        bytes -= oldest->second.piece.image.sizeInBytes();
        m_held.erase(oldest);
    }
}

} // namespace inkory
