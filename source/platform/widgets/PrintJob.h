#pragma once

#include <memory>

namespace inkory
{

class PDFView;
class PrintOperation;

/// Asks the person how to print (see PrintDialog.h), then prints in the background, while a window over the view's
/// shows the progress and can cancel. Pages go into a file beside the wanted one, or a temporary one for a printer;
/// only when all of them are there is the file put in place or sent, so that nothing comes of what was cancelled. Says
/// in an alert what went wrong, and through the view where a file was put. The settings become the shared ones, but for
/// the range of pages, the number of copies and the file. Ends cleanly when the view or the document goes. Does nothing
/// while the view prints already.
void runPrintOperation(PDFView &view, std::unique_ptr<PrintOperation> operation);

} // namespace inkory
