#pragma once

#include "platform/pdf/PageText.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <vector>

namespace inkory
{

/// A part of a text, in UTF-16 units: from `begin` to before `end`.
struct TextRange
{
    qsizetype begin = 0;
    qsizetype end = 0;

    bool isEmpty() const { return end <= begin; }
    bool operator==(const TextRange &) const = default;
};

/// The word (or what stands between words) that the unit at the position belongs to. Never beyond its line; empty for
/// positions outside the text.
TextRange wordAround(const QString &text, qsizetype position);
/// The line that the unit at the position belongs to, without its line feed.
TextRange lineAround(const QString &text, qsizetype position);

/// The text of one page with what a pointer needs of it: which character stands at a point, and which areas a part of
/// the text covers. A value. Points and areas are in the space of PageText. Boxes that are empty, no numbers, or
/// outside every possible page do not count; the text keeps their characters.
class TextGeometry
{
public:
    TextGeometry() = default;
    explicit TextGeometry(PageText text);

    const QString &text() const { return m_text; }
    /// Whether no character stands anywhere.
    bool isEmpty() const { return m_runs.empty(); }

    /// Whether the point is in a line of text, gaps between its words included.
    bool isOverText(const QPointF &point) const;
    /// The position of the character nearest to the point, in the line nearest in height; -1 if isEmpty().
    qsizetype characterAt(const QPointF &point) const;
    /// The position between two characters nearest to the point, in the line nearest in height; 0 if isEmpty().
    qsizetype boundaryAt(const QPointF &point) const;

    /// What the part of the text covers: few areas for each line, which do not overlap those of the line before.
    std::vector<QRectF> areas(const TextRange &range) const;

private:
    struct Run; // a piece of a line without gaps, written in one direction
    class RunBuilder;

    const Run *nearestRun(const QPointF &point) const;
    qsizetype nearestIn(const Run &run, const QPointF &point) const;
    /// Where reading goes on from the character, along the run: 1 to larger coordinates, -1 to smaller ones.
    int directionAt(const Run &run, qsizetype position) const;
    /// After the character and the units that have no place of their own.
    qsizetype endOfCharacter(qsizetype position) const;
    bool hasPlace(qsizetype position) const { return !m_boxes[static_cast<std::size_t>(position)].isEmpty(); }
    const QRectF &boxAt(qsizetype position) const { return m_boxes[static_cast<std::size_t>(position)]; }

    QString m_text;
    std::vector<QRectF> m_boxes; // one for each unit of the text; those that do not count are empty
    std::vector<Run> m_runs;     // in the order of the text
};

struct TextGeometry::Run
{
    TextRange range;
    QRectF rect;
    bool isVertical = false;
};

} // namespace inkory
