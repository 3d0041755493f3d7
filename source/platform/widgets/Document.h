#pragma once

#include "platform/core/FileIdentity.h"
#include "platform/core/Result.h"
#include "platform/core/UndoManager.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QWidget;

namespace inkory
{

class WindowController;

/// One open file, its windows and its undo stack; what Qt leaves to every program: saving that never blocks, the
/// question before an edited document closes, the edited mark. Owned by the document controller. Main thread only.
class Document : public QObject
{
    Q_OBJECT

public:
    using SaveCompletion = std::function<void(const Result<void> &)>;
    using CloseAnswer = std::function<void(bool mayClose)>;

    /// What files of this class of documents are; empty parts say nothing.
    struct FileKind
    {
        QString description;
        /// Without the dot.
        QString extension;
        QString mimeType;
    };

    explicit Document(QObject *parent = nullptr);
    ~Document() override;

    /// Where the document was read from or last saved to; empty for one that never was.
    QUrl fileUrl() const { return m_fileUrl; }
    void setFileUrl(const QUrl &url);
    /// The file's name as it may be shown, for titles and questions.
    QString displayName() const;
    virtual FileKind fileKind() const { return {}; }

    UndoManager &undoManager() { return m_undoManager; }
    bool isDocumentEdited() const { return m_undoManager.isEdited(); }

    /// Called once, when the document is about to be shown: adds its window controllers.
    virtual void makeWindowControllers() {}
    void addWindowController(std::unique_ptr<WindowController> controller);
    const std::vector<std::unique_ptr<WindowController>> &windowControllers() const { return m_windowControllers; }
    /// Shows all its windows, raises and activates them.
    void showWindows();
    /// Gives every loaded window the document's name and edited mark.
    void synchronizeWindowTitles();

    /// Fails here unless a subclass reads.
    virtual Result<void> readFromURL(const QUrl &url, const QString &typeName);
    /// The file's bytes; blocks until they are made. Fails here unless a subclass writes.
    virtual Result<QByteArray> dataOfType(const QString &typeName);
    /// Takes all that a save needs, now; the function that it answers makes the bytes from that, once, on a worker
    /// thread, whether the document still lives or not. Here it takes dataOfType().
    virtual std::function<Result<QByteArray>()> snapshotForWriting();
    /// Why the document cannot be saved now, for the person; empty when it can.
    virtual QString reasonNotToSave() const { return {}; }

    /// Takes over what a person is still typing in a window. Called before a save takes its snapshot, and before the
    /// question about changes.
    virtual void commitEditing() {}

    /// Saves to where the document came from, or asks for a place when there is none. The sender is not looked at. A
    /// failure is shown to the person; the document then stays open and edited.
    virtual void saveDocument(QObject *sender);
    /// Asks for a place and a name, adds a missing extension and saves there; from then on this is the document's file.
    virtual void saveDocumentAs(QObject *sender);

    /// The save below all others: takes a snapshot, writes it on a worker, durably or not at all, and calls the
    /// completion from the event loop. Shows nothing. On success the state at the time of the snapshot is the clean one
    /// and the URL is the document's. A save that is asked for while another one runs waits for it, and takes its
    /// snapshot then.
    void saveToURL(const QUrl &url, SaveCompletion completion);
    bool isSaving() const { return m_saveIsRunning || !m_saveQueue.empty(); }

    /// Answers whether the document may be closed, after running saves have ended and, if it is edited, the person was
    /// asked and a wanted save has succeeded. Answers in this call when there is nothing to wait for.
    void askBeforeClosing(CloseAnswer answer);
    /// Closes the document if askBeforeClosing() allows it.
    void close();
    /// Closes it unasked: hides its windows and emits closed().
    void closeUnasked();

Q_SIGNALS:
    void fileUrlChanged();
    /// isSaving() changed.
    void savingChanged(bool isSaving);
    /// A save has succeeded.
    void saved(const QUrl &url);
    /// The document is closed for good; its owner destroys it once control is back in the event loop.
    void closed();

protected:
    /// Shows reasonNotToSave() to the person; answers whether there was one.
    bool showReasonNotToSave();
    /// Saves and shows the person why it failed, if it does.
    void saveReportingFailure(const QUrl &url, const SaveCompletion &completion = {});
    /// For destructors of subclasses whose windows refer to their members.
    void destroyWindowControllers();
    /// The window over which questions about this document stand; none if it has no window yet.
    QWidget *windowForSheets() const;

private:
    /// Whether the file is still as this document read or wrote it, or the person wants to overwrite what is there now.
    bool mayOverwriteFile();

    struct SaveRequest
    {
        QUrl url;
        SaveCompletion completion;
    };

    void startNextSave();
    void finishSave(quint64 savedState, const Result<void> &outcome);
    QUrl askWhereToSave();
    bool mayReplace(const QUrl &url, bool panelHasAsked);
    void askAboutChanges();
    void answerClosing(bool mayClose);

    QUrl m_fileUrl;
    std::optional<FileIdentity> m_fileIdentity; // as last read or written
    UndoManager m_undoManager;
    std::vector<SaveRequest> m_saveQueue;
    bool m_saveIsRunning = false;
    std::vector<CloseAnswer> m_closeAnswers;
    bool m_closingWaitsForSave = false;
    bool m_isClosed = false;
    std::vector<std::unique_ptr<WindowController>> m_windowControllers;
};

} // namespace inkory
