#include "V1/editing/EditingFixture.h"
#include "V1/editing/PDFThumbnailView+PrintDocument.h"
#include "platform/pdf/PrintOperation.h"
#include "platform/widgets/Alert.h"
#include "platform/widgets/PDFThumbnailView.h"
#include "platform/widgets/PrintDialog.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

using namespace inkory;
using namespace inkory::test;

namespace
{

/// A person who prints to a file without being asked, and reads alerts.
class Printing : public EditingFixture
{
protected:
    Printing()
    {
        sharedPrintInfo() = PrintInfo();
        setPaper({612, 792});
        window.setWindowTitle(QStringLiteral("contract.pdf[*] — Inkory"));
        window.setWindowFilePath(folder.filePath(QStringLiteral("contract.pdf")));
        setPrintDialogResponder([this](PrintOperation &operation) {
            PrintInfo info = offered = operation.printInfo();
            info.outputFileName = output;
            operation.setPrintInfo(info);
            return true;
        });
        Alert::setResponder([this](const Alert &alert) {
            alerts.append(alert.messageText + QLatin1Char('|') + alert.informativeText);
            return 1;
        });
    }
    ~Printing() override
    {
        setPrintDialogResponder({});
        Alert::setResponder({});
        sharedPrintInfo() = PrintInfo();
    }

    static void setPaper(QSizeF points)
    {
        sharedPrintInfo().pageLayout =
            QPageLayout(QPageSize(points, QPageSize::Point, {}, QPageSize::ExactMatch), QPageLayout::Portrait, {});
    }
    static bool ends(const QWidget &printing)
    {
        return QTest::qWaitFor([&] { return !printing.findChild<QObject *>(QStringLiteral("printJob")); }, 30000);
    }
    bool prints()
    {
        view->printDocument();
        return ends(*view);
    }
    /// Waits until the progress names the page.
    static bool comesTo(const QWidget &over, int page)
    {
        const QString begin = QStringLiteral("Printing page %1 ").arg(page);
        return QTest::qWaitFor(
            [&] {
                const auto *progress = over.findChild<QDialog *>();
                return progress && progress->isVisible() && progress->findChild<QLabel *>()->text().startsWith(begin);
            },
            20000);
    }
    QStringList filesInFolder() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }
    /// The sheet, at 2 pixels per point.
    QImage sheet(int number) const { return renderWithPdftoppm(output, number, 144); }

    QString output = folder.filePath(QStringLiteral("printed.pdf"));
    PrintInfo offered;
    QStringList alerts;
};

void expectBounds(const QImage &sheet, const QColor &color, const QRect &points)
{
    const QRectF found = findInkBounds(sheet, color);
    expectNear({found.topLeft() / 2, found.size() / 2}, points, 1);
}

TEST_F(Printing, ASelectedAndDraggedSignatureIsOpaqueAndWithoutLoss)
{
    open(textPages({"one", "two"}));
    QImage ink(100, 40, QImage::Format_ARGB32);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 100; ++x)
            ink.setPixel(x, y, qRgba(x < 50 ? 10 : 200, 30, y * 6, x < 50 ? 255 : 120));
    }
    const ImagePtr picture = Image::fromPixels(ink);
    for (const int index : {0, 1}) {
        view->addStampView(KRImageStamp::create(picture, {150, 520, 0, 0}, view, &page(index)));
        view->selectedStampView()->setStampMode(index == 0 ? StampModeSelected : StampModeDragging);
    }
    ASSERT_TRUE(prints());
    EXPECT_TRUE(alerts.isEmpty()) << alerts.join(u'\n').toStdString();
    // Frame (100, 500) to (200, 540); opaque red 10, green 30, blue 120 in the middle of the left half.
    for (const int number : {1, 2}) {
        const QRgb found = sheet(number).pixel(250, 544);
        EXPECT_NEAR(qRed(found), 10, 4);
        EXPECT_NEAR(qGreen(found), 30, 4);
        EXPECT_NEAR(qBlue(found), 120, 8);
    }
    std::vector<int> stored;
    const std::vector<ListedImage> images = pdfImages(output);
    const std::vector<QImage> pixels = pdfImagePixels(output);
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(images[i].encoding, QStringLiteral("image")) << "nothing of text and signatures is a JPEG";
        if (images[i].type == QStringLiteral("image") && pixels[i].size() == ink.size()) {
            stored.push_back(images[i].object);
            EXPECT_EQ(pixels[i].pixel(75, 20) & 0xffffffU, qRgb(200, 30, 120) & 0xffffffU);
        }
    }
    ASSERT_EQ(stored.size(), 2U);
    EXPECT_EQ(stored[0], stored[1]) << "stored once";
    EXPECT_EQ(qpdfCheck(output), QString());
}

