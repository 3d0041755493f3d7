#include "platform/widgets/PageTexts.h"

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

// A page that takes all the time that it may, or its helper, does so again with each try.
constexpr int mostRetries = 3;

} // namespace

PageTexts::PageTexts(Source source, QObject *parent) : QObject(parent), m_source(std::move(source)) {}

PageTexts::~PageTexts()
{
    clear();
}

void PageTexts::clear()
{
    for (auto &[index, page] : m_pages) {
        cancel(page.textRequest);
        cancel(page.linksRequest);
    }
    m_pages.clear();
}

void PageTexts::cancel(Request &request)
{
    PageSource *source = m_source();
    if (source && request.token != 0)
        source->cancel(request.token);
    request = {};
}

// Whether the request is to be made: there is none yet, or it was less urgent.
bool PageTexts::isToAsk(Request &request, DrawPriority priority)
{
    if (request.token != 0 && request.priority <= priority)
        return false;
    cancel(request);
    return true;
}

void PageTexts::fetch(int page, Detail detail, DrawPriority priority)
{
    PageSource *source = m_source();
    if (!source)
        return;
    Page &kept = m_pages[page];
    const bool isEverything = detail == Detail::Everything;
    kept.wantsGeometry = kept.wantsGeometry || isEverything;
    const bool isTextKnown = kept.geometry || (kept.text && !kept.wantsGeometry);
    if (!isTextKnown && isToAsk(kept.textRequest, priority)) {
        const auto done = [this, page](const Result<PageText> &text) { keepText(page, text); };
        kept.textRequest = {source->readText(page, priority, done), priority};
    }
    if (isEverything && !kept.links && isToAsk(kept.linksRequest, priority)) {
        const auto done = [this, page](const Result<std::vector<PageLink>> &links) { keepLinks(page, links); };
        kept.linksRequest = {source->readLinks(page, priority, done), priority};
    }
}

void PageTexts::keepText(int page, const Result<PageText> &text)
{
    const auto found = m_pages.find(page);
    if (found == m_pages.end())
        return;
    Page &kept = found->second;
    kept.textRequest = {};
    kept.hasTextFailed = !text;
    kept.isWhole = text && !text->isCut;
    PageText known = text ? *text : PageText();
    if (kept.wantsGeometry) {
        kept.geometry.emplace(std::move(known));
        kept.text.reset();
    } else {
        kept.text = std::move(known.text);
    }
    Q_EMIT textArrived(page);
}

void PageTexts::keepLinks(int page, const Result<std::vector<PageLink>> &links)
{
    const auto found = m_pages.find(page);
    if (found == m_pages.end())
        return;
    found->second.linksRequest = {};
    found->second.haveLinksFailed = !links;
    found->second.links = links ? *links : std::vector<PageLink>();
    Q_EMIT linksArrived(page);
}

void PageTexts::forgetFailed(int page)
{
    const auto found = m_pages.find(page);
    if (found == m_pages.end())
        return;
    Page &kept = found->second;
    if ((!kept.hasTextFailed && !kept.haveLinksFailed) || kept.retries++ >= mostRetries)
        return;
    if (std::exchange(kept.hasTextFailed, false)) {
        kept.geometry.reset();
        kept.text.reset();
    }
    if (std::exchange(kept.haveLinksFailed, false))
        kept.links.reset();
}

bool PageTexts::isWhole(int page) const
{
    const auto found = m_pages.find(page);
    return found != m_pages.end() && found->second.isWhole;
}

void PageTexts::forgetAllBut(const std::set<int> &near, const std::vector<int> &textsOnly)
{
    const std::set<int> texts(textsOnly.begin(), textsOnly.end());
    for (auto entry = m_pages.begin(); entry != m_pages.end();) {
        auto &[index, page] = *entry;
        const bool isUrgent = page.textRequest.token != 0 && page.textRequest.priority == DrawPriority::Visible;
        if (isUrgent || near.contains(index)) {
            ++entry;
            continue;
        }
        cancel(page.linksRequest);
        if (texts.contains(index)) {
            if (page.geometry)
                page.text = page.geometry->text();
            page.geometry.reset();
            page.links.reset();
            page.wantsGeometry = false;
            ++entry;
        } else {
            cancel(page.textRequest);
            entry = m_pages.erase(entry);
        }
    }
}

const QString *PageTexts::text(int page) const
{
    const auto found = m_pages.find(page);
    if (found == m_pages.end())
        return nullptr;
    if (found->second.geometry)
        return &found->second.geometry->text();
    return found->second.text ? &*found->second.text : nullptr;
}

const TextGeometry *PageTexts::geometry(int page) const
{
    const auto found = m_pages.find(page);
    return found != m_pages.end() && found->second.geometry ? &*found->second.geometry : nullptr;
}

const std::vector<PageLink> &PageTexts::links(int page) const
{
    static const std::vector<PageLink> none;
    const auto found = m_pages.find(page);
    return found != m_pages.end() && found->second.links ? *found->second.links : none;
}

} // namespace inkory
