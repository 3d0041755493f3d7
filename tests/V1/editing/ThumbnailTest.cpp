#include "V1/editing/EditingFixture.h"
#include "platform/widgets/PDFThumbnailView.h"

using namespace inkory;
using namespace inkory::test;

namespace
{

class Thumbnails : public EditingFixture
{
protected:
    void openWithThumbnails(const QByteArray &bytes)
    {
        open(bytes);
        thumbnails = new PDFThumbnailView(window.centralWidget());
        view->setGeometry(160, 0, 540, 500);
        thumbnails->setGeometry(0, 0, 160, 500);
        thumbnails->setPDFView(view);
        thumbnails->show();
    }
    QModelIndex row(int page) const { return thumbnails->model()->index(page, 0); }
    QString spoken(int page) const { return row(page).data(Qt::AccessibleTextRole).toString(); }
    /// What a page of US letter shows in its upper right corner: the picture is 120 x 155 pixels, 10 below its cell's
    /// top, and the mark's middle is 9 pixels from both of its edges.
    QColor corner(int page) const
    {
        const QRect cell = thumbnails->visualRect(row(page));
        const QPoint place(cell.left() + (cell.width() - 120) / 2 + 110, cell.top() + 20);
        return thumbnails->viewport()->grab().toImage().pixelColor(place);
    }

    PDFThumbnailView *thumbnails = nullptr; // the window's
};

TEST_F(Thumbnails, StampedPagesHaveADotAndSaySo)
{
    openWithThumbnails(threePages());
    const QColor dot = thumbnails->palette().color(QPalette::Highlight);
    view->addStampView(KRImageStamp::create(image(), {300, 100, 0, 0}, view, &page(1)));
    EXPECT_EQ(corner(1), dot);
    EXPECT_EQ(corner(0), QColor(Qt::white));
    EXPECT_EQ(spoken(1), QStringLiteral("Page 2, stamped"));
    EXPECT_EQ(spoken(0), QStringLiteral("Page 1"));
    const QSignalSpy changed(thumbnails->model(), &QAbstractItemModel::dataChanged);
    view->deleteSelectedStampView();
    EXPECT_EQ(corner(1), QColor(Qt::white));
    EXPECT_EQ(spoken(1), QStringLiteral("Page 2"));
    EXPECT_FALSE(changed.isEmpty()) << "screen readers are told";
}

TEST_F(Thumbnails, KeysGoToPagesAndReturnGoesToThePageItself)
{
    openWithThumbnails(manyPages(40));
    thumbnails->setFocus();
    const auto goesTo = [&](Qt::Key key, int page) {
        QTest::keyClick(thumbnails, key);
        EXPECT_EQ(view->currentPageIndex(), page) << key;
        EXPECT_EQ(thumbnails->currentIndex().row(), page);
    };
    goesTo(Qt::Key_Down, 1);
    goesTo(Qt::Key_End, 39);
    goesTo(Qt::Key_Home, 0);
    EXPECT_EQ(window.focusWidget(), thumbnails);
    QTest::keyClick(thumbnails, Qt::Key_Return);
    EXPECT_EQ(window.focusWidget(), view);
}

// Without giving up the pictures that left the view, the last one would come after thousands of others.
TEST_F(Thumbnails, ScrollingThroughThousandsDrawsOnlyWhereItEnds)
{
    std::vector<PageSpec> pages(3000);
    pages.push_back(PageSpec{.contents = {rectangleContent(0, 0, 612, 792, "0 0 1")}});
    openWithThumbnails(makePdf(pages));
    ASSERT_TRUE(QTest::qWaitFor([this] { return view->isContentComplete(); }, 10000));
    QScrollBar *bar = thumbnails->verticalScrollBar();
    for (int value = 0; value < bar->maximum(); value += 300) {
        bar->setValue(value);
        QCoreApplication::processEvents();
    }
    bar->setValue(bar->maximum());
    // Off the screen: to paint it anew would itself give up what is out of sight.
    EXPECT_TRUE(QTest::qWaitFor(
        [this] {
            const QImage shown = window.screen()->grabWindow(window.winId()).toImage();
            return !findInkBounds(shown.copy(0, 0, 160, 500), Qt::blue).isEmpty();
        },
        8000));
}

} // namespace
