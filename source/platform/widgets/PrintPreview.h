#pragma once

namespace inkory
{

class PDFView;
class PrintOperation;

/// Shows the sheets as the operation would print them, one at a time, over the view's window, and answers whether they
/// are to be printed. Runs an event loop: the view, and all that it shows, may be gone when it answers. Qt's own
/// preview makes all sheets before it shows the first, and keeps them.
bool runPrintPreview(PrintOperation &operation, PDFView &view);

} // namespace inkory
