#include "DocumentFixture.h"

#include <QSignalSpy>

namespace inkory::test
{

namespace
{

class DocumentTest : public DocumentFixture
{
protected:
    QUrl file = makeFile(QStringLiteral("a.pdf"));
    TextDocument &document = *open(file);
};

} // namespace

TEST_F(DocumentTest, TitleNamesTheFileFirstAndMarksEdits)
{
    QWidget *window = windowOf(document);
    EXPECT_TRUE(window->windowTitle().startsWith(QStringLiteral("a.pdf[*] – ")));
    EXPECT_EQ(window->windowFilePath(), file.toLocalFile());
    EXPECT_FALSE(window->isWindowModified());
    document.edit("new");
    EXPECT_TRUE(window->isWindowModified());
    document.setFileUrl(QUrl::fromLocalFile(QStringLiteral("/x[*].pdf")));
    EXPECT_TRUE(window->windowTitle().startsWith(QStringLiteral("x[*][*].pdf[*] – ")));
}

TEST_F(DocumentTest, SaveWritesAndIsClean)
{
    document.edit("new");
    document.saveDocument(nullptr);
    EXPECT_TRUE(document.isSaving());
    waitForSave(document);
    EXPECT_EQ(content(file), "new");
    EXPECT_FALSE(document.isDocumentEdited());
    EXPECT_TRUE(questions.isEmpty());
}

TEST_F(DocumentTest, EditsMadeDuringASaveCountAsAfterIt)
{
    document.edit("first");
    document.gate->lock();
    document.saveToURL(file, {});
    document.edit("second");
    document.gate->unlock();
    waitForSave(document);
    EXPECT_EQ(content(file), "first");
    EXPECT_TRUE(document.isDocumentEdited());
}

TEST_F(DocumentTest, ASecondSaveWaitsForTheFirstAndTakesItsOwnSnapshot)
{
    QSignalSpy busy(&document, &Document::savingChanged);
    QList<QByteArray> written;
    const auto note = [&](const Result<void> &outcome) {
        EXPECT_TRUE(outcome);
        written.append(content(file));
    };
    document.edit("first");
    document.gate->lock();
    document.saveToURL(file, note);
    document.edit("second");
    document.saveToURL(file, note);
    document.gate->unlock();
    waitForSave(document);
    EXPECT_EQ(written, QList<QByteArray>({"first", "second"}));
    EXPECT_FALSE(document.isDocumentEdited());
    ASSERT_EQ(busy.size(), 2);
    EXPECT_TRUE(busy.at(0).at(0).toBool());
    EXPECT_FALSE(busy.at(1).at(0).toBool());
}

TEST_F(DocumentTest, AFailureIsShownAndTheDocumentStaysEdited)
{
    document.edit("new");
    document.setFileUrl(QUrl::fromLocalFile(folder.filePath(QStringLiteral("nowhere/a.pdf"))));
    document.saveDocument(nullptr);
    waitForSave(document);
    ASSERT_EQ(questions.size(), 1);
    EXPECT_EQ(questions.first(), QStringLiteral("“a.pdf” could not be saved."));
    EXPECT_TRUE(document.isDocumentEdited());
    EXPECT_EQ(controller.documents().size(), 1);

    document.setFileUrl(file);
    document.saveDocument(nullptr);
    waitForSave(document);
    EXPECT_EQ(content(file), "new");
}

TEST_F(DocumentTest, NoBytesAreAFailure)
{
    document.edit("");
    QString reason;
    document.saveToURL(file,
                       [&](const Result<void> &outcome) { reason = outcome ? QString() : outcome.error().message; });
    waitForSave(document);
    EXPECT_EQ(reason, QStringLiteral("The document could not be saved."));
    EXPECT_EQ(content(file), "text");
}

TEST_F(DocumentTest, WhatCannotBeSavedSaysWhy)
{
    document.edit("new");
    document.readOnlyReason = QStringLiteral("For reading only.");
    document.saveDocument(nullptr);
    document.saveDocumentAs(nullptr);
    EXPECT_EQ(questions.size(), 2);
    EXPECT_FALSE(document.isSaving());
    QString reason;
    document.saveToURL(file, [&](const Result<void> &outcome) { reason = outcome.error().message; });
    waitForSave(document);
    EXPECT_EQ(reason, document.readOnlyReason);
    EXPECT_EQ(content(file), "text");
}

TEST_F(DocumentTest, SaveAsAddsAMissingExtensionAndMovesTheDocument)
{
    SavePanel::setResponder([&](const SavePanel &panel) {
        EXPECT_EQ(panel.suggestedFile, file);
        return QUrl::fromLocalFile(folder.filePath(QStringLiteral("50% b")));
    });
    document.edit("new");
    document.saveDocumentAs(nullptr);
    waitForSave(document);
    EXPECT_TRUE(questions.isEmpty());
    EXPECT_EQ(document.fileUrl(), QUrl::fromLocalFile(folder.filePath(QStringLiteral("50% b.pdf"))));
    EXPECT_EQ(content(document.fileUrl()), "new");
    EXPECT_EQ(content(file), "text");
    EXPECT_FALSE(document.isDocumentEdited());
}

TEST_F(DocumentTest, SaveAsAsksOnceBeforeItOverwrites)
{
    const QUrl other = makeFile(QStringLiteral("b.pdf"), "other");
    SavePanel::setResponder(
        [&](const SavePanel &) { return QUrl::fromLocalFile(folder.filePath(QStringLiteral("b"))); });
    answers = {0};
    document.saveDocumentAs(nullptr);
    EXPECT_EQ(questions.size(), 1);
    EXPECT_FALSE(document.isSaving());
    document.saveDocumentAs(nullptr);
    waitForSave(document);
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(content(other), "text");

    SavePanel::setResponder([&](const SavePanel &) { return file; }); // the panel itself has asked about this name
    document.saveDocumentAs(nullptr);
    waitForSave(document);
    EXPECT_EQ(questions.size(), 2);
}

TEST_F(DocumentTest, SaveAsRefusesTheFileOfAnotherDocument)
{
    const QUrl other = makeFile(QStringLiteral("b.pdf"), "other");
    open(other);
    SavePanel::setResponder([&](const SavePanel &) { return other; });
    document.saveDocumentAs(nullptr);
    EXPECT_FALSE(document.isSaving());
    EXPECT_EQ(questions, QStringList(QStringLiteral("“b.pdf” is open in another window.")));
}

TEST_F(DocumentTest, ClosingTheWindowOfAnUneditedDocumentClosesIt)
{
    const QPointer<QWidget> window = windowOf(document);
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(controller.documents().isEmpty());
    letEventsPass();
    EXPECT_FALSE(window);
    EXPECT_EQ(TextDocument::living, 0);
}

struct CloseCase
{
    const char *name;
    int answer;
    bool closes;
    const char *content;
};

class DocumentClosing : public DocumentTest, public ::testing::WithParamInterface<CloseCase>
{
};

TEST_P(DocumentClosing, FollowsTheAnswer)
{
    document.edit("new");
    answers = {GetParam().answer};
    windowOf(document)->close();
    EXPECT_EQ(questions, QStringList(QStringLiteral("Save changes to “a.pdf” before closing?")));
    if (!controller.documents().isEmpty())
        waitForSave(document);
    EXPECT_EQ(controller.documents().isEmpty(), GetParam().closes);
    EXPECT_EQ(content(file), GetParam().content);
}

INSTANTIATE_TEST_SUITE_P(, DocumentClosing,
                         ::testing::Values(CloseCase{"Save", 1, true, "new"}, CloseCase{"DontSave", 0, true, "text"},
                                           CloseCase{"Cancel", -1, false, "text"}),
                         [](const auto &test) { return test.param.name; });

TEST_F(DocumentTest, ClosingStaysOpenWhenItsSaveFails)
{
    document.edit("new");
    document.setFileUrl(QUrl::fromLocalFile(folder.filePath(QStringLiteral("nowhere/a.pdf"))));
    document.close();
    waitForSave(document);
    EXPECT_EQ(controller.documents().size(), 1);
    EXPECT_TRUE(windowOf(document)->isVisible());
    EXPECT_TRUE(document.isDocumentEdited());
    EXPECT_EQ(questions.size(), 2);
}

TEST_F(DocumentTest, ClosingWaitsForARunningSave)
{
    document.edit("new");
    document.gate->lock();
    document.saveToURL(file, {});
    document.close();
    EXPECT_EQ(controller.documents().size(), 1);
    document.gate->unlock();
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.documents().isEmpty(); }));
    EXPECT_TRUE(questions.isEmpty());
    EXPECT_EQ(content(file), "new");
}

TEST_F(DocumentTest, EditsMadeWhileClosingSavesAreAskedAbout)
{
    document.edit("first");
    document.gate->lock();
    answers = {1, -1};
    document.close();
    document.edit("second");
    document.gate->unlock();
    waitForSave(document);
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(controller.documents().size(), 1);
    EXPECT_EQ(content(file), "first");
}

TEST_F(DocumentTest, TwoCloseRequestsAskOnce)
{
    document.edit("first");
    document.gate->lock();
    document.saveToURL(file, {});
    document.close();
    document.close();
    document.edit("second");
    answers = {0};
    document.gate->unlock();
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.documents().isEmpty(); }));
    EXPECT_EQ(questions.size(), 1);
}

} // namespace inkory::test
