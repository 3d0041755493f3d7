#pragma once

#include "platform/pdf/DocumentWriter.h"

#include <QByteArray>
#include <QRectF>
#include <QSizeF>

#include <vector>

namespace inkory::test
{

/// An image in an overlay: its number, and where it is drawn (y upward from the overlay's lower left).
struct OverlayImage
{
    QRectF rect;
    int index = 0;
};

/// One page of an overlay file.
struct OverlayPage
{
    QSizeF size;
    std::vector<OverlayImage> images;
};

/// An overlay file as WriteRequest wants it.
QByteArray makeOverlays(const std::vector<OverlayPage> &pages);

/// A request that leaves everything as it is: the pages in order, with the rotations that the file says.
WriteRequest unchangedRequest(const QByteArray &file, const QByteArray &password = {});

/// A request that draws an opaque red square onto the rectangle (in page space) of one page, numbered from 0.
WriteRequest stampRequest(const QByteArray &file, int page, const PageRect &rect, const QByteArray &password = {});

/// Pure red, a few pixels, opaque.
ImagePtr redImage();

} // namespace inkory::test
