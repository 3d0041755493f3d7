#pragma once

#include "platform/pdf/PrintInfo.h"

#include <QRect>
#include <QSizeF>
#include <QTransform>

#include <vector>

namespace inkory
{

/// Where a page comes to stand on its sheet of paper.
struct SheetPlacement
{
    /// The paper as it is held to read it, without margins.
    QPageLayout sheet;
    /// In points.
    QSizeF paperSize;
    /// From the shown page (see shownPageTransform()) to the sheet: points, origin at the upper left, y downward.
    QTransform toSheet;
    /// How many times its own size the page has.
    double scale = 1;
};

/// Centres a page of this size (as displayed, in points) on the paper, upright. Sizes of 0 or less place nothing.
SheetPlacement placeOnSheet(QSizeF shownSize, const PrintInfo &info);

/// Which pages to print, as indices from 0 in the order of printing. Copies are among them only when printing to a
/// file: printers make their own.
std::vector<int> pagesToPrint(const PrintInfo &info, int pageCount);

/// What is to be drawn of a page: pixels of the whole shown page at `scale` pixels per point, in bands from top to
/// bottom.
struct PageBands
{
    double scale = 1;
    std::vector<QRect> bands;
};

/// The part of the page that lies on the paper, in bands of at most eight million pixels that overlap a little, so that
/// no seam shows between them.
PageBands bandsOfPage(QSizeF shownSize, const SheetPlacement &placement, int resolution);

} // namespace inkory
