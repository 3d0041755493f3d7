#include "platform/widgets/Document.h"

#include "platform/core/DisplayText.h"
#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/DocumentController.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/WindowController.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QThreadPool>
#include <QWidget>

#include <utility>

namespace inkory
{

namespace
{

/// What the person reads where nobody knows a better reason.
QString genericSaveFailure()
{
    return Document::tr("The document could not be saved.");
}

Result<void> writeBytes(const std::function<Result<QByteArray>()> &makeBytes, const QUrl &url)
{
    const Result<QByteArray> bytes = makeBytes();
    if (!bytes)
        return bytes.error();
    if (bytes->isEmpty())
        return Error{genericSaveFailure()};
    if (!url.isLocalFile())
        return Error{Document::tr("Only places on this computer can be saved to.")};
    return replaceFileDurably(url.toLocalFile(), *bytes);
}

/// Qt replaces "[*]" in window titles; twice in a row it stands for itself.
QString escapedForTitle(QString text)
{
    return text.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}

} // namespace

Document::Document(QObject *parent) : QObject(parent)
{
    connect(&m_undoManager, &UndoManager::changed, this, &Document::synchronizeWindowTitles);
}

Document::~Document()
{
    destroyWindowControllers();
}

void Document::destroyWindowControllers()
{
    const auto controllers = std::move(m_windowControllers);
    m_windowControllers.clear();
}

void Document::setFileUrl(const QUrl &url)
{
    if (m_fileUrl == url)
        return;
    m_fileUrl = url;
    m_fileIdentity = FileIdentity::of(url.toLocalFile());
    synchronizeWindowTitles();
    Q_EMIT fileUrlChanged();
}

QString Document::displayName() const
{
    return m_fileUrl.isEmpty() ? tr("New Document") : displayable(m_fileUrl.fileName());
}

void Document::addWindowController(std::unique_ptr<WindowController> controller)
{
    controller->setDocument(this);
    m_windowControllers.push_back(std::move(controller));
    synchronizeWindowTitles();
}

void Document::showWindows()
{
    for (const auto &controller : m_windowControllers)
        controller->showWindow();
}

void Document::synchronizeWindowTitles()
{
    const QString program = QGuiApplication::applicationDisplayName();
    for (const auto &controller : m_windowControllers) {
        if (!controller->isWindowLoaded())
            continue;
        QWidget *window = controller->window();
        window->setWindowTitle(QStringLiteral("%1[*] — %2").arg(escapedForTitle(displayName()), program));
        window->setWindowFilePath(m_fileUrl.toLocalFile());
        window->setWindowModified(isDocumentEdited());
    }
}

QWidget *Document::windowForSheets() const
{
    for (const auto &controller : m_windowControllers) {
        if (controller->isWindowLoaded())
            return controller->window();
    }
    return nullptr;
}

Result<void> Document::readFromURL(const QUrl &, const QString &)
{
    return Error{tr("The document could not be opened.")};
}

Result<QByteArray> Document::dataOfType(const QString &)
{
    return Error{genericSaveFailure()};
}

std::function<Result<QByteArray>()> Document::snapshotForWriting()
{
    return [bytes = dataOfType(fileKind().mimeType)] { return bytes; };
}

bool Document::showReasonNotToSave()
{
    const QString reason = reasonNotToSave();
    if (reason.isEmpty())
        return false;
    Alert alert;
    alert.messageText = tr("“%1” cannot be saved.").arg(displayName());
    alert.informativeText = reason;
    alert.runModal(windowForSheets());
    return true;
}

void Document::saveDocument(QObject *sender)
{
    if (m_fileUrl.isEmpty())
        saveDocumentAs(sender);
    else if (!showReasonNotToSave() && mayOverwriteFile())
        saveReportingFailure(m_fileUrl);
}

bool Document::mayOverwriteFile()
{
    const std::optional<FileIdentity> present = FileIdentity::of(m_fileUrl.toLocalFile());
    if (present == m_fileIdentity || m_fileIdentity == std::nullopt)
        return true;
    Alert alert;
    alert.messageText = present ? tr("“%1” was changed by another program.").arg(displayName())
                                : tr("“%1” was moved or deleted by another program.").arg(displayName());
    alert.informativeText = present ? tr("Saving replaces that version by the one that is open here.")
                                    : tr("Saving writes it again at its former place.");
    alert.buttons = {tr("Save Anyway"), tr("Cancel")};
    alert.defaultButton = present ? 1 : 0;
    return alert.runModal(windowForSheets()) == 1;
}

void Document::saveDocumentAs(QObject *)
{
    if (showReasonNotToSave())
        return;
    if (const QUrl url = askWhereToSave(); !url.isEmpty())
        saveReportingFailure(url);
}

QUrl Document::askWhereToSave()
{
    const FileKind kind = fileKind();
    const QString suffix = kind.extension.isEmpty() ? QString() : u'.' + kind.extension;
    SavePanel panel;
    panel.title = tr("Save As");
    panel.suggestedFile = m_fileUrl;
    panel.defaultSuffix = kind.extension;
    if (!suffix.isEmpty())
        panel.nameFilters = QStringList(QStringLiteral("%1 (*%2)").arg(kind.description, suffix));
    const std::optional<QUrl> chosen = panel.runModal(windowForSheets());
    if (!chosen || chosen->isEmpty())
        return {};

    QUrl url = *chosen;
    const bool hasSuffix = suffix.isEmpty() || url.fileName().endsWith(suffix, Qt::CaseInsensitive);
    if (!hasSuffix)
        url.setPath(url.path(QUrl::FullyDecoded) + suffix, QUrl::DecodedMode);
    return mayReplace(url, hasSuffix) ? url : QUrl();
}

bool Document::mayReplace(const QUrl &url, bool panelHasAsked)
{
    const auto *controller = DocumentController::sharedDocumentController();
    const Document *other = controller ? controller->documentForURL(url) : nullptr;
    if (other && other != this) {
        Alert alert;
        alert.messageText = tr("“%1” is open in another window.").arg(displayable(url.fileName()));
        alert.informativeText = tr("Close it first, or choose another name.");
        alert.runModal(windowForSheets());
        return false;
    }
    if (panelHasAsked || !QFileInfo::exists(url.toLocalFile()))
        return true;
    Alert alert;
    alert.messageText =
        tr("A file named “%1” already exists. Do you want to replace it?").arg(displayable(url.fileName()));
    alert.informativeText = tr("Replacing it will overwrite its contents.");
    alert.buttons = {tr("Replace"), tr("Cancel")};
    alert.defaultButton = 1;
    return alert.runModal(windowForSheets()) == 1;
}

void Document::saveReportingFailure(const QUrl &url, const SaveCompletion &completion)
{
    saveToURL(url, [self = QPointer<Document>(this), url, completion](const Result<void> &outcome) {
        if (!outcome && self) {
            Alert alert;
            alert.messageText = tr("“%1” could not be saved.").arg(displayable(url.fileName()));
            alert.informativeText = outcome.error().message;
            alert.runModal(self->windowForSheets());
        }
        if (self && completion) // it may have gone during the alert
            completion(outcome);
    });
}

void Document::saveToURL(const QUrl &url, SaveCompletion completion)
{
    const bool wasSaving = isSaving();
    m_saveQueue.push_back({url, std::move(completion)});
    if (!wasSaving)
        Q_EMIT savingChanged(true);
    startNextSave();
}

void Document::startNextSave()
{
    if (m_saveIsRunning || m_saveQueue.empty())
        return;
    m_saveIsRunning = true;
    commitEditing();
    const quint64 state = m_undoManager.stateToken();
    const QString reason = reasonNotToSave();
    std::function<Result<QByteArray>()> makeBytes;
    if (reason.isEmpty())
        makeBytes = snapshotForWriting();
    else
        makeBytes = [reason] { return Result<QByteArray>(Error{reason}); };

    const QPointer<Document> self(this);
    // The pool is waited for while the application object is destroyed, so that it outlives every worker.
    QCoreApplication *application = QCoreApplication::instance();
    QThreadPool::globalInstance()->start(
        [self, application, state, makeBytes = std::move(makeBytes), url = m_saveQueue.front().url] {
            const Result<void> outcome = writeBytes(makeBytes, url);
            QMetaObject::invokeMethod(application, [self, state, outcome] {
                if (self)
                    self->finishSave(state, outcome);
            });
        },
        1); // before drawing, which may fill the pool
}

void Document::finishSave(quint64 savedState, const Result<void> &outcome)
{
    const SaveRequest request = std::move(m_saveQueue.front());
    m_saveQueue.erase(m_saveQueue.begin());
    m_saveIsRunning = false;
    if (outcome) {
        setFileUrl(request.url);
        m_fileIdentity = FileIdentity::of(request.url.toLocalFile());
        m_undoManager.markClean(savedState);
    } else
        logLine(QStringLiteral("saving %1 failed: %2")
                    .arg(displayable(request.url.toLocalFile()), outcome.error().message));

    const QPointer<Document> self(this);
    if (!isSaving())
        Q_EMIT savingChanged(false);
    if (outcome)
        Q_EMIT saved(request.url);
    if (request.completion)
        request.completion(outcome);
    if (!self)
        return;
    startNextSave();
    if (m_closingWaitsForSave && !isSaving())
        askAboutChanges();
}

void Document::askBeforeClosing(CloseAnswer answer)
{
    m_closeAnswers.push_back(std::move(answer));
    if (m_closeAnswers.size() == 1) // otherwise the question is on its way
        askAboutChanges();
}

void Document::askAboutChanges()
{
    commitEditing();
    m_closingWaitsForSave = isSaving();
    if (m_closingWaitsForSave)
        return;
    if (!isDocumentEdited())
        return answerClosing(true);

    const QPointer<Document> self(this);
    showWindows();
    Alert alert;
    alert.messageText = tr("Save changes to “%1” before closing?").arg(displayName());
    alert.informativeText = tr("If you don't save, your changes will be lost.");
    alert.buttons = {tr("Save"), tr("Don't Save"), tr("Cancel")};
    const int choice = alert.runModal(windowForSheets());
    if (!self)
        return;
    if (choice == 0)
        return answerClosing(true);
    if (choice != 1 || showReasonNotToSave() || (!m_fileUrl.isEmpty() && !mayOverwriteFile()))
        return answerClosing(false);
    const QUrl url = m_fileUrl.isEmpty() ? askWhereToSave() : m_fileUrl;
    if (url.isEmpty())
        return answerClosing(false);
    saveReportingFailure(url, [this](const Result<void> &outcome) {
        if (outcome)
            askAboutChanges(); // there may be changes that were made during the save
        else
            answerClosing(false);
    });
}

void Document::answerClosing(bool mayClose)
{
    const std::vector<CloseAnswer> answers = std::exchange(m_closeAnswers, {});
    for (const CloseAnswer &answer : answers)
        answer(mayClose);
}

void Document::close()
{
    askBeforeClosing([self = QPointer<Document>(this)](bool mayClose) {
        if (mayClose && self)
            self->closeUnasked();
    });
}

void Document::closeUnasked()
{
    if (std::exchange(m_isClosed, true))
        return;
    for (const auto &controller : m_windowControllers)
        controller->close();
    Q_EMIT closed();
}

} // namespace inkory
