#pragma once

#include "platform/core/UndoManager.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/Document.h"
#include "platform/widgets/DocumentController.h"
#include "platform/widgets/FileChooser.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/WindowController.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

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
    static inline int living = 0;

    TextDocument() { ++living; }
    ~TextDocument() override { --living; }

    void edit(const QByteArray &newText)
    {
        text = newText;
        undoManager().noteChangeWithoutStep();
    }
    FileKind fileKind() const override
    {
        return {QStringLiteral("Texts"), QStringLiteral("pdf"), QStringLiteral("text/plain")};
    }
    void makeWindowControllers() override
    {
        addWindowController(std::make_unique<WindowController>(QStringLiteral("TextWindow")));
    }
    Result<void> readFromURL(const QUrl &url, const QString &) override
    {
        QFile file(url.toLocalFile());
        if (!file.open(QIODevice::ReadOnly))
            return Error{file.errorString()};
        text = file.readAll();
        return text == "unreadable" ? Result<void>(Error{QStringLiteral("No text.")}) : Result<void>();
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

/// A folder, a controller, and a person who answers questions.
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

    QUrl makeFile(const QString &name, const QByteArray &bytes = "text")
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return QUrl::fromLocalFile(file.fileName());
    }
    static QByteArray content(const QUrl &url)
    {
        QFile file(url.toLocalFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    TextDocument *open(const QUrl &url)
    {
        Document *opened = nullptr;
        controller.openDocumentWithContentsOfURL(url, DocumentController::Display::Yes,
                                                 [&](const auto &outcome) { opened = outcome ? *outcome : nullptr; });
        return static_cast<TextDocument *>(opened);
    }
    static void waitForSave(const Document &document)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !document.isSaving(); }));
    }
    /// The events that come next: answers of workers, deferred destruction.
    static void letEventsPass()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static QWidget *windowOf(const Document &document) { return document.windowControllers().front()->window(); }

    QTemporaryDir folder;
    DocumentController controller;
    QStringList questions;
    QList<int> answers;
};

} // namespace inkory::test
