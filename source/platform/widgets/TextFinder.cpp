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
    m_hasText.reset();
    if (!document)
        return;
    connect(document, &PDFDocument::stateChanged, this, [this] {
        m_hasText.reset();
        cancel();
    });
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

void TextFinder::search(const QString &text, const PDFView::Place &start)
{
    stop();
    m_text = text;
    m_runs.clear();
    m_hits.clear();
    m_current.reset();
    m_hitCount = 0;
    m_failedPageCount = 0;
    m_state = State::Idle;
    if (!text.trimmed().isEmpty() && m_document && m_document->pageCount() > 0 && pageSource()) {
        m_state = State::Searching;
        m_order = pageOrder();
        m_start = start;
        planPages();
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

void TextFinder::planPages()
{
    const std::size_t count = m_order.size();
    const auto first = static_cast<std::size_t>(m_document->pageAtIndex(m_start.pageIndex) ? m_start.pageIndex : 0);
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
    if (isFull())
        m_runs.clear();
    searchOn();
    if (m_current.has_value() != hadCurrent)
        Q_EMIT currentChanged();
    else
        Q_EMIT changed();
}

void TextFinder::takeHits(const FindRequest &request, const FindReply &reply)
{
    for (const FindHit &hit : reply.hits) {
        if (isFull())
            break;
        if (hit.page < request.firstPage || hit.page >= request.endPage || hit.areas.empty())
            continue;
        std::vector<FindHit> &onPage = m_hits[hit.page];
        onPage.push_back(hit);
        ++m_hitCount;
        if (!m_current && !isBeforeStart(hit))
            m_current = Current{hit.page, static_cast<int>(onPage.size()) - 1};
    }
}

bool TextFinder::isBeforeStart(const FindHit &hit) const
{
    const PDFPage *page = m_document ? m_document->pageAtIndex(m_start.pageIndex) : nullptr;
    if (!page || page->sourceIndex() != hit.page)
        return false;
    const PagePoint center = page->rectFromFileSpace(hit.areas.front()).center();
    const QTransform shown = page->shownTransform();
    return shown.map(QPointF(center.x, center.y)).y() < shown.map(QPointF(m_start.corner.x, m_start.corner.y)).y();
}

void TextFinder::finish()
{
    m_state = State::Finished;
    if (!m_current && m_hitCount > 0)
        m_current = Current{m_hits.begin()->first, 0}; // all stand above the place on its page
    if (m_hitCount == 0 && m_failedPageCount == 0 && !m_hasText)
        lookForAnyText(0);
}

void TextFinder::lookForAnyText(int page)
{
    PageSource *source = pageSource();
    if (!source)
        return;
    if (page >= static_cast<int>(m_order.size())) {
        m_hasText = false;
        Q_EMIT changed();
        return;
    }
    m_token = source->readText(page, DrawPriority::Ahead, [this, page](const Result<PageText> &text) {
        m_token = 0;
        if (!text || !text->text.trimmed().isEmpty())
            m_hasText = true; // also where it is not known: then nothing is said
        else
            lookForAnyText(page + 1);
    });
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

// From page to page, as far as the next one with a hit; that may be the same page again.
void TextFinder::moveCurrent(int step)
{
    if (!m_current)
        return;
    m_current->number += step;
    const int pageCount = static_cast<int>(m_order.size());
    int place = static_cast<int>(std::find(m_order.begin(), m_order.end(), m_current->page) - m_order.begin());
    while (m_current->number < 0 || m_current->number >= static_cast<int>(hitsOnPage(m_current->page).size())) {
        place = (place + step + pageCount) % pageCount;
        m_current->page = m_order[static_cast<std::size_t>(place)];
        m_current->number = step > 0 ? 0 : static_cast<int>(hitsOnPage(m_current->page).size()) - 1;
    }
    Q_EMIT currentChanged();
}

} // namespace inkory
