#pragma once

#include <functional>

namespace inkory
{

class PDFView;
class PrintOperation;

/// Asks the person how to print the operation's document, offering what its print panel shows, and sets its print
/// information accordingly. Runs an event loop: the view, and all that it shows, may be gone when it answers.
/// False where nothing is to be printed.
bool runPrintDialog(PrintOperation &operation, PDFView &view);

/// For tests: answers in the person's place, without showing anything, while it is set.
void setPrintDialogResponder(std::function<bool(PrintOperation &)> responder);

} // namespace inkory
