#pragma once

#include "platform/core/UndoManager.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/Document.h"
#include "platform/widgets/DocumentController.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/WindowController.h"
#include "support/Tools.h"

#include <mutex>

namespace inkory::test
{

/// A document whose content is a text; its writing can be held up.
class TextDocument : public Document
{
public:
    QByteArray text;
    QString readOnlyReason;
    std::shared_ptr<std::mutex> gate = std::make_shared<std::mutex>();

    void edit(const QByteArray &newText)
    {
        text = newText;
        undoManager().noteChangeWithoutStep();
    }
    FileKind fileKind() const override { return {QStringLiteral("Texts"), QStringLiteral("pdf"), {}}; }
    void makeWindowControllers() override
    {
        addWindowController(std::make_unique<WindowController>(QStringLiteral("TextWindow")));
    }
    Result<void> readFromURL(const QUrl &url, const QString &) override
    {
        text = readFile(url.toLocalFile());
        return {};
    }
    std::function<Result<QByteArray>()> snapshotForWriting() override
    {
        return [bytes = text, door = gate] {
            const std::lock_guard held(*door);
            return Result<QByteArray>(bytes);
        };
    }
    QString reasonNotToSave() const override { return readOnlyReason; }
};

/// A folder, a controller, and a person who answers questions; the first button where no answer is prepared.
class DocumentFixture : public ::testing::Test
{
protected:
    DocumentFixture()
    {
        registerInterfaceDescription(QStringLiteral("TextWindow"), [] { return std::make_unique<QWidget>(); });
        controller.setDocumentFactory([] { return std::make_unique<TextDocument>(); });
        Alert::setResponder([this](const Alert &alert) {
            questions.append(alert.messageText);
            return answers.isEmpty() ? 1 : answers.takeFirst();
        });
    }
    ~DocumentFixture() override
    {
        Alert::setResponder({});
        OpenPanel::setResponder({});
        SavePanel::setResponder({});
    }

    QUrl urlOf(const char *name) const { return QUrl::fromLocalFile(folder.filePath(QString::fromUtf8(name))); }
    QUrl makeFile(const char *name, const QByteArray &bytes = "text")
    {
        return QUrl::fromLocalFile(writeFile(folder.path(), QString::fromUtf8(name), bytes));
    }
    static QByteArray content(const QUrl &url) { return readFile(url.toLocalFile()); }
    /// None for a file that is refused, or not opened yet.
    TextDocument *open(const QUrl &url)
    {
        Document *opened = nullptr;
        controller.openDocumentWithContentsOfURL(url, DocumentController::Display::Yes,
                                                 [&](const auto &outcome) { opened = outcome ? *outcome : nullptr; });
        return static_cast<TextDocument *>(opened);
    }
    static QWidget *windowOf(const Document &document) { return document.windowControllers().front()->window(); }

    QTemporaryDir folder;
    DocumentController controller;
    QStringList questions;
    QList<int> answers;
};

} // namespace inkory::test
