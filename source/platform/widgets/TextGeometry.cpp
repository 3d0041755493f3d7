#include "platform/widgets/TextGeometry.h"

#include "platform/pdf/EngineValues.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>
#include <utility>

namespace inkory
{

namespace
{

// A gap between two characters of a line up to this many times their height is a space between words; a wider one
// leads to another column.
constexpr double widestGap = 1.5;
// How much of its height a line reaches beyond itself, so that the gaps between lines belong to them and not to a
// column beside them.
constexpr double reach = 0.25;

QRectF usableBox(const QRectF &box)
{
    return isPlace(box) ? box & QRectF(0, 0, maxPageSide, maxPageSide) : QRectF();
}

bool isSeparator(QChar unit)
{
    return unit == u' ' || unit == u'\n';
}

/// What a box covers of one axis.
struct Extent
{
    double low = 0;
    double high = 0;

    double length() const { return high - low; }
    double middle() const { return (low + high) / 2; }
    double distanceTo(double value) const { return std::max({0.0, low - value, value - high}); }
    /// Negative: how far they are apart.
    double common(const Extent &other) const { return std::min(high, other.high) - std::max(low, other.low); }
};

Extent horizontal(const QRectF &box)
{
    return {box.left(), box.right()};
}

Extent vertical(const QRectF &box)
{
    return {box.top(), box.bottom()};
}

// Along a line and across it.
Extent along(const QRectF &box, bool isVertical)
{
    return isVertical ? vertical(box) : horizontal(box);
}

Extent across(const QRectF &box, bool isVertical)
{
    return isVertical ? horizontal(box) : vertical(box);
}

double along(const QPointF &point, bool isVertical)
{
    return isVertical ? point.y() : point.x();
}

/// 1 and -1 for letters that are always written to the right or to the left, 0 for all others.
int strongDirection(const QString &text, qsizetype position)
{
    char32_t character = text.at(position).unicode();
    if (text.at(position).isHighSurrogate() && position + 1 < text.size())
        character = QChar::surrogateToUcs4(text.at(position), text.at(position + 1));
    switch (QChar::direction(character)) {
    case QChar::DirL:
        return 1;
    case QChar::DirR:
    case QChar::DirAL:
        return -1;
    default:
        return 0;
    }
}

// Two areas of neighbouring lines meet halfway where they overlap.
void separate(QRectF &upper, QRectF &lower)
{
    const double common = vertical(upper).common(vertical(lower));
    const bool areBelowEachOther =
        lower.top() > upper.top() && lower.bottom() > upper.bottom() && horizontal(upper).common(horizontal(lower)) > 0;
    if (!areBelowEachOther || common <= 0 || common > std::min(upper.height(), lower.height()) / 2)
        return;
    upper.setBottom(upper.bottom() - common / 2);
    lower.setTop(upper.bottom());
}

} // namespace

TextRange lineAround(const QString &text, qsizetype position)
{
    if (position < 0 || position >= text.size())
        return {};
    const qsizetype begin = position == 0 ? 0 : text.lastIndexOf(u'\n', position - 1) + 1;
    const qsizetype end = text.indexOf(u'\n', position);
    return {begin, end < 0 ? text.size() : end};
}

TextRange wordAround(const QString &text, qsizetype position)
{
    const TextRange line = lineAround(text, position);
    if (line.isEmpty() || position >= line.end)
        return {position, position};
    const QString words = text.mid(line.begin, line.end - line.begin);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, words);
    finder.setPosition(position - line.begin + 1);
    const qsizetype begin = std::max<qsizetype>(0, finder.toPreviousBoundary());
    const qsizetype end = finder.toNextBoundary();
    return {line.begin + begin, end < 0 ? line.end : line.begin + end};
}

/// Puts characters together that stand beside (or below) each other, are about equally high and run the same way.
class TextGeometry::RunBuilder
{
public:
    RunBuilder(const QString &text, std::vector<Run> &runs) : m_text(text), m_runs(runs) {}

    void endLine() { m_isOpen = false; }

    void add(qsizetype position, const QRectF &box)
    {
        const int direction = strongDirection(m_text, position);
        const bool isVertical = m_isSecond ? isBelow(box) : m_isOpen && m_runs.back().isVertical;
        m_isSecond = !m_isOpen || !continues(box, isVertical) || direction * m_direction < 0;
        if (m_isSecond) {
            m_runs.push_back({{position, position + 1}, box, false});
            m_direction = direction;
        } else {
            Run &run = m_runs.back();
            run.range.end = position + 1;
            run.rect |= box;
            run.isVertical = isVertical;
            m_direction = direction != 0 ? direction : m_direction;
        }
        m_isOpen = true;
        m_former = box;
    }

private:
    bool isBelow(const QRectF &box) const
    {
        const QPointF step = box.center() - m_former.center();
        return std::abs(step.y()) > std::abs(step.x());
    }

    bool continues(const QRectF &box, bool isVertical) const
    {
        const Extent former = across(m_former, isVertical);
        const Extent next = across(box, isVertical);
        const double gap = -along(m_former, isVertical).common(along(box, isVertical));
        return former.common(next) >= std::min(former.length(), next.length()) / 2 &&
               gap <= widestGap * std::max(former.length(), next.length());
    }

