#include "platform/engine/PageReader.h"

#include "platform/engine/Characters.h"
#include "platform/engine/LibraryCalls.h"
#include "platform/engine/PageHits.h"
#include "platform/engine/TextCollector.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <utility>

#include <poppler-qt6.h>

namespace inkory
{

namespace
{

constexpr qint64 findMilliseconds = 50;

using Words = std::vector<std::unique_ptr<Poppler::TextBox>>;
using Rotation = Poppler::Page::Rotation;

// How the page has to be turned further so that most of its text is upright, if it runs up or down: the library does
// not keep the order of such lines.
Rotation turnToReadBy(const Words &words)
{
    int all = 0;
    int upward = 0;
    int downward = 0;
    for (const auto &word : words) {
        const QRectF second = word->charBoundingBox(1);
        if (second.isNull()) // a single character
            continue;
        const QPointF way = second.center() - word->charBoundingBox(0).center();
        ++all;
        upward += -way.y() > std::abs(way.x()) ? 1 : 0;
        downward += way.y() > std::abs(way.x()) ? 1 : 0;
    }
    return upward > all / 2 ? Rotation::Rotate90 : downward > all / 2 ? Rotation::Rotate270 : Rotation::Rotate0;
}

// From the page turned further to the page as shown.
QRectF turnedBack(const QRectF &box, Rotation turn, const QSizeF &shown)
{
    switch (turn) {
    case Rotation::Rotate90:
        return {box.y(), shown.height() - box.right(), box.height(), box.width()};
    case Rotation::Rotate270:
        return {shown.width() - box.bottom(), box.x(), box.height(), box.width()};
    default:
        return box;
    }
}

PageText textOf(const Poppler::Page &page, Cancellation &cancellation)
{
    const QVariant payload = QVariant::fromValue(&cancellation);
    Words words = page.textList(Rotation::Rotate0, shouldAbort, payload);
    const Rotation turn = turnToReadBy(words);
    if (turn != Rotation::Rotate0)
        words = page.textList(turn, shouldAbort, payload);
    const QSizeF shown = page.pageSizeF();
    TextCollector collector;
    constexpr qsizetype usualWord = 8; // with its space
    collector.reserve(std::ssize(words) * usualWord);
    for (std::size_t i = 0; i < words.size() && !collector.isFull(); ++i) {
        const Poppler::TextBox &word = *words[i];
        int index = 0; // the library has a box for each character, not for each unit
        forEachCharacter(word.text(), [&](char32_t character, qsizetype) {
            collector.add(character, turnedBack(word.charBoundingBox(index++), turn, shown));
        });
        const bool isLast = i + 1 == words.size() || word.nextWord() != words[i + 1].get();
        if (isLast)
            collector.endLine();
        else if (word.hasSpaceAfter())
            collector.endWord();
    }
    return collector.take();
}

// The library gives places in fractions of the crop box's sides before the page is turned, although they are counted
// on the turned page.
std::optional<double> topOf(const Poppler::LinkDestination &destination, const Poppler::Page &page)
{
    const auto orientation = page.orientation();
    const bool isSideways = orientation == Poppler::Page::Landscape || orientation == Poppler::Page::Seascape;
    // What a turned page shows at the upper edge is what its own left coordinate says.
    if (isSideways ? !destination.isChangeLeft() : !destination.isChangeTop())
        return std::nullopt;
    const QSizeF shown = page.pageSizeF();
    const double top = destination.top() * (isSideways ? shown.width() : shown.height());
    const bool isOnPage = top >= 0 && top <= std::min(shown.height(), maxPageSide);
    return isOnPage ? std::optional(top) : std::nullopt;
}

std::optional<PageDestination> destinationFrom(const Poppler::Document &document,
                                               const Poppler::LinkDestination &destination)
{
    const int index = destination.pageNumber() - 1;
    const auto page = index >= 0 && index < document.numPages() ? document.page(index) : nullptr;
    if (!page)
        return std::nullopt;
    return PageDestination{index, topOf(destination, *page)};
}

// Without the area.
std::optional<PageLink> targetOf(const Poppler::Document &document, const Poppler::Link &link)
{
    PageLink target;
    if (const auto *inside = dynamic_cast<const Poppler::LinkGoto *>(&link)) {
        if (!inside->isExternal())
            target.destination = destinationFrom(document, inside->destination());
        return target.destination ? std::optional(target) : std::nullopt;
    }
    if (const auto *outside = dynamic_cast<const Poppler::LinkBrowse *>(&link)) {
        target.address = outside->url();
        return isLinkAddress(target.address) ? std::optional(target) : std::nullopt;
    }
    return std::nullopt;
}

std::vector<PageLink> linksOf(const Poppler::Document &document, const Poppler::Page &page)
{
    const QSizeF shown = page.pageSizeF();
    std::vector<PageLink> links;
    qsizetype addressCharacters = 0;
    for (const auto &link : page.links()) {
        const QRectF part = link->linkArea();
        const QRectF whole(part.x() * shown.width(), part.y() * shown.height(), part.width() * shown.width(),
                           part.height() * shown.height());
        const QRectF area = whole.normalized() & QRectF(QPointF(), shown);
        if (!isPlace(area))
            continue;
        auto found = targetOf(document, *link);
        if (!found)
            continue;
        addressCharacters += found->address.size();
        if (std::ssize(links) == PageLink::mostPerPage || addressCharacters > PageLink::mostAddressCharacters)
            break;
        found->area = area;
        links.push_back(std::move(*found));
    }
    return links;
}

/// Walks through the outline, from each item to its children.
class OutlineReader
{
public:
    OutlineReader(const Poppler::Document &document, Cancellation &cancellation)
        : m_document(document), m_cancellation(cancellation)
    {
    }