// A shown box of 300 x 400 at (100, 200); a red bar near its lower left corner, a signature around (330, 515).
TEST_F(Printing, EverythingStandsUprightWhereThePageShowsIt)
{
    struct
    {
        const char *rotate;
        int quarterTurnsByUser;
        QRect red;  // on the sheet, points
        QRect blue; // the left half of the signature
    } const cases[] = {
        {"0", 0, {10, 370, 40, 20}, {200, 70, 30, 30}},   {"90", 0, {10, 10, 20, 40}, {285, 215, 30, 30}},
        {"180", 0, {250, 10, 40, 20}, {40, 300, 30, 30}}, {"270", 0, {370, 250, 20, 40}, {55, 55, 30, 30}},
        {"0", 1, {10, 10, 20, 40}, {285, 215, 30, 30}},   {"90", 3, {10, 370, 40, 20}, {200, 70, 30, 30}}};
    std::vector<PageSpec> pages;
    for (const auto &each : cases)
        pages.push_back({.cropBox = "100 200 400 600",
                         .rotate = each.rotate,
                         .contents = {rectangleContent(110, 210, 40, 20, "1 0 0")}});
    open(makePdf(pages));
    QImage halves(60, 30, QImage::Format_RGB32);
    halves.fill(Qt::green);
    for (int y = 0; y < 30; ++y)
        std::fill_n(reinterpret_cast<QRgb *>(halves.scanLine(y)), 30, qRgb(0, 0, 255));
    const ImagePtr signature = Image::fromPixels(halves);
    for (int i = 0; i < 6; ++i) {
        view->goToPage(i);
        for (int turn = 0; turn < cases[i].quarterTurnsByUser; ++turn)
            view->rotateCurrentPageClockwise();
        view->addStampView(KRImageStamp::create(signature, {330, 515, 0, 0}, view, &page(i)));
    }
    setPaper({300, 400});
    ASSERT_TRUE(prints());
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        const QImage found = sheet(i + 1);
        EXPECT_EQ(found.size(), (page(i).shownSize() * 2).toSize());
        expectBounds(found, Qt::red, cases[i].red);
        expectBounds(found, Qt::blue, cases[i].blue);
        expectBounds(found, Qt::green, cases[i].blue.translated(30, 0));
    }
}

TEST_F(Printing, AFlippedDocumentAndARangeComeInTheOrderShown)
{
    std::vector<PageSpec> pages;
    for (const char *color : {"1 0 0", "0 1 0", "0 0 1"})
        pages.push_back(PageSpec{.contents = {rectangleContent(20, 742, 50, 30, color)}});
    open(makePdf(pages));
    view->flipDocument();
    sharedPrintInfo().pages = QPageRanges::fromString(QStringLiteral("1-2"));
    ASSERT_TRUE(prints());
    ASSERT_EQ(pdfRotations(output)->size(), 2U);
    // From the upper left corner to the lower right one.
    expectBounds(sheet(1), Qt::blue, {542, 742, 50, 30});
    expectBounds(sheet(2), Qt::green, {542, 742, 50, 30});
    EXPECT_TRUE(sharedPrintInfo().pages.isEmpty()) << "a range is not for the next document";
}