    const QString &m_text;
    std::vector<Run> &m_runs;
    QRectF m_former;
    int m_direction = 0;     // of the run's last letter that has one
    bool m_isOpen = false;   // the last run may go on
    bool m_isSecond = false; // what comes next is the second one of its run
};

TextGeometry::TextGeometry(PageText text) : m_text(std::move(text.text)), m_boxes(std::move(text.boxes))
{
    m_boxes.resize(static_cast<std::size_t>(m_text.size()));
    RunBuilder builder(m_text, m_runs);
    for (qsizetype i = 0; i < m_text.size(); ++i) {
        QRectF &box = m_boxes[static_cast<std::size_t>(i)];
        box = isSeparator(m_text.at(i)) ? QRectF() : usableBox(box);
        if (m_text.at(i) == u'\n')
            builder.endLine();
        else if (!box.isEmpty())
            builder.add(i, box);
    }
}

bool TextGeometry::isOverText(const QPointF &point) const
{
    return std::any_of(m_runs.begin(), m_runs.end(), [&](const Run &run) { return run.rect.contains(point); });
}

const TextGeometry::Run *TextGeometry::nearestRun(const QPointF &point) const
{
    const auto distance = [&](const Run &run) {
        const double height = across(run.rect, run.isVertical).length();
        const double inHeight = vertical(run.rect).distanceTo(point.y());
        return std::tuple(std::max(0.0, inHeight - reach * height), horizontal(run.rect).distanceTo(point.x()),
                          inHeight);
    };
    const Run *nearest = nullptr;
    std::tuple<double, double, double> least;
    for (const Run &run : m_runs) {
        const auto found = distance(run);
        if (!nearest || found < least) {
            nearest = &run;
            least = found;
        }
    }
    return nearest;
}

qsizetype TextGeometry::nearestIn(const Run &run, const QPointF &point) const
{
    const double place = along(point, run.isVertical);
    const auto distance = [&](qsizetype position) {
        const Extent extent = along(boxAt(position), run.isVertical);
        return std::pair(extent.distanceTo(place), std::abs(extent.middle() - place)); // characters may overlap
    };
    qsizetype nearest = run.range.begin;
    auto least = distance(nearest);
    for (qsizetype i = run.range.begin + 1; i < run.range.end; ++i) {
        if (!hasPlace(i))
            continue;
        const auto found = distance(i);
        if (found < least) {
            nearest = i;
            least = found;
        }
    }
    return nearest;
}

// The nearer neighbour tells: the other one may be at the far end of a gap.
int TextGeometry::directionAt(const Run &run, qsizetype position) const
{
    const double middle = along(boxAt(position), run.isVertical).middle();
    std::optional<double> step;
    const auto consider = [&](qsizetype neighbour, int sign) {
        const double found = (along(boxAt(neighbour), run.isVertical).middle() - middle) * sign;
        if (found != 0 && (!step || std::abs(found) < std::abs(*step)))
            step = found;
    };
    for (qsizetype i = position - 1; i >= run.range.begin; --i) {
        if (hasPlace(i)) {
            consider(i, -1);
            break;
        }
    }
    for (qsizetype i = position + 1; i < run.range.end; ++i) {
        if (hasPlace(i)) {
            consider(i, 1);
            break;
        }
    }
    if (!step)
        return strongDirection(m_text, position) < 0 ? -1 : 1;
    return *step < 0 ? -1 : 1;
}

qsizetype TextGeometry::endOfCharacter(qsizetype position) const
{
    do
        ++position;
    while (position < m_text.size() && !hasPlace(position) && !isSeparator(m_text.at(position)));
    return position;
}

qsizetype TextGeometry::characterAt(const QPointF &point) const
{
    const Run *run = nearestRun(point);
    return run ? nearestIn(*run, point) : -1;
}

qsizetype TextGeometry::boundaryAt(const QPointF &point) const
{
    const Run *run = nearestRun(point);
    if (!run)
        return 0;
    const qsizetype nearest = nearestIn(*run, point);
    const double beyond = along(point, run->isVertical) - along(boxAt(nearest), run->isVertical).middle();
    return beyond * directionAt(*run, nearest) > 0 ? endOfCharacter(nearest) : nearest;
}

std::vector<QRectF> TextGeometry::areas(const TextRange &range) const
{
    std::vector<QRectF> areas;
    const auto first = std::partition_point(m_runs.begin(), m_runs.end(),
                                            [&](const Run &run) { return run.range.end <= range.begin; });
    for (auto run = first; run != m_runs.end() && run->range.begin < range.end; ++run) {
        QRectF area;
        if (run->range.begin >= range.begin && run->range.end <= range.end) {
            area = run->rect;
        } else {
            const qsizetype end = std::min(range.end, run->range.end);
            for (qsizetype i = std::max(range.begin, run->range.begin); i < end; ++i)
                area |= boxAt(i); // empty ones change nothing
        }
        if (area.isEmpty())
            continue;
        if (!areas.empty())
            separate(areas.back(), area);
        areas.push_back(area);
    }
    return areas;
}

} // namespace inkory
