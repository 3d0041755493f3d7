#pragma once

#include "platform/widgets/TextGeometry.h"

#include <QString>

#include <functional>
#include <utility>
#include <vector>

namespace inkory
{

/// A place in the text of a page: of a character, or (selecting by characters) of the boundary before it.
struct TextPlace
{
    /// From 0, in the file's own order.
    int page = 0;
    /// Beyond the text's end counts as its end.
    qsizetype position = 0;

    bool operator==(const TextPlace &) const = default;
};

/// What is selected in the text of a document: from an anchor to an end that moves, by characters, words or lines. A
/// value that knows the pages by their place in the file, so that it lasts when they are reordered: how they follow one
/// another is asked anew each time.
class TextSelection
{
public:
    enum class Unit { Character, Word, Line };
    /// There is never more text selected, in UTF-16 units.
    static constexpr qsizetype mostUnits = 100'000'000;

    /// The place of a page of the file in the document, from 0; -1 for one that has none.
    using PlaceOf = std::function<int(int page)>;
    /// A page's text; none while it is not known.
    using TextOf = std::function<const QString *(int page)>;

    TextSelection(const TextPlace &anchor, Unit unit) : m_anchor(anchor), m_end(anchor), m_unit(unit) {}

    bool operator==(const TextSelection &) const = default;

    const TextPlace &anchor() const { return m_anchor; }
    const TextPlace &end() const { return m_end; }
    Unit unit() const { return m_unit; }
    void extendTo(const TextPlace &end) { m_end = end; }

    /// The places in the document of the first and the last page that it reaches.
    std::pair<int, int> span(const PlaceOf &placeOf) const;
    /// What is selected of the page.
    TextRange rangeOn(int page, const QString &text, const PlaceOf &placeOf) const;
    /// What is selected of these pages, which are in order, those between its first and its last one included. Without
    /// control characters other than the line feeds that end lines and pages, and without soft hyphens. Pages whose
    /// text is not known are left out. Not more than so many UTF-16 units, and none that is half a character.
    QString plainText(const std::vector<int> &pages, const TextOf &textOf, const PlaceOf &placeOf,
                      qsizetype most = mostUnits) const;

private:
    qsizetype beginAt(const TextPlace &place, const QString &text) const;
    qsizetype endAt(const TextPlace &place, const QString &text) const;
    TextRange unitAround(const QString &text, qsizetype position) const;

    TextPlace m_anchor;
    TextPlace m_end;
    Unit m_unit;
};

} // namespace inkory
