#include "platform/widgets/TextSelecting.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>
#include <limits>
#include <utility>

namespace inkory
{

TextSelecting::TextSelecting(PageTexts &texts, TextSelection::PlaceOf placeOf, PageOf pageOf, QObject *parent)
    : QObject(parent), m_texts(texts), m_placeOf(std::move(placeOf)), m_pageOf(std::move(pageOf))
{
    connect(&m_texts, &PageTexts::textArrived, this, &TextSelecting::textArrived);
}

void TextSelecting::begin(const PageSpot &spot, Unit unit)
{
    clear();
    m_texts.forgetFailed(spot.page);
    m_drag = Drag{spot, spot, unit};
    follow();
}

void TextSelecting::extend(const PageSpot &spot)
{
    if (!m_selection) {
        begin(spot, Unit::Character);
        return;
    }
    m_texts.forgetFailed(spot.page);
    m_drag = Drag{{}, spot, m_selection->unit()};
    follow();
}

void TextSelecting::moveTo(const PageSpot &spot)
{
    if (!m_drag || m_drag->isFinished)
        return;
    m_drag->end = spot;
    follow();
}

void TextSelecting::finish()
{
    if (!m_drag)
        return;
    m_drag->isFinished = true;
    follow();
}

void TextSelecting::follow()
{
    if (!m_drag)
        return;
    for (const int page : {m_drag->anchor ? m_drag->anchor->page : m_drag->end.page, m_drag->end.page})
        m_texts.fetch(page, PageTexts::Detail::Everything, DrawPriority::Visible);
    if (!resolve(*m_drag) || !m_drag->isFinished)
        return;
    m_drag.reset();
    m_copiesPrimary = hasSelection() && QGuiApplication::clipboard()->supportsSelection();
    putOnClipboards();
}

bool TextSelecting::resolve(const Drag &drag)
{
    std::optional<TextSelection> selection = m_selection;
    if (drag.anchor && isBesideWords(*drag.anchor, drag.unit))
        return true;
    if (drag.anchor) {
        const auto anchor = placeAt(*drag.anchor, drag.unit);
        if (!anchor)
            return false;
        selection.emplace(*anchor, drag.unit);
    }
    const auto end = placeAt(drag.end, drag.unit);
    if (!end || !selection)
        return false;
    selection->extendTo(*end);
    set(selection);
    return true;
}

// Where a double click selects nothing.
bool TextSelecting::isBesideWords(const PageSpot &spot, Unit unit) const
{
    const TextGeometry *geometry = m_texts.geometry(spot.page);
    return unit != Unit::Character && geometry && !geometry->isOverText(spot.point);
}

std::optional<TextPlace> TextSelecting::placeAt(const PageSpot &spot, Unit unit) const
{
    const TextGeometry *geometry = m_texts.geometry(spot.page);
    if (!geometry)
        return {};
    if (unit == Unit::Character)
        return TextPlace{spot.page, geometry->boundaryAt(spot.point)};
    return TextPlace{spot.page, std::max<qsizetype>(0, geometry->characterAt(spot.point))};
}

void TextSelecting::set(std::optional<TextSelection> selection)
{
    if (selection)
        selection->extendTo(withinReach(*selection));
    if (m_selection == selection)
        return;
    m_copies = m_copies && m_drag; // what it waits for
    m_copiesPrimary = false;
    m_selection = selection;
    fetchPages();
    Q_EMIT changed();
}

TextPlace TextSelecting::withinReach(const TextSelection &selection) const
{
    const int anchorPlace = m_placeOf(selection.anchor().page);
    const int endPlace = m_placeOf(selection.end().page);
    if (endPlace >= anchorPlace + mostPages)
        return {m_pageOf(anchorPlace + mostPages - 1), std::numeric_limits<qsizetype>::max()};
    if (endPlace <= anchorPlace - mostPages)
        return {m_pageOf(anchorPlace - mostPages + 1), 0};
    return selection.end();
}

void TextSelecting::selectPage(int page)
{
    m_drag.reset();
    TextSelection whole({page, 0}, Unit::Character);
    whole.extendTo({page, std::numeric_limits<qsizetype>::max()});
    m_texts.forgetFailed(page);
    m_texts.fetch(page, PageTexts::Detail::Everything, DrawPriority::Visible);
    set(whole);
}

void TextSelecting::clear()
{
    m_drag.reset();
    m_copies = false;
    set(std::nullopt);
}

std::vector<int> TextSelecting::pages() const
{
    if (!m_selection)
        return {};
    const auto [first, last] = m_selection->span(m_placeOf);
    std::vector<int> pages;
    for (int place = std::max(0, first); place <= last && place - first < mostPages; ++place)
        pages.push_back(m_pageOf(place));
    return pages;
}

void TextSelecting::fetchPages()
{
    for (const int page : pages()) {
        if (!m_texts.text(page))
            m_texts.fetch(page, PageTexts::Detail::TextOnly, DrawPriority::Ahead);
    }
}

void TextSelecting::textArrived(int page)
{
    follow();
    const std::vector<int> needed = pages();
    if (std::find(needed.begin(), needed.end(), page) == needed.end())
        return;
    Q_EMIT changed();
    putOnClipboards();
}

bool TextSelecting::hasSelection() const
{
    const std::vector<int> reached = pages();
    return std::any_of(reached.begin(), reached.end(), [this](int page) {
        const QString *text = m_texts.text(page);
        return text && !m_selection->rangeOn(page, *text, m_placeOf).isEmpty();
    });
}

QString TextSelecting::selectedText(qsizetype most) const
{
    return hasSelection() ? m_selection->plainText(
                                pages(), [this](int page) { return m_texts.text(page); }, m_placeOf, most)
                          : QString();
}

bool TextSelecting::isComplete() const
{
    const std::vector<int> needed = pages();
    return std::all_of(needed.begin(), needed.end(), [this](int page) { return m_texts.text(page) != nullptr; });
}

// Whether nothing selected is missing where the known text of a page ends.
bool TextSelecting::isWhole() const
{
    const std::vector<int> needed = pages();
    return std::all_of(needed.begin(), needed.end(), [this](int page) {
        const QString *text = m_texts.text(page);
        return m_texts.isWhole(page) || (text && m_selection->rangeOn(page, *text, m_placeOf).end < text->size());
    });
}

void TextSelecting::copy()
{
    m_copies = m_selection.has_value() || m_drag.has_value();
    putOnClipboards();
}

void TextSelecting::putOnClipboards()
{
    const bool isClear = !m_drag || !m_drag->isFinished;
    if ((!m_copies && !m_copiesPrimary) || !isClear || !isComplete())
        return;
    const QString text = selectedText();
    if (std::exchange(m_copies, false) && !text.isEmpty()) {
        QGuiApplication::clipboard()->setText(text);
        Q_EMIT copied(isWhole());
    }
    if (std::exchange(m_copiesPrimary, false) && !text.isEmpty())
        QGuiApplication::clipboard()->setText(text, QClipboard::Selection);
}

std::vector<QRectF> TextSelecting::areasOn(int page) const
{
    const TextGeometry *geometry = m_selection ? m_texts.geometry(page) : nullptr;
    return geometry ? geometry->areas(m_selection->rangeOn(page, geometry->text(), m_placeOf)) : std::vector<QRectF>();
}

} // namespace inkory
