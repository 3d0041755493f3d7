#pragma once

#include "platform/pdf/PageGeometry.h"

#include <memory>
#include <vector>

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

/// What the writing library sees of one page: where it is, and what it inherits from the page tree.
struct QpdfPage
{
    std::shared_ptr<QPDFObjectHandle> object;
    PageGeometry geometry;
    /// The page's own resources or inherited ones; a null object where there are none.
    std::shared_ptr<QPDFObjectHandle> resources;
};

/// All pages in order, walking the page tree from its root, as viewers do. Throws std::runtime_error on loops, on trees
/// of more than 2,000 levels or 100,000 pages, and where the library would find other pages; throws what the library
/// throws. Pages that stand in the tree twice become two pages, as the library does it.
std::vector<QpdfPage> readPages(QPDF &document);

/// Makes these pages the document's pages, in this order, with the boxes that they have, whatever its page tree looked
/// like. Takes time in proportion to their number, unlike taking pages out and in one by one. Throws what the library
/// throws.
void setPages(QPDF &document, const std::vector<QpdfPage> &pages);

} // namespace inkory