TEST_F(Printing, TheThumbnailsPrintAsTheViewDoesAndSettingsStay)
{
    open(makePdf({PageSpec{.mediaBox = "0 0 306 396", .contents = {rectangleContent(0, 0, 100, 100, "1 0 0")}}}));
    view->addStampView(KRImageStamp::create(image(), {200, 300, 0, 0}, view, &page(0)));
    PDFThumbnailView thumbnails;
    printDocument(thumbnails);
    EXPECT_FALSE(QFile::exists(output)) << "without a view there is nothing to print";
    thumbnails.setPDFView(view);
    sharedPrintInfo().scaling = PageScaling::FitToPage;
    sharedPrintInfo().colors = PrintColors::Gray;
    const QSignalSpy told(view, &PDFView::printedToFile);
    printDocument(thumbnails);
    ASSERT_TRUE(ends(*view));
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(told[0][0].toString(), QStringLiteral("printed.pdf"));
    EXPECT_EQ(offered.scaling, PageScaling::FitToPage);
    EXPECT_EQ(offered.outputFileName, folder.filePath(QStringLiteral("contract (printed).pdf")));
    const QImage printed = sheet(1);
    EXPECT_TRUE(printed.allGray());
    EXPECT_NEAR(qRed(printed.pixel(390, 1194)), 127, 12) << "what light there is in red";
    EXPECT_EQ(qRed(printed.pixel(410, 1174)), 255) << "the page is twice its size";
    EXPECT_NEAR(qRed(printed.pixel(800, 384)), 76, 12) << "the blue signature";
}

TEST_F(Printing, APageThatCannotBeDrawnSaysSoOnPaperAndOnTheScreen)
{
    document.initWithURL(writeFile(
        folder.path(), QStringLiteral("document.pdf"),
        makePdf({{}, PageSpec{.contents = {rectangleContent(0, 0, 9, 9, "1 0 0")}}}).replace("/Count 2", "/Count 3")));
    view->setDocument(&document);
    view->printDocument();
    EXPECT_FALSE(QFile::exists(output)) << "a document that is not open yet";
    ASSERT_TRUE(QTest::qWaitFor([this] { return document.state() == PDFDocument::State::Open; }, 10000));
    ASSERT_TRUE(prints()) << "it waits until the sizes of all pages are known";
    EXPECT_EQ(pdfRotations(output)->size(), 3U);
    expectBounds(sheet(2), Qt::red, {0, 783, 9, 9});
    EXPECT_TRUE(pdfText(output, 3).contains(QStringLiteral("This page cannot be drawn.")));
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_TRUE(alerts[0].contains(QStringLiteral("empty page: 3.")));
}

