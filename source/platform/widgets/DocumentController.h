#pragma once

#include "platform/core/Result.h"
#include "platform/widgets/RecentDocuments.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace inkory
{

class Document;

/// The program's open documents, and how they are opened: a file that is open already raises its window, a request that
/// arrives while a modal session runs waits for its end. Owns the documents. Main thread only.
class DocumentController : public QObject
{
    Q_OBJECT

public:
    using DocumentFactory = std::function<std::unique_ptr<Document>()>;
    using OpenCompletion = std::function<void(const Result<Document *> &)>;
    enum class Display { Yes, No };

    explicit DocumentController(QObject *parent = nullptr);
    ~DocumentController() override;

    /// The first one that was made in the process; none before, and none after it was destroyed.
    static DocumentController *sharedDocumentController();

    /// Makes the empty document that then reads a file. Nothing can be opened without one.
    void setDocumentFactory(DocumentFactory factory) { m_documentFactory = std::move(factory); }

    /// In the order in which they were opened.
    QList<Document *> documents() const;
    /// The open document of this file, also if the URL reaches it by another way (a link); or none.
    Document *documentForURL(const QUrl &url) const;

    /// Asks which files to open, and opens them; tells the person of each that cannot be. The sender is not looked at.
    void openDocument(QObject *sender);
    /// Opens files one after the other and tells the person of each that cannot be opened.
    void openDocumentsReportingFailures(const QList<QUrl> &urls);
    /// Opens the file, or raises its window if it is open. Refuses what does not exist, a folder, and what is not on
    /// this computer. The completion is called in this call, or, when a modal session is in the way, after its end.
    void openDocumentWithContentsOfURL(const QUrl &url, Display display, OpenCompletion completion = {});
    /// The window during whose modal session documents open at once (none: no such window). Forgotten with the window.
    void setSessionThatAllowsOpening(QWidget *window) { m_sessionThatAllowsOpening = window; }
    /// Whether a request waits, is being carried out, or the person is being asked for files.
    bool isOpening() const { return m_openingDepth > 0 || !m_waitingRequests.empty(); }

    virtual void addDocument(std::unique_ptr<Document> document);
    /// Takes the document out of the list; it is destroyed once control is back in the event loop. Nothing happens for
    /// one that is not in the list.
    virtual void removeDocument(Document *document);

    /// Most recent first; only files that exist.
    QList<QUrl> recentDocumentURLs() const { return m_recentDocuments.urls(); }
    /// Does nothing for a file that is no PDF document.
    void noteNewRecentDocumentURL(const QUrl &url) { m_recentDocuments.add(url); }
    void clearRecentDocuments() { m_recentDocuments.clear(); }

    /// Asks about every edited document; if nobody says "Cancel", closes all and ends the program.
    void terminate();
    /// From terminate() on, unless it is cancelled.
    bool isQuitting() const { return m_isQuitting; }

Q_SIGNALS:
    /// A document was opened and, if that was wanted, is shown.
    void documentOpened(inkory::Document *document);
    /// isOpening() became false.
    void openingEnded();

private:
    struct Request
    {
        QUrl url;
        Display display = Display::Yes;
        OpenCompletion completion;
    };

    bool mustWait() const;
    void openWaitingRequests();
    Result<Document *> open(const QUrl &url, Display display);
    void beginOpening() { ++m_openingDepth; }
    void endOpening();
    void showFailure(const QUrl &url, const QString &reason) const;
    void reviewForTermination(std::vector<QPointer<Document>> remaining);

    DocumentFactory m_documentFactory;
    std::vector<std::unique_ptr<Document>> m_documents;
    std::vector<Request> m_waitingRequests;
    QTimer m_waitingTimer;
    QPointer<QWidget> m_sessionThatAllowsOpening;
    int m_openingDepth = 0;
    bool m_isQuitting = false;
    RecentDocuments m_recentDocuments;
};

} // namespace inkory
