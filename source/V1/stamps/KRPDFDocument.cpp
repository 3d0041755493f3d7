#include "V1/stamps/KRPDFDocument.h"

#include "V1/stamps/KRPDFPage.h"
#include "platform/pdf/PrintOperation.h"

using namespace inkory;

namespace
{

constexpr PrintPanelOptions furtherPrintPanelOptions =
    PrintPanelOption::ShowsPaperSize | PrintPanelOption::ShowsOrientation | PrintPanelOption::ShowsScaling |
    PrintPanelOption::ShowsPageSetupAccessory;

} // namespace

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

std::unique_ptr<PrintOperation>
KRPDFDocument::printOperationForPrintInfo(const PrintInfo &info, PageScaling scalingMode, AutoRotate autoRotate)
{
    auto operation = PDFDocument::printOperationForPrintInfo(info, scalingMode, autoRotate);
    PrintPanel &panel = operation->printPanel();
    panel.setOptions(panel.options() | furtherPrintPanelOptions);
    return operation;
}