TEST_F(Printing, CancellingLeavesNothingBehind)
{
    open(manyPages(60));
    writeFile(folder.path(), QStringLiteral("printed.pdf"), "former");
    view->printDocument();
    view->printDocument(); // while it prints: nothing
    ASSERT_TRUE(comesTo(window, 3));
    QTest::keyClick(window.findChild<QDialog *>(), Qt::Key_Escape);
    ASSERT_TRUE(ends(*view));
    EXPECT_FALSE(window.findChild<QDialog *>() && window.findChild<QDialog *>()->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([this] { return filesInFolder().size() == 2; }, 5000)) << "what was begun is gone";
    EXPECT_EQ(readFile(output), QByteArray("former"));
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(Printing, EndsQuietlyWithItsDocumentAndWithItsView)
{
    open(manyPages(60));
    auto closed = std::make_unique<KRPDFDocument>();
    closed->initWithURL(folder.filePath(QStringLiteral("document.pdf")));
    view->setDocument(closed.get());
    ASSERT_TRUE(QTest::qWaitFor([&] { return closed->isGeometrySettled(); }, 10000));
    view->printDocument();
    ASSERT_TRUE(comesTo(window, 2));
    closed.reset();
    EXPECT_TRUE(ends(*view));
    auto other = std::make_unique<KRPDFView>();
    other->show();
    other->setDocument(&document);
    other->printDocument();
    ASSERT_TRUE(comesTo(*other, 2));
    other.reset();
    EXPECT_TRUE(QTest::qWaitFor([this] { return filesInFolder().size() == 1; }, 5000));
    EXPECT_TRUE(alerts.isEmpty());
    view->setDocument(&document);
    sharedPrintInfo().pages = QPageRanges::fromString(QStringLiteral("59-60"));
    EXPECT_TRUE(prints()) << "the document can still be printed";
    EXPECT_EQ(pdfRotations(output)->size(), 2U);
}

TEST_F(Printing, AFileThatCannotBeWrittenIsNamedWithWhatToDo)
{
    open(manyPages(1));
    output = folder.filePath(QStringLiteral("missing/printed.pdf"));
    ASSERT_TRUE(prints());
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_TRUE(alerts[0].contains(QStringLiteral("missing/printed.pdf” could not be written.|No such file")));
    EXPECT_TRUE(alerts[0].contains(QStringLiteral("Choose another folder")));
}

/// The same with a printer, whose print system is a script.
class PrintingToPrinter : public Printing
{
protected:
    PrintingToPrinter()
    {
        sharedPrintInfo().printerName = QStringLiteral("office");
        qputenv("PATH", folder.path().toLocal8Bit() + ':' + path);
    }
    ~PrintingToPrinter() override { qputenv("PATH", path); }

    void makeQueue(const QByteArray &script)
    {
        const QString file = writeFile(folder.path(), QStringLiteral("lp"), "#!/bin/sh\n" + script);
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    /// Until the print system, which does not answer, has the pages.
    bool comesToSending(KRPDFView &printing)
    {
        const QString started = folder.filePath(QStringLiteral("started"));
        QFile::remove(started);
        makeQueue("touch '" + started.toLocal8Bit() + "'\nexec sleep 100\n");
        printing.printDocument();
        return QTest::qWaitFor([&] { return QFile::exists(started); }, 20000);
    }

    const QByteArray path = qgetenv("PATH");
};

TEST_F(PrintingToPrinter, APrintSystemThatHangsHoldsNobodyUp)
{
    open(manyPages(2));
    ASSERT_TRUE(comesToSending(*view));
    window.findChild<QDialog *>()->findChild<QPushButton *>()->click();
    ASSERT_TRUE(ends(*view));
    EXPECT_TRUE(alerts.isEmpty()) << "cancelled";
    ASSERT_TRUE(comesToSending(*view));
    auto *patience = view->findChild<QTimer *>(QStringLiteral("printerPatience"));
    ASSERT_TRUE(patience && patience->isActive());
    EXPECT_EQ(patience->interval(), 30'000);
    patience->start(0);
    auto *progress = window.findChild<QDialog *>();
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return progress->findChild<QLabel *>()->text().contains(QStringLiteral("You can wait, or cancel")); },
        5000));
    progress->reject();
    ASSERT_TRUE(ends(*view));
    auto other = std::make_unique<KRPDFView>();
    other->show();
    other->setDocument(&document);
    ASSERT_TRUE(comesToSending(*other));
    other.reset();
    EXPECT_TRUE(alerts.isEmpty()) << "nothing of it is left to be told";
}