    void add(const QVector<Poppler::OutlineItem> &items, int level)
    {
        for (const Poppler::OutlineItem &item : items) {
            if (std::ssize(m_items) == OutlineItem::mostItems || m_cancellation.check())
                return;
            m_items.push_back(itemFrom(item, level));
            m_titleCharacters += m_items.back().title.size();
            if (m_titleCharacters > OutlineItem::mostTitleCharacters) {
                m_items.pop_back();
                return;
            }
            if (level < OutlineItem::deepestLevel && item.hasChildren())
                add(item.children(), level + 1);
        }
    }

    std::vector<OutlineItem> take() { return std::move(m_items); }

private:
    OutlineItem itemFrom(const Poppler::OutlineItem &item, int level) const
    {
        OutlineItem made{
            withoutTornPairs(item.name().simplified(), OutlineItem::longestTitle), level, {}, item.isOpen()};
        const auto destination = item.externalFileName().isEmpty() ? item.destination() : nullptr;
        if (destination)
            made.destination = destinationFrom(m_document, *destination);
        return made;
    }

    const Poppler::Document &m_document;
    Cancellation &m_cancellation;
    std::vector<OutlineItem> m_items;
    qsizetype m_titleCharacters = 0;
};

} // namespace

PageText PageReader::text(int page, const IsCancelled &isCancelled) const
{
    return guarded("a page's text cannot be read", PageText(), [&] {
        Cancellation cancellation{isCancelled};
        const auto *document = m_document.library();
        const auto found = document ? document->page(page) : nullptr;
        return found ? textOf(*found, cancellation) : PageText();
    });
}

std::vector<PageLink> PageReader::links(int page) const
{
    return guarded("a page's links cannot be read", std::vector<PageLink>(), [&] {
        const auto *document = m_document.library();
        const auto found = document ? document->page(page) : nullptr;
        return found ? linksOf(*document, *found) : std::vector<PageLink>();
    });
}

std::vector<OutlineItem> PageReader::outline(const IsCancelled &isCancelled) const
{
    return guarded("the outline cannot be read", std::vector<OutlineItem>(), [&] {
        Cancellation cancellation{isCancelled};
        const auto *document = m_document.library();
        if (!document)
            return std::vector<OutlineItem>();
        OutlineReader reader(*document, cancellation);
        reader.add(document->outline(), 0);
        return reader.take();
    });
}

FindReply PageReader::find(const FindRequest &request, const IsCancelled &isCancelled) const
{
    FindReply reply;
    reply.nextPage = request.endPage;
    const FoldedText query(request.text);
    const int count = m_document.library() ? m_document.library()->numPages() : 0;
    const int end = query.isBlank() ? 0 : std::min(request.endPage, count);
    QElapsedTimer timer;
    timer.start();
    std::size_t areaCount = 0;
    for (int page = request.firstPage; page < end; ++page) {
        const bool isEnough = timer.elapsed() >= findMilliseconds || areaCount > FindReply::enoughAreas;
        if (page > request.firstPage && (isEnough || isCancelled())) {
            reply.nextPage = page;
            break;
        }
        areaCount += addHits(page, text(page, isCancelled), query, reply);
    }
    return reply;
}

} // namespace inkory
