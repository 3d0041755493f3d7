#include "V1/stamps/KRPDFDocument.h"

#include "V1/stamps/KRPDFPage.h"

using namespace inkory;

void KRPDFDocument::insertPage(std::unique_ptr<PDFPage> page, int index)
{
    if (!dynamic_cast<KRPDFPage *>(page.get())) {
        const int rotation = page->rotation();
        page = std::make_unique<KRPDFPage>(page->geometry(), page->sourceIndex());
        page->setRotation(rotation);
    }
    PDFDocument::insertPage(std::move(page), index);
}

std::unique_ptr<PDFPage> KRPDFDocument::makePage(const PageGeometry &geometry, int sourceIndex) const
{
    return std::make_unique<KRPDFPage>(geometry, sourceIndex);
}

bool KRPDFDocument::pageHasOverlay(const PDFPage &page) const
{
    const auto *stamped = dynamic_cast<const KRPDFPage *>(&page);
    return stamped && !stamped->stamps().empty();
}
