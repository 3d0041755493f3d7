#pragma once

#include "platform/core/Image.h"

#include <QByteArray>

#include <memory>
#include <vector>

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

/// Brings the pages of an overlay file (see WriteRequest::overlays) into a document as form XObjects, with the real
/// images in place of their markers. Has to live until the document is written, which reads from the overlay file.
class OverlayForms
{
public:
    /// Throws what the library throws when the overlays cannot be read. The document has to outlive this object.
    OverlayForms(QPDF &document, const QByteArray &overlays, std::vector<ImagePtr> images);
    ~OverlayForms();

    int pageCount() const;

    /// The form for the overlay page, the same one each time; its space is the overlay page's.
    QPDFObjectHandle form(int overlayPage);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace inkory
