// The page commands of the editing view: turning a page, turning the whole document, printing.

#include "V1/editing/KRPDFView.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PrintOperation.h"
#include "platform/widgets/PrintJob.h"

#include <cmath>

using namespace inkory;

void KRPDFView::rotateCurrentPageClockwise()
{
    rotateCurrentPageByAngle(90);
}

void KRPDFView::rotateCurrentPageCounterClockwise()
{
    rotateCurrentPageByAngle(-90);
}

void KRPDFView::rotateCurrentPageByAngle(double angle)
{
    if (PDFPage *page = currentPage())
        rotatePageByAngle(*page, angle);
}

void KRPDFView::rotateCurrentPageByAngleObject(const QVariantMap &step)
{
    auto *page = step.value(QStringLiteral("page")).value<PDFPage *>();
    const int index = document() ? document()->indexForPage(page) : -1;
    if (index < 0)
        return;
    // The person may have gone on to another page since: undo shows what it undoes, and turns the page that was turned.
    if (page != currentPage())
        goToPage(index);
    rotatePageByAngle(*page, static_cast<double>(step.value(QStringLiteral("angle")).toFloat()));
}

void KRPDFView::rotatePageByAngle(PDFPage &page, double angle)
{
    if (angle == 0)
        return;
    endTextEditing();
    page.setRotation(static_cast<int>(std::trunc(page.rotation() + angle)));
    annotationsChangedOnPage(&page);
    layoutDocumentView();
    const int index = page.index();
    choosePage(index); // another one may have come to the middle: the next turn is for the same page
    if (currentPageIndex() != index)
        goToPage(index); // it became too short to reach into the view
    registerUndo(QStringLiteral("rotateCurrentPageByAngleObject"),
                 QVariantMap{{QStringLiteral("page"), QVariant::fromValue<PDFPage *>(&page)},
                             {QStringLiteral("angle"), static_cast<float>(-angle)}},
                 "Rotate");
    updateStampViewOverlay();
}

void KRPDFView::flipDocument()
{
    if (!document())
        return;
    endTextEditing();
    const int count = document()->pageCount();
    for (int i = 0; i < count; ++i) {
        PDFPage *page = document()->pageAtIndex(i);
        page->setRotation(page->rotation() + 180);
    }
    for (int i = 0; i <= (count - 1) / 2; ++i)
        document()->exchangePages(i, count - 1 - i);
    layoutDocumentView();
    registerUndo(QStringLiteral("flipDocument"), {}, "Rotate Document");
    updateStampViewOverlay();
}

void KRPDFView::printDocument()
{
    printWithInfo(sharedPrintInfo(), AutoRotate::Yes);
}

void KRPDFView::printWithInfo(const PrintInfo &info, AutoRotate autoRotate)
{
    printWithInfo(info, autoRotate, info.scaling);
}

void KRPDFView::printWithInfo(const PrintInfo &info, AutoRotate autoRotate, PageScaling pageScaling)
{
    endTextEditing(); // a text being edited is not drawn
    if (document() && document()->state() == PDFDocument::State::Open)
        runPrintOperation(*this, document()->printOperationForPrintInfo(info, pageScaling, autoRotate));
}
