#pragma once

#include <QString>
#include <QTransform>

#include <vector>

namespace inkory
{

/// Where a part of a line of text stands, as seen from the line.
struct TextSlot
{
    /// Valid UTF-16, not empty.
    QString text;
    /// Its left edge, and how far it reaches from there: not negative.
    double x = 0;
    double width = 0;

    bool operator==(const TextSlot &) const = default;
};

/// A part of what lies over a page: a page of the overlay file.
struct OverlayPiece
{
    static constexpr int mostInDocument = 100'000;
    /// In UTF-16 units, in all pieces of a document together.
    static constexpr qsizetype mostCharacters = 4'000'000;

    /// Which page of WriteRequest::overlays it is, from 0.
    int overlayPage = 0;
    /// The line of text that it shows, to be read instead of its glyphs: valid UTF-16. Empty for a piece that is no
    /// line of text, and for one with slots.
    QString text;
    /// Only for lines of which readers would get the order of the characters, or their places, wrong: the line's parts
    /// from left to right as displayed, in the line's own coordinates (along the line from left to right; 0 upward is
    /// the baseline).
    std::vector<TextSlot> slots;
    /// Size of the line's font in those coordinates: above 0 where there are slots.
    double slotSize = 0;
    /// From those coordinates to the overlay page, y upward from its lower left corner; affine.
    QTransform lineToPage;

    bool operator==(const OverlayPiece &) const = default;
};

} // namespace inkory
