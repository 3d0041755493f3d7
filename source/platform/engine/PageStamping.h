#pragma once

#include "platform/core/Geometry.h"

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

struct QpdfPage;

/// Draws the form after the page's content, under the graphics state in which the page begins, with the origin of the
/// form's space at the given point. Whatever the page shares with other pages stays as it is.
void stampPage(QPDF &document, const QpdfPage &page, const QPDFObjectHandle &form, PagePoint origin);

} // namespace inkory
