#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

#include <memory>

class KRDocumentController;
class WelcomeWindowController;

/// Prepares the program before it starts, and decides when the welcome window is shown: at a start without files, and
/// when the last document has been closed. Never makes untitled documents. Owns the document controller. One for the
/// whole process.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    enum class Launch { Refused, Allowed };

    explicit AppDelegate(QObject *parent = nullptr);
    ~AppDelegate() override;

    /// The whole start, from inside the event loop: prepares, opens the files (telling the person of each that cannot
    /// be opened), and shows the welcome window when no document is open then. Ends the program with exit status 1
    /// where the platform is too old. Returns when the welcome window is gone.
    void launch(const QList<QUrl> &files);

    /// Registers the defaults, refuses two early platform releases, makes the document controller and observes it.
    Launch applicationWillFinishLaunching();
    /// Shows the welcome window if it was not shown yet. Answers false, always.
    bool applicationShouldOpenUntitledFile();
    /// Shows the welcome window and returns when it is gone. Does nothing while it is shown.
    void openWelcomeWindow();
    /// Observer of "DOCUMENT_REMOVED": shows the welcome window when no document is left, from the event loop.
    void pdfDocumentWasClosed();

    bool welcomeWindowDisplayed() const { return m_welcomeWindowDisplayed; }

    /// Asks about unsaved documents before the program quits, whoever wants it to.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void openWelcomeWindowIfIdle();
    void documentOpened();
    void welcomeWindowEnded(bool dismissedByUser);

    std::unique_ptr<KRDocumentController> m_documentController;
    std::unique_ptr<WelcomeWindowController> m_welcomeWindowController;
    bool m_welcomeWindowDisplayed = false;
};
