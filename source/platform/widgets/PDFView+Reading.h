#pragma once

#include "platform/widgets/EdgeScroll.h"
#include "platform/widgets/FindMarks.h"
#include "platform/widgets/NavigationHistory.h"
#include "platform/widgets/PDFView.h"
#include "platform/widgets/TextSelecting.h"

#include <QElapsedTimer>
#include <QTimer>

#include <optional>
#include <unordered_map>

namespace inkory
{

/// A place in the history, by the file's page, so that pages that are moved or inserted meanwhile do not mislead.
struct PDFView::LeftPlace
{
    int sourceIndex = -1;
    PagePoint corner;

    bool operator==(const LeftPlace &) const = default;
};

/// What a view knows for reading; see PDFView+Reading.cpp.
struct PDFView::Reading
{
    /// The left button is held.
    struct Press
    {
        OverlayPoint start;
        OverlayPoint last;
        std::optional<PageLink> link; // to be followed, unless the pointer is dragged
        bool isSelecting = false;     // the pointer was dragged
    };

    explicit Reading(PDFView &view);

    PageTexts texts;
    TextSelecting selecting;
    FindMarks marks;
    NavigationHistory<LeftPlace> history;
    std::optional<Press> press;
    ViewPoint doubleClickPlace;
    QElapsedTimer sinceDoubleClick;
    QTimer fetchTimer;                            // runs when visible pages have not been read
    EdgeScroll edgeScroll;                        // while a pointer selects
    std::unordered_map<int, int> placesOfSources; // checked before use: pages are exchanged without notice
};

} // namespace inkory
