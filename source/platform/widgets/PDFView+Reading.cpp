// What a person does with the pages of the view beyond looking at them: selecting text, following links, going back.

#include "platform/widgets/PDFView.h"

namespace inkory
{

bool PDFView::hasTextSelection() const
{
    return false;
}

QString PDFView::selectedText() const
{
    return {};
}

void PDFView::copySelection() {}
void PDFView::selectAllText() {}
void PDFView::clearTextSelection() {}
void PDFView::setFindMarks(std::vector<FindHit>, int) {}
void PDFView::followDestination(const PageDestination &) {}

bool PDFView::canGoBack() const
{
    return false;
}

bool PDFView::canGoForward() const
{
    return false;
}

void PDFView::goBack() {}
void PDFView::goForward() {}

PDFPage *PDFView::pageForSourceIndex(int) const
{
    return nullptr;
}

} // namespace inkory
