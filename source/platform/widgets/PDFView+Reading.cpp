// What a person reads in the view: text that is selected, what a search found, places gone to and come from.

#include "platform/widgets/PDFView+Reading.h"

#include "platform/widgets/Highlight.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace inkory
{

namespace
{

// Pages are read when they stand still: not those that are only scrolled past.
constexpr int fetchDelayMilliseconds = 60;
// How many pages before and after the visible ones stay known.
constexpr int pagesKeptAround = 4;
// How far a mark reaches beyond the view so that its edge is not seen there.
constexpr int edgeOfMark = 4;

// Light, as pages are white in every theme, and what is on them is to stay readable.
QColor selectionColor(const QPalette &palette)
{
    constexpr int lightness = 205; // of 255
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    return QColor::fromHsl(std::max(0, highlight.hslHue()), highlight.hslSaturation(), lightness);
}

// Edges on whole pixels: neighbours neither overlap nor leave a gap.
QRect onPixels(const QRectF &rect)
{
    const QPoint corner(qRound(rect.left()), qRound(rect.top()));
    return {corner,
            QSize(std::max(1, qRound(rect.right()) - corner.x()), std::max(1, qRound(rect.bottom()) - corner.y()))};
}

template <class LeftPlace> bool areSame(const LeftPlace &a, const LeftPlace &b)
{
    constexpr double tolerance = 0.5; // points
    return a.sourceIndex == b.sourceIndex && std::abs(a.corner.x - b.corner.x) < tolerance &&
           std::abs(a.corner.y - b.corner.y) < tolerance;
}

} // namespace

PDFView::Reading::Reading(PDFView &view)
    : texts([&view] { return view.m_document ? view.m_document->pageSource() : nullptr; }),
      selecting(
          texts,
          [&view](int sourceIndex) {
              const PDFPage *page = view.pageForSourceIndex(sourceIndex);
              return page ? page->index() : -1;
          },
          [&view](int place) {
              const PDFPage *page = view.m_document ? view.m_document->pageAtIndex(place) : nullptr;
              return page ? page->sourceIndex() : -1;
          }),
      edgeScroll(view)
{
    fetchTimer.setSingleShot(true);
    fetchTimer.setInterval(fetchDelayMilliseconds);
}

void PDFView::setUpReading()
{
    m_reading = std::make_unique<Reading>(*this);
    connect(&m_reading->fetchTimer, &QTimer::timeout, this, &PDFView::fetchTexts);
    connect(&m_reading->selecting, &TextSelecting::changed, this, [this] {
        viewport()->update();
        Q_EMIT textSelectionChanged();
    });
    connect(&m_reading->selecting, &TextSelecting::copied, this, &PDFView::selectionCopied);
    // A frame brings the pointer's shape up to date.
    const auto nextFrame = [this] {
        if (viewport()->underMouse())
            viewport()->update();
    };
    connect(&m_reading->texts, &PageTexts::textArrived, this, nextFrame);
    connect(&m_reading->texts, &PageTexts::linksArrived, this, nextFrame);
    connect(this, &PDFView::pageAppearanceChanged, this, [this](const PDFPage *page) {
        if (!page)
            m_reading->selecting.fetchPages();
    });
    connect(this, &PDFView::contentViewBoundsChanged, this, [this] {
        if (m_reading->press && m_reading->press->isSelecting)
            selectTo(convertPointFromOverlay(m_reading->press->last));
    });
}

void PDFView::forgetReading()
{
    m_reading->press.reset();
    m_reading->edgeScroll.stop();
    m_reading->selecting.clear();
    m_reading->texts.clear();
    m_reading->marks = {};
    m_reading->history = {};
    m_reading->placesOfSources.clear();
    Q_EMIT historyChanged();
}

void PDFView::paintReading(QPainter &painter, int pageIndex)
{
    const PDFPage &page = *m_document->pageAtIndex(pageIndex);
    if (!m_reading->texts.geometry(page.sourceIndex()) && !m_reading->fetchTimer.isActive())
        m_reading->fetchTimer.start();
    const QTransform transform = widgetTransform(pageIndex);
    const auto inWidget = [&](const QRectF &area) { return transform.mapRect(toQRectF(page.rectFromFileSpace(area))); };
    const QRectF nearView(viewport()->rect().adjusted(-edgeOfMark, -edgeOfMark, edgeOfMark, edgeOfMark));
    const QRectF clip = pageRectInWidget(pageIndex) & nearView;
    m_reading->marks.paint(painter, page.sourceIndex(), clip, inWidget);
    const QRegion current = m_reading->marks.currentRegion(page.sourceIndex(), clip, inWidget);
    painter.save();
    if (!current.isEmpty())
        painter.setClipRegion(QRegion(clip.toAlignedRect()) - current, Qt::IntersectClip);
    // One by one: as a region, many scattered places would take time by their square.
    for (const QRectF &area : m_reading->selecting.areasOn(page.sourceIndex())) {
        const QRectF place = inWidget(area) & clip;
        if (!place.isEmpty())
            paintHighlight(painter, onPixels(place), selectionColor(palette()));
    }
    painter.restore();
}

void PDFView::fetchTexts()
{
    const std::vector<int> visible = visiblePages();
    if (visible.empty())
        return;
    std::set<int> near;
    for (int i = visible.front() - pagesKeptAround; i <= visible.back() + pagesKeptAround; ++i) {
        if (const PDFPage *page = m_document->pageAtIndex(i))
            near.insert(page->sourceIndex());
    }
    m_reading->texts.forgetAllBut(near, m_reading->selecting.pages());
    for (const int i : visible) {
        const int page = m_document->pageAtIndex(i)->sourceIndex();
        m_reading->texts.fetch(page, PageTexts::Detail::Everything, DrawPriority::Ahead);
    }
}

bool PDFView::hasTextSelection() const
{
    return m_reading->selecting.hasSelection();
}

QString PDFView::selectedText(qsizetype most) const
{
    return m_reading->selecting.selectedText(most);
}

std::optional<PDFView::Place> PDFView::selectedPlace() const
{
    for (const int sourceIndex : m_reading->selecting.pages()) {
        const PDFPage *page = pageForSourceIndex(sourceIndex);
        const std::vector<QRectF> areas = m_reading->selecting.areasOn(sourceIndex);
        if (page && !areas.empty())
            return Place{page->index(), page->rectFromFileSpace(areas.front()).center()};
    }
    return std::nullopt;
}

void PDFView::copySelection()
{
    m_reading->selecting.copy();
}

void PDFView::selectAllText()
{
    if (const PDFPage *page = currentPage())
        m_reading->selecting.selectPage(page->sourceIndex());
}

void PDFView::clearTextSelection()
{
    m_reading->selecting.clear();
}

void PDFView::setFindMarks(std::vector<FindHit> marks, int current)
{
    m_reading->marks = FindMarks(std::move(marks), current);
    viewport()->update();
}

PDFPage *PDFView::pageForSourceIndex(int sourceIndex) const
{
    if (!m_document)
        return nullptr;
    auto &places = m_reading->placesOfSources;
    const auto known = [&]() -> PDFPage * {
        const auto place = places.find(sourceIndex);
        PDFPage *page = place != places.end() ? m_document->pageAtIndex(place->second) : nullptr;
        return page && page->sourceIndex() == sourceIndex ? page : nullptr;
    };
    if (PDFPage *page = known())
        return page;
    places.clear();
    for (int i = 0; i < m_document->pageCount(); ++i)
        places.emplace(m_document->pageAtIndex(i)->sourceIndex(), i);
    return known();
}

void PDFView::followDestination(const PageDestination &destination)
{
    const PDFPage *page = pageForSourceIndex(destination.page);
    if (!page)
        return;
    const LeftPlace left = placeToLeave();
    if (destination.top && std::isfinite(*destination.top)) {
        const QSizeF size = shownSize(page->geometry().cropBox, page->geometry().rotation);
        const QRectF line(0, std::clamp(*destination.top, 0.0, size.height()), size.width(), 0);
        const ViewRect shown = convertRectFromPage(page->rectFromFileSpace(line), page);
        goToPlace({page->index(), convertPointToPage({0, shown.maxY()}, page)});
    } else {
        goToPage(page->index());
    }
    if (areSame(placeToLeave(), left))
        return;
    m_reading->history.leave(left);
    Q_EMIT historyChanged();
}

bool PDFView::canGoBack() const
{
    return m_reading->history.canGoBack();
}

bool PDFView::canGoForward() const
{
    return m_reading->history.canGoForward();
}

void PDFView::goBack()
{
    returnTo(m_reading->history.back(placeToLeave()));
}

void PDFView::goForward()
{
    returnTo(m_reading->history.forward(placeToLeave()));
}

PDFView::LeftPlace PDFView::placeToLeave() const
{
    const Place present = place();
    const PDFPage *page = m_document ? m_document->pageAtIndex(present.pageIndex) : nullptr;
    return {page ? page->sourceIndex() : -1, present.corner};
}

void PDFView::returnTo(const std::optional<LeftPlace> &target)
{
    if (!target)
        return;
    if (const PDFPage *page = pageForSourceIndex(target->sourceIndex))
        goToPlace({page->index(), target->corner});
    Q_EMIT historyChanged();
}

} // namespace inkory
