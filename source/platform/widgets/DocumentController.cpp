#include "platform/widgets/DocumentController.h"

#include "platform/core/DisplayText.h"
#include "platform/core/Log.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/Document.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/ModalSession.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace inkory
{

namespace
{

/// A modal session's end announces itself to nobody (dialogs of the toolkit run loops of their own), so waiting looks
/// again.
constexpr std::chrono::milliseconds waitingInterval(100);

DocumentController *&shared()
{
    static DocumentController *controller = nullptr;
    return controller;
}

// The same file by whatever path, in whatever state.
bool isSameFile(const std::optional<FileIdentity> &first, const std::optional<FileIdentity> &second)
{
    return first && second && first->device == second->device && first->inode == second->inode;
}

QString withoutDots(const QUrl &url)
{
    return QDir::cleanPath(url.toLocalFile());
}

Result<void> checkCanBeOpened(const QUrl &url)
{
    if (!url.isLocalFile())
        return Error{DocumentController::tr("Only files on this computer can be opened.")};
    const QFileInfo info(url.toLocalFile());
    if (!info.exists())
        return Error{DocumentController::tr("The file does not exist.")};
    if (info.isDir())
        return Error{DocumentController::tr("This is a folder, not a document.")};
    return {};
}

} // namespace

DocumentController::DocumentController(QObject *parent) : QObject(parent)
{
    if (!shared())
        shared() = this;
    m_waitingTimer.setInterval(waitingInterval);
    connect(&m_waitingTimer, &QTimer::timeout, this, &DocumentController::openWaitingRequests);
}

DocumentController::~DocumentController()
{
    if (shared() == this)
        shared() = nullptr;
}

DocumentController *DocumentController::sharedDocumentController()
{
    return shared();
}

QList<Document *> DocumentController::documents() const
{
    QList<Document *> list;
    for (const auto &document : m_documents)
        list.append(document.get());
    return list;
}

Document *DocumentController::documentForURL(const QUrl &url) const
{
    if (!url.isLocalFile())
        return nullptr;
    const std::optional<FileIdentity> identity = FileIdentity::of(url.toLocalFile());
    const auto found = std::find_if(m_documents.begin(), m_documents.end(), [&](const auto &document) {
        if (withoutDots(document->fileUrl()) == withoutDots(url))
            return true;
        return isSameFile(FileIdentity::of(document->fileUrl().toLocalFile()), identity);
    });
    return found == m_documents.end() ? nullptr : found->get();
}

void DocumentController::openDocument(QObject *)
{
    OpenPanel panel;
    panel.title = tr("Open");
    panel.nameFilters = {tr("PDF documents (*.pdf *.PDF)"), tr("All files (*)")};
    panel.selection = OpenPanel::Selection::Several;
    beginOpening();
    openDocumentsReportingFailures(panel.runModal(nullptr));
    endOpening();
}

void DocumentController::openDocumentsReportingFailures(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls) {
        openDocumentWithContentsOfURL(url, Display::Yes, [this, url](const Result<Document *> &outcome) {
            if (!outcome)
                showFailure(url, outcome.error().message);
        });
    }
}

void DocumentController::showFailure(const QUrl &url, const QString &reason) const
{
    Alert alert;
    const QString name = url.fileName().isEmpty() ? url.toDisplayString() : url.fileName();
    alert.messageText = tr("“%1” could not be opened.").arg(displayable(name));
    alert.informativeText = reason;
    alert.runModal();
}

void DocumentController::openDocumentWithContentsOfURL(const QUrl &url, Display display, OpenCompletion completion)
{
    if (mustWait()) {
        m_waitingRequests.push_back({url, display, std::move(completion)});
        m_waitingTimer.start();
        return;
    }
    beginOpening();
    const Result<Document *> outcome = open(url, display);
    if (!outcome)
        logLine(
            QStringLiteral("opening %1 failed: %2").arg(displayable(url.toDisplayString()), outcome.error().message));
    if (completion)
        completion(outcome);
    endOpening();
}

bool DocumentController::mustWait() const
{
    const auto isInTheWay = [this](const QWidget *window) { return window && window != m_sessionThatAllowsOpening; };
    return isInTheWay(QApplication::activeModalWidget()) || isInTheWay(modalWindow());
}

void DocumentController::openWaitingRequests()
{
    while (!m_waitingRequests.empty() && !mustWait()) {
        beginOpening();
        Request request = std::move(m_waitingRequests.front());
        m_waitingRequests.erase(m_waitingRequests.begin());
        openDocumentWithContentsOfURL(request.url, request.display, std::move(request.completion));
        endOpening();
    }
    if (m_waitingRequests.empty())
        m_waitingTimer.stop();
}

void DocumentController::endOpening()
{
    --m_openingDepth;
    if (!isOpening())
        Q_EMIT openingEnded();
}

Result<Document *> DocumentController::open(const QUrl &url, Display display)
{
    if (Document *document = documentForURL(url)) {
        if (display == Display::Yes)
            document->showWindows();
        return document;
    }
    if (const Result<void> check = checkCanBeOpened(url); !check)
        return check.error();
    std::unique_ptr<Document> made = m_documentFactory ? m_documentFactory() : nullptr;
    if (!made)
        return Error{tr("There is nothing here that opens such documents.")};
    if (const Result<void> read = made->readFromURL(url, made->fileKind().mimeType); !read)
        return read.error();

    Document *document = made.get();
    document->setFileUrl(url);
    addDocument(std::move(made));
    if (display == Display::Yes) {
        document->makeWindowControllers();
        document->showWindows();
    }
    Q_EMIT documentOpened(document);
    return document;
}

void DocumentController::addDocument(std::unique_ptr<Document> document)
{
    Document *added = document.get();
    m_documents.push_back(std::move(document));
    connect(added, &Document::closed, this, [this, added] { removeDocument(added); });
}

void DocumentController::removeDocument(Document *document)
{
    const auto found = std::find_if(m_documents.begin(), m_documents.end(),
                                    [document](const auto &candidate) { return candidate.get() == document; });
    if (found == m_documents.end())
        return;
    // Not destroyed here: it is often the document's own window that is closing, and its code runs on after this.
    found->release()->deleteLater();
    m_documents.erase(found);
}

void DocumentController::terminate()
{
    if (m_isQuitting)
        return;
    m_isQuitting = true;
    std::vector<QPointer<Document>> all;
    all.reserve(m_documents.size());
    for (const auto &document : m_documents)
        all.emplace_back(document.get());
    reviewForTermination(std::move(all));
}

void DocumentController::reviewForTermination(std::vector<QPointer<Document>> remaining)
{
    while (!remaining.empty() && !remaining.back())
        remaining.pop_back();
    if (!remaining.empty()) {
        const QPointer<Document> next = remaining.back();
        remaining.pop_back();
        next->askBeforeClosing([this, remaining = std::move(remaining)](bool mayClose) {
            if (mayClose)
                reviewForTermination(remaining);
            else
                m_isQuitting = false;
        });
        return;
    }
    m_waitingRequests.clear();
    for (Document *document : documents())
        document->closeUnasked();
    QCoreApplication::quit();
}

} // namespace inkory
