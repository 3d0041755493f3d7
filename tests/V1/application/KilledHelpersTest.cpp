#include "V1/application/ApplicationFixture.h"
#include "V1/stamps/KRPDFPage.h"
#include "support/Helpers.h"

#include <QScrollBar>

#include <csignal>
#include <random>

using namespace inkory;

namespace
{

class KilledHelpers : public test::OpenedDocumentFixture
{
protected:
    // Things that a person does with an open document, chosen at random.
    void doSomething(KRPDFView &view)
    {
        const int pages = view.document()->pageCount();
        const int choice = std::uniform_int_distribution(0, 4)(m_random);
        if (choice == 0) {
            view.setScaleFactor(std::uniform_real_distribution(0.3, 2.0)(m_random));
        } else if (choice == 1) {
            view.goToPage(std::uniform_int_distribution(0, pages - 1)(m_random));
        } else if (choice == 2) {
            view.verticalScrollBar()->setValue(
                std::uniform_int_distribution(0, view.verticalScrollBar()->maximum())(m_random));
        } else if (choice == 3) {
            const PDFPage *page = view.document()->pageAtIndex(m_stamps++ % pages);
            view.goToPage(view.document()->indexForPage(page));
            view.addImageStampView(view.convertPointFromPage({300, 400}, page));
        } else {
            view.rotateCurrentPageClockwise();
        }
    }

    std::mt19937 m_random{20'261'123}; // NOLINT(cert-msc51-cpp): the same sequence in each run
    int m_stamps = 0;
};

TEST_F(KilledHelpers, CostNeitherWorkNorPages)
{
    PDFDocumentModel &model = open(makeFile("letter.pdf", test::manyPages(30)));
    KRPDFDocument &document = *model.pdfDoc();
    KRPDFView &view = *model.pdfWindowController()->pdfView();
    ASSERT_TRUE(QTest::qWaitFor([&] { return document.isGeometrySettled() && view.isContentComplete(); }, 20'000));
    QImage ink(40, 20, QImage::Format_RGB32);
    ink.fill(Qt::red);
    view.setStampImage(Image::fromPixels(ink));

    int kills = 0;
    QTimer killer;
    QObject::connect(&killer, &QTimer::timeout, [&] {
        const std::vector<pid_t> helpers = test::helperProcesses();
        if (!helpers.empty() && kills < 100)
            kills += kill(helpers[m_random() % helpers.size()], SIGKILL) == 0 ? 1 : 0;
    });
    killer.start(25);
    while (kills < 100) {
        doSomething(view);
        QTest::qWait(15);
    }
    killer.stop();

    view.setScaleFactor(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.isContentComplete(); }, 20'000));
    int stamps = 0;
    for (int i = 0; i < document.pageCount(); ++i)
        stamps += static_cast<int>(static_cast<KRPDFPage *>(document.pageAtIndex(i))->stamps().size());
    EXPECT_GT(m_stamps, 10);
    EXPECT_EQ(stamps, m_stamps);
    const QString saved = test::writeFile(folder.path(), QStringLiteral("saved.pdf"), document.dataRepresentation());
    EXPECT_EQ(test::qpdfCheck(saved), QString());
    EXPECT_EQ(test::pdfText(saved, 30).simplified(), QStringLiteral("Page 30"));
    model.closeUnasked();
}

} // namespace
