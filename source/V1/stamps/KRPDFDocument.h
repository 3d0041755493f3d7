#pragma once

#include "platform/pdf/PDFDocument.h"

/// A PDF document all of whose pages are KRPDFPage objects: pages that own stamps and draw them over their content.
class KRPDFDocument : public inkory::PDFDocument
{
    Q_OBJECT

public:
    using PDFDocument::PDFDocument;

    /// A page that is no stamped page yet becomes one on the way in: the document owns it alone, so nobody can hold on
    /// to the object it was.
    void insertPage(std::unique_ptr<inkory::PDFPage> page, int index) override;

    bool pageHasOverlay(const inkory::PDFPage &page) const override;

    /// Its panel also offers paper size, orientation, scaling and page set-up.
    std::unique_ptr<inkory::PrintOperation> printOperationForPrintInfo(const inkory::PrintInfo &info,
                                                                       inkory::PageScaling scalingMode,
                                                                       inkory::AutoRotate autoRotate) override;

protected:
    std::unique_ptr<inkory::PDFPage> makePage(const inkory::PageGeometry &geometry, int sourceIndex) const override;
};
