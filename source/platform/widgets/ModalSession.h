#pragma once

class QWidget;

namespace inkory
{

/// What a modal session answers when it was stopped without a code of its own.
constexpr int modalResponseStop = -1000;
/// What it answers when it was aborted, its window was destroyed, or the program is quitting.
constexpr int modalResponseAbort = -1001;

/// Shows the window above all others of the program, which take no input meanwhile, and runs the event loop until the
/// session is stopped; timers go on. Answers the code. Sessions nest. Unlike QDialog::exec() this works for any window
/// and with any code. The window is neither hidden nor destroyed at the end: that is for whoever stopped the session.
/// Main thread only, from inside the event loop. While the program is quitting it answers modalResponseAbort at once.
int runModalForWindow(QWidget &window);

/// The same for a window that belongs to another one (a sheet): it stands over its parent window.
int runModalForWindow(QWidget &window, QWidget *parentWindow);

/// Ends the innermost session that has not been stopped yet; nothing happens when there is none.
void stopModalWithCode(int code);
void stopModal();
void abortModal();

/// The window of the innermost session, or none.
QWidget *modalWindow();

} // namespace inkory
