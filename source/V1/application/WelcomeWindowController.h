#pragma once

#include "platform/widgets/WindowController.h"

#include <QList>
#include <QStringList>
#include <QUrl>

class QLabel;
class QMimeData;
class QPushButton;
class QTableView;

namespace inkory
{
class DropArea;
}

/// Runs the welcome window: lists recent documents, opens one of them, asks for files, and takes PDF files that are
/// dropped on it. Ends its modal session as soon as a document is open. Made anew for each showing by the application
/// delegate.
class WelcomeWindowController : public inkory::WindowController
{
    Q_OBJECT

public:
    using WindowController::WindowController;

    /// The list as it was when the window was loaded.
    const QList<QUrl> &recentDocuments() const { return m_recentDocuments; }
    /// Whether the person closed the window, rather than opened something.
    bool wasDismissedByUser() const { return m_wasDismissedByUser; }

    /// Asks which documents to open; 0.1 s later the window closes if one is open.
    void openDocument();
    /// Opens the selected recent document. A failure leaves the window as it is.
    void openSelectedDocument();

    /// Close the window and end its modal session by stopping or aborting it. Nothing happens for a window that is
    /// closed.
    void closeDialog();
    void abortDialog();
    void closeIfDocumentOpened();

    /// Copy when at least one of the files is a PDF document, otherwise Qt::IgnoreAction.
    Qt::DropAction draggingEntered(const QMimeData &data) const;
    /// Opens the PDF documents among the dropped files, in their order, and closes the window; false when there are
    /// none.
    bool performDragOperation(const QMimeData &data);
    /// Whether an existing file, not a folder, is a PDF document by its content.
    static bool isValidPdfDocument(const QString &path);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void awakeFromNib() override;
    void windowWillClose() override;

private:
    void styleTexts();
    void makeShortcuts();
    bool handleTableKey(int key);
    bool handleDragEvent(QEvent &event);
    void tableViewSelectionDidChange();
    void growColumn(int row);
    void fillColumn();
    void orderOut();
    bool hasValidSelection() const { return selectedRow() >= 0 && selectedRow() < m_recentDocuments.size(); }
    int selectedRow() const;

    QList<QUrl> m_recentDocuments;
    float m_widestCell = 0;
    bool m_isClosed = false;
    bool m_wasDismissedByUser = false;
    bool m_isDropAcceptable = false;

    // Outlets; they belong to the window.
    QTableView *m_recentDocumentsTableView = nullptr;
    QPushButton *m_openButton = nullptr;
    QLabel *m_noRecentTextField = nullptr;
    QLabel *m_dragFilesTextField = nullptr;
    inkory::DropArea *m_dropArea = nullptr;
};
