#include "platform/widgets/TextFinder.h"

#include <algorithm>
#include <utility>

namespace inkory
{

TextFinder::TextFinder(QObject *parent) : QObject(parent) {}

TextFinder::~TextFinder()
{
    stop();
}

void TextFinder::setDocument(PDFDocument *document, PageSource *source)
{
    cancel();
    if (m_document)
        m_document->disconnect(this);
    m_document = document;
    m_givenSource = source;
    if (document)
        connect(document, &PDFDocument::stateChanged, this, &TextFinder::cancel);
}

PageSource *TextFinder::pageSource() const
{
    return m_givenSource || !m_document ? m_givenSource : m_document->pageSource();
}

void TextFinder::stop()
{
    PageSource *source = pageSource();
    if (source && m_token != 0)
        source->cancel(m_token);
    m_token = 0;
}

void TextFinder::cancel()
{
    search({}, {});
}

void TextFinder::resume()
{
    if (m_state == State::Searching && m_token == 0)
        searchOn();
}

void TextFinder::search(const QString &text, const PDFView::Place &start)
{
    stop();
    m_text = text;
    m_runs.clear();
    m_hits.clear();
    m_current.reset();
    m_hitCount = 0;
    m_failedPageCount = 0;
    m_hasText = m_isCut = m_hasMetStart = false;
    m_state = State::Idle;
    if (!text.trimmed().isEmpty() && m_document && m_document->pageCount() > 0 && pageSource()) {
        m_state = State::Searching;
        m_order = pageOrder();
        planPages(start);
        searchOn();
    }
    Q_EMIT changed();
}

std::vector<int> TextFinder::pageOrder() const
{
    std::vector<int> order;
    const int count = m_document ? m_document->pageCount() : 0;
    order.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        order.push_back(m_document->pageAtIndex(i)->sourceIndex());
    return order;
}

void TextFinder::notePageOrder()
{
    if (m_state == State::Idle)
        return;
    std::vector<int> order = pageOrder();
    if (std::exchange(m_order, order) != order)
        Q_EMIT changed();
}

void TextFinder::planPages(const PDFView::Place &start)
{
    const std::size_t count = m_order.size();
    const auto first = static_cast<std::size_t>(m_document->pageAtIndex(start.pageIndex) ? start.pageIndex : 0);
    m_startPage = m_order[first];
    m_startPoint = start.corner;
    for (std::size_t i = 0; i < count; ++i) {
        const int page = m_order[(first + i) % count];
        if (!m_runs.empty() && m_runs.back().end == page)
            ++m_runs.back().end;
        else
            m_runs.push_back({page, page + 1});
    }
}

void TextFinder::searchOn()
{
    PageSource *source = pageSource();
    if (!source || m_runs.empty()) {
        finish();
        return;
    }
    const FindRequest request{m_text, m_runs.front().first, m_runs.front().end};
    m_token = source->find(request, [this, request](const Result<FindReply> &reply) { answered(request, reply); });
}

void TextFinder::answered(const FindRequest &request, const Result<FindReply> &reply)
{
    m_token = 0;
    const bool hadCurrent = m_current.has_value();
    int nextPage = request.firstPage + 1;
    if (reply) {
        takeHits(request, *reply);
        nextPage = std::clamp(reply->nextPage, nextPage, request.endPage);
    } else {
        ++m_failedPageCount;
    }
    m_runs.front().first = nextPage;
    if (nextPage >= request.endPage)
        m_runs.pop_front();
    if (m_hitCount >= mostHits) {
        m_isCut = m_isCut || !m_runs.empty();
        m_runs.clear();
    }
    searchOn();
    if (m_current.has_value() != hadCurrent)
        Q_EMIT currentChanged();
    else
        Q_EMIT changed();
}

void TextFinder::takeHits(const FindRequest &request, const FindReply &reply)
{
    m_hasText = m_hasText || reply.hasText;
    m_isCut = m_isCut || reply.isCut;
    const PDFPage *startPage = pageOfStart();
    for (const FindHit &hit : reply.hits) {
        if (m_hitCount >= mostHits) {
            m_isCut = true;
            break;
        }
        if (hit.page < request.firstPage || hit.page >= request.endPage || hit.areas.empty())
            continue;
        m_hits[hit.page].push_back(hit);
        ++m_hitCount;
        chooseCurrent(hit, startPage);
    }
}

const PDFPage *TextFinder::pageOfStart() const
{
    const auto place = std::find(m_order.begin(), m_order.end(), m_startPage);
    return m_document ? m_document->pageAtIndex(static_cast<int>(place - m_order.begin())) : nullptr;
}

// Whatever is after the place, until it turns out that there is a hit at the place itself.
void TextFinder::chooseCurrent(const FindHit &added, const PDFPage *startPage)
{
    bool isHere = false;
    bool isAfter = true;
    if (startPage && startPage->sourceIndex() == added.page) {
        const PageRect area = startPage->rectFromFileSpace(added.areas.front());
        const QTransform shown = startPage->shownTransform();
        const auto height = [&shown](const PagePoint &point) { return shown.map(QPointF(point.x, point.y)).y(); };
        isHere = !m_hasMetStart && area.contains(m_startPoint);
        isAfter = height(area.center()) >= height(m_startPoint);
    }
    m_hasMetStart = m_hasMetStart || isHere;
    if (isHere || (!m_current && isAfter))
        m_current = Current{added.page, static_cast<int>(m_hits[added.page].size()) - 1};
}

void TextFinder::finish()
{
    m_state = State::Finished;
    if (!m_current && m_hitCount > 0)
        m_current = Current{m_hits.begin()->first, 0}; // all stand above the place on its page
}

const std::vector<FindHit> &TextFinder::hitsOnPage(int page) const
{
    static const std::vector<FindHit> none;
    const auto found = m_hits.find(page);
    return found != m_hits.end() ? found->second : none;
}

std::vector<FindHit> TextFinder::hits() const
{
    std::vector<FindHit> all;
    all.reserve(static_cast<std::size_t>(m_hitCount));
    for (const int page : m_order) {
        const std::vector<FindHit> &onPage = hitsOnPage(page);
        all.insert(all.end(), onPage.begin(), onPage.end());
    }
    return all;
}

const FindHit *TextFinder::currentHit() const
{
    return m_current ? &hitsOnPage(m_current->page)[static_cast<std::size_t>(m_current->number)] : nullptr;
}

int TextFinder::currentIndex() const
{
    if (!m_current)
        return -1;
    int index = m_current->number;
    for (const int page : m_order) {
        if (page == m_current->page)
            break;
        index += static_cast<int>(hitsOnPage(page).size());
    }
    return index;
}

void TextFinder::goToNext()
{
    moveCurrent(1);
}

void TextFinder::goToPrevious()
{
    moveCurrent(-1);
}

// From page to page, as far as the next one with a hit; that may be the same page again. Pages can have gone with
// their hits.
void TextFinder::moveCurrent(int step)
{
    if (!m_current)
        return;
    const auto countOn = [this](int page) { return static_cast<int>(hitsOnPage(page).size()); };
    const int pageCount = static_cast<int>(m_order.size());
    Current next{m_current->page, m_current->number + step};
    int place = static_cast<int>(std::find(m_order.begin(), m_order.end(), next.page) - m_order.begin());
    bool isThere = place < pageCount && next.number >= 0 && next.number < countOn(next.page);
    for (int tried = 0; tried < pageCount && !isThere; ++tried) {
        place = (place + step + pageCount) % pageCount;
        next.page = m_order[static_cast<std::size_t>(place)];
        next.number = step > 0 ? 0 : countOn(next.page) - 1;
        isThere = countOn(next.page) > 0;
    }
    if (!isThere)
        return;
    m_current = next;
    Q_EMIT currentChanged();
}

} // namespace inkory
