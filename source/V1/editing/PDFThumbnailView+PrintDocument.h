#pragma once

namespace inkory
{
class PDFThumbnailView;
} // namespace inkory

/// The Print command while the thumbnails have the focus: has their page view perform its printDocument(), or the first
/// of the view's parents that has one. Nothing happens where nobody has one.
void printDocument(const inkory::PDFThumbnailView &thumbnails);
