#pragma once

#include "platform/core/Image.h"

#include <QByteArray>

#include <memory>
#include <vector>

class QPDF;
class QPDFObjectHandle;

namespace inkory
{

struct OverlayPiece;

/// Brings the pages of an overlay file (see WriteRequest::overlays) into a document as form XObjects, with the real
/// images in place of their markers. Has to live until the document is written, which reads from the overlay file.
class OverlayForms
{
public:
    /// Throws what the library throws when the overlays cannot be read. The document has to outlive this object.
    OverlayForms(QPDF &document, const QByteArray &overlays, std::vector<ImagePtr> images);
    ~OverlayForms();

    int pageCount() const;

    /// One form for all pieces, at least one, that lie over a page; its space is that of the first piece's overlay
    /// page. The overlay pages exist.
    QPDFObjectHandle makeForm(const std::vector<OverlayPiece> &pieces);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace inkory
