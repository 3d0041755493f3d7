#include "ApplicationFixture.h"

#include "V1/application/InterfaceRegistration.h"
#include "V1/application/PDFWindowController.h"

namespace inkory::test
{

namespace
{

class PDFDocumentModelTest : public ApplicationFixture
{
protected:
    PDFDocumentModelTest()
    {
        registerApplicationInterfaceDescriptions();
        controller.setDocumentFactory([] { return std::make_unique<PDFDocumentModel>(); });
    }

    PDFDocumentModel &open(const QUrl &url, DocumentController::Display display = DocumentController::Display::No)
    {
        PDFDocumentModel *opened = nullptr;
        controller.openDocumentWithContentsOfURL(url, display, [&](const auto &outcome) {
            opened = outcome ? static_cast<PDFDocumentModel *>(*outcome) : nullptr;
        });
        return *opened;
    }
    PDFDocumentModel &openReady(const QUrl &url)
    {
        PDFDocumentModel &document = open(url);
        EXPECT_TRUE(QTest::qWaitFor([&] { return document.pdfDoc()->isGeometrySettled(); }));
        return document;
    }
    static void waitForSave(const Document &document)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !document.isSaving(); }));
    }

    QUrl file = makeFile(QStringLiteral("a.pdf"));
    KRDocumentController controller;
};

} // namespace

TEST_F(PDFDocumentModelTest, MakesOneWindowWithThePdf)
{
    PDFDocumentModel &document = open(file, DocumentController::Display::Yes);
    ASSERT_EQ(document.windowControllers().size(), 1U);
    EXPECT_EQ(document.windowControllers().front().get(), document.pdfWindowController());
    EXPECT_EQ(document.pdfWindowController()->pdfDoc(), document.pdfDoc());
    EXPECT_TRUE(document.pdfWindowController()->window()->isVisible());
}

TEST_F(PDFDocumentModelTest, SaveAsksTheOneQuestion)
{
    PDFDocumentModel &document = openReady(file);
    answers = {0};
    document.undoManager().noteChangeWithoutStep();
    document.saveDocument(nullptr);
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.first().messageText, QStringLiteral("Save the document?"));
    EXPECT_EQ(alerts.first().informativeText, QStringLiteral("This will permanently modify the document."));
    EXPECT_EQ(alerts.first().buttons, QStringList({QStringLiteral("OK"), QStringLiteral("Cancel")}));
    EXPECT_FALSE(document.isSaving());
    EXPECT_TRUE(document.isDocumentEdited());
}

TEST_F(PDFDocumentModelTest, ConfirmedSaveWritesAPdf)
{
    PDFDocumentModel &document = openReady(file);
    document.undoManager().noteChangeWithoutStep();
    QFile::remove(file.toLocalFile());
    document.saveDocument(nullptr);
    waitForSave(document);
    EXPECT_EQ(alerts.size(), 1);
    EXPECT_TRUE(content(file).startsWith("%PDF-"));
    EXPECT_FALSE(document.isDocumentEdited());
}

TEST_F(PDFDocumentModelTest, SaveAsNeverAsksForConfirmation)
{
    PDFDocumentModel &document = openReady(file);
    const QUrl other = QUrl::fromLocalFile(folder.filePath(QStringLiteral("b.pdf")));
    SavePanel::setResponder([&](const SavePanel &) { return other; });
    document.saveDocumentAs(nullptr);
    waitForSave(document);
    EXPECT_TRUE(alerts.isEmpty());
    EXPECT_TRUE(content(other).startsWith("%PDF-"));
    EXPECT_EQ(document.fileUrl(), other);
}

TEST_F(PDFDocumentModelTest, SaveAtClosingDoesNotAskTwice)
{
    PDFDocumentModel &document = openReady(file);
    document.undoManager().noteChangeWithoutStep();
    document.close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.documents().isEmpty(); }));
    EXPECT_EQ(questions(), QStringList(QStringLiteral("Save changes to “a.pdf” before closing?")));
}

TEST_F(PDFDocumentModelTest, AFileThatIsNoPdfOpensEmptyAndCannotBeSaved)
{
    PDFDocumentModel &document = open(makeFile(QStringLiteral("bad.pdf"), "no PDF at all"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return document.pdfDoc()->state() == inkory::PDFDocument::State::Failed; }));
    EXPECT_EQ(document.pdfDoc()->pageCount(), 0);
    const auto data = document.dataOfType(QStringLiteral("application/pdf"));
    ASSERT_FALSE(data);
    EXPECT_EQ(data.error().message, QStringLiteral("The document could not be saved."));
    document.saveDocument(nullptr);
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.first().informativeText, document.pdfDoc()->message());
    EXPECT_FALSE(document.pdfDoc()->message().isEmpty());
    EXPECT_FALSE(document.isSaving());
    EXPECT_EQ(content(document.fileUrl()), "no PDF at all");
}

TEST_F(PDFDocumentModelTest, OnlyADocumentThatOpenedIsRecent)
{
    open(makeFile(QStringLiteral("bad.pdf"), "%PDF-1.7 and nothing else"));
    PDFDocumentModel &document = openReady(file);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !controller.recentDocumentURLs().isEmpty(); }));
    EXPECT_EQ(controller.recentDocumentURLs(), QList<QUrl>({file}));

    const QUrl other = QUrl::fromLocalFile(folder.filePath(QStringLiteral("b.pdf")));
    SavePanel::setResponder([&](const SavePanel &) { return other; });
    document.saveDocumentAs(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return controller.recentDocumentURLs().contains(other); }));
}

TEST_F(PDFDocumentModelTest, DataIsThePdfWithItsPages)
{
    const auto data = openReady(makeFile(QStringLiteral("two.pdf"), textPages({"one", "two"})))
                          .dataOfType(QStringLiteral("anything"));
    ASSERT_TRUE(data);
    PDFDocumentModel &again = openReady(makeFile(QStringLiteral("again.pdf"), *data));
    EXPECT_EQ(again.pdfDoc()->pageCount(), 2);
}

} // namespace inkory::test