TEST_F(PrintingToPrinter, ItGetsTheFinishedPagesAndItsRefusalIsShown)
{
    open(manyPages(2));
    sharedPrintInfo().copies = 3;
    qputenv("PATH", folder.path().toLocal8Bit());
    EXPECT_TRUE(prints());
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_TRUE(alerts[0].contains(QStringLiteral("cups-client"))) << "no such program";
    qputenv("PATH", folder.path().toLocal8Bit() + ':' + path);
    EXPECT_EQ(sharedPrintInfo().copies, 1) << "of the next printout";
    sharedPrintInfo().copies = 3;
    makeQueue("cd " + folder.path().toLocal8Bit() +
              "\necho \"$@\" >arguments\nfor f; do :; done\ncp \"$f\" sent.pdf\n");
    EXPECT_TRUE(prints());
    EXPECT_EQ(alerts.size(), 1);
    const QByteArray arguments = readFile(folder.filePath(QStringLiteral("arguments")));
    EXPECT_TRUE(arguments.startsWith("-d office -t contract.pdf -n 3 -o media=")) << arguments.constData();
    EXPECT_EQ(pdfRotations(folder.filePath(QStringLiteral("sent.pdf")))->size(), 2U);
    makeQueue("echo 'The printer is on fire.'\nexit 1\n");
    EXPECT_TRUE(prints());
    ASSERT_EQ(alerts.size(), 2);
    EXPECT_TRUE(alerts[1].contains(QStringLiteral("“office”.|The print system refused them: The printer is on fire.")));
}

// Asks for pages 2 to 2 at actual size, looks at the preview, goes back, looks again, and prints from there; finds what
// lasts of it the next time.
TEST_F(Printing, TheDialogAndItsPreviewLeadToTheFile)
{
    setPrintDialogResponder({});
    open(manyPages(3));
    view->addStampView(KRImageStamp::create(image(), {300, 400, 0, 0}, view, &page(1)));
    sharedPrintInfo().colors = PrintColors::Gray;
    sharedPrintInfo().sides = PrintSides::ShortEdge;
    int dialogs = 0;
    int previews = 0;
    QTimer person;
    QObject::connect(&person, &QTimer::timeout, [&] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        const auto press = [&](const char *text) {
            for (auto *button : dialog->findChildren<QPushButton *>()) {
                if (button->text() == QString::fromUtf8(text))
                    button->click();
            }
        };
        if (dialog->windowTitle() == QStringLiteral("Print Preview")) {
            EXPECT_TRUE(dialog->findChild<QWidget *>(QStringLiteral("sheet"))->grab().toImage().allGray());
            press(++previews == 1 ? "&Back" : "&Print");
        }
        auto *range = dialog->findChild<QRadioButton *>(QStringLiteral("printRange"));
        if (!range)
            return;
        auto *copies = dialog->findChild<QSpinBox *>(QStringLiteral("copies"));
        auto *file = dialog->findChild<QLineEdit *>(QStringLiteral("filename"));
        if (++dialogs == 1) {
            EXPECT_EQ(file->text(), folder.filePath(QStringLiteral("contract (printed).pdf")));
            file->setText(output);
            copies->setValue(2);
            range->click();
            dialog->findChild<QSpinBox *>(QStringLiteral("to"))->setValue(2);
            dialog->findChild<QSpinBox *>(QStringLiteral("from"))->setValue(2);
            auto *scaling = dialog->findChild<QComboBox *>(QStringLiteral("pageScaling"));
            scaling->setCurrentIndex(scaling->findText(QStringLiteral("Actual size")));
        }
        if (dialogs < 3) {
            press("Pre&view…");
            return;
        }
        EXPECT_EQ(file->text(), folder.filePath(QStringLiteral("contract (printed).pdf")));
        EXPECT_EQ(copies->value(), 1);
        dialog->reject();
    });
    person.start(100);
    EXPECT_TRUE(prints());
    EXPECT_EQ(std::make_pair(dialogs, previews), std::make_pair(2, 2));
    EXPECT_EQ(sharedPrintInfo().scaling, PageScaling::None);
    EXPECT_EQ(pdfRotations(output)->size(), 2U) << "copies";
    EXPECT_EQ(sharedPrintInfo().sides, PrintSides::ShortEdge) << "a file has no say in it";
    view->printDocument();
    EXPECT_EQ(dialogs, 3);
}

} // namespace
