#include "DocumentFixture.h"

namespace inkory::test
{

class DocumentTest : public DocumentFixture
{
protected:
    void saveAs(const QUrl &chosen)
    {
        SavePanel::setResponder([&](const SavePanel &) { return chosen; });
        document.saveDocumentAs(nullptr);
    }
    void waitForSave()
    {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !document.isSaving(); }));
    }

    QUrl file = makeFile("a.pdf");
    TextDocument &document = *open(file);
};

TEST_F(DocumentTest, EachSaveTakesTheContentOfItsMomentAndWaitsForTheOneBefore)
{
    QList<QByteArray> written;
    QList<bool> editedAfter;
    const auto note = [&](const Result<void> &outcome) {
        EXPECT_TRUE(outcome);
        written.append(content(file));
        editedAfter.append(document.isDocumentEdited());
    };
    document.edit("first");
    document.gate->lock();
    document.saveToURL(file, note);
    document.edit("second");
    document.saveToURL(file, note);
    document.gate->unlock();
    waitForSave();
    EXPECT_EQ(written, QList<QByteArray>({"first", "second"}));
    EXPECT_EQ(editedAfter, QList<bool>({true, false}));
}

TEST_F(DocumentTest, AFailedSaveIsShownAndKeepsTheDocumentOpenAndEdited)
{
    document.edit("new");
    document.setFileUrl(urlOf("nowhere/a.pdf"));
    document.saveDocument(nullptr);
    waitForSave();
    EXPECT_EQ(questions, QStringList(QStringLiteral("“a.pdf” could not be saved.")));
    document.close();
    waitForSave();
    EXPECT_EQ(questions.size(), 3); // whether to save, and that it failed
    EXPECT_TRUE(windowOf(document)->isVisible());
    EXPECT_TRUE(document.isDocumentEdited());

    document.setFileUrl(file);
    document.saveDocument(nullptr);
    waitForSave();
    EXPECT_EQ(content(file), "new");
    EXPECT_FALSE(document.isDocumentEdited());
}

TEST_F(DocumentTest, NeitherNothingNorWhatIsReadOnlyIsWritten)
{
    QStringList reasons;
    const auto note = [&](const auto &outcome) { reasons.append(outcome ? QString() : outcome.error().message); };
    document.edit("");
    document.saveToURL(file, note);
    waitForSave();
    document.edit("new");
    document.readOnlyReason = QStringLiteral("For reading only.");
    document.saveToURL(file, note);
    waitForSave();
    EXPECT_EQ(reasons, QStringList({QStringLiteral("The document could not be saved."), document.readOnlyReason}));
    document.saveDocument(nullptr);
    document.saveDocumentAs(nullptr); // without asking for a name: no panel is answered here
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(content(file), "text");
}

TEST_F(DocumentTest, SaveAsAddsAMissingExtensionAsksOnceBeforeItOverwritesAndRefusesWhatIsOpen)
{
    const QUrl other = makeFile("50% b.pdf", "other");
    document.edit("new");
    answers = {0};
    saveAs(urlOf("50% b")); // the panel could not see that the file exists
    EXPECT_FALSE(document.isSaving());
    saveAs(urlOf("50% b"));
    waitForSave();
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(document.fileUrl(), other);
    EXPECT_EQ(content(other), "new");
    EXPECT_EQ(content(file), "text");
    EXPECT_FALSE(document.isDocumentEdited());
    saveAs(file); // the panel itself has asked about this name
    waitForSave();
    EXPECT_EQ(questions.size(), 2);
    open(other);
    saveAs(other);
    EXPECT_FALSE(document.isSaving());
    EXPECT_EQ(questions.last(), QStringLiteral("“50% b.pdf” is open in another window."));
}

TEST_F(DocumentTest, ClosingTheWindowFollowsTheAnswerToItsQuestion)
{
    const QPointer<Document> unedited = &document;
    windowOf(document)->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(unedited);
    EXPECT_TRUE(questions.isEmpty());

    const std::tuple<int, int, const char *> cases[] = {{1, 0, "new"}, {0, 0, "text"}, {-1, 1, "text"}};
    for (const auto &[answer, documentsLeft, contentLeft] : cases) {
        const QPointer<TextDocument> edited = open(makeFile("a.pdf"));
        edited->edit("new");
        answers = {answer};
        windowOf(*edited)->close();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !edited || !edited->isSaving(); }));
        EXPECT_EQ(controller.documents().size(), documentsLeft);
        EXPECT_EQ(content(file), contentLeft);
    }
    EXPECT_EQ(questions.size(), 3);
    EXPECT_EQ(questions.first(), QStringLiteral("Save changes to “a.pdf” before closing?"));
}

TEST_F(DocumentTest, ClosingWaitsForItsSaveAndAsksOnceAboutEditsMadeMeanwhile)
{
    document.edit("first");
    document.gate->lock();
    answers = {1, 0};
    document.close();
    document.close();
    EXPECT_EQ(questions.size(), 1);
    EXPECT_EQ(controller.documents().size(), 1);
    document.edit("second");
    document.gate->unlock();
    EXPECT_TRUE(QTest::qWaitFor([this] { return controller.documents().isEmpty(); }));
    EXPECT_EQ(questions.size(), 2);
    EXPECT_EQ(content(file), "first");
}

} // namespace inkory::test
