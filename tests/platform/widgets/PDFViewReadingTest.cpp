#include "ShownView.h"

#include <QApplication>
#include <QClipboard>
#include <QHelpEvent>
#include <QToolTip>

#include <cmath>

using namespace inkory;
using namespace inkory::test;

namespace
{

const QByteArray address = "https://example.org/a?b=<i>";

/// Helvetica of 18 points: "First line here" and "second line" on the first page, links below; one line on the others.
QByteArray pages()
{
    const QByteArray inside = linkAnnotation("72 500 172 520", "/Dest [2 /XYZ 0 650 0]");
    const QByteArray outside = linkAnnotation("72 400 172 420", "/A << /S /URI /URI (" + address + ") >>");
    return makePdf({PageSpec{.contents = {textContent("First line here"), textContent("second line", 72, 670)},
                             .more = "/Annots [" + inside + " " + outside + "]"},
                    PageSpec{.contents = {textContent("Middle page")}},
                    PageSpec{.contents = {textContent("Last page")}},
                    {}});
}

class Reading : public ShownView<>
{
protected:
    void SetUp() override
    {
        open(pages());
        view.resize(700, 600);
        ASSERT_TRUE(isDrawn());
    }

    ViewPoint at(double x, double y, int page = 0) const
    {
        return view.convertPointFromPage({x, y}, document.pageAtIndex(page));
    }

    bool isRead() const
    {
        return QTest::qWaitFor([&] { return view.isOverText(at(80, 705)) && view.isOverLink(at(80, 410)); }, 10000);
    }

    void press(const ViewPoint &point, Qt::KeyboardModifiers keys = {})
    {
        QTest::mousePress(view.windowHandle(), Qt::LeftButton, keys, inWidget(point));
    }
    void move(const ViewPoint &point) { QTest::mouseMove(view.windowHandle(), inWidget(point)); }
    void release(const ViewPoint &point)
    {
        QTest::mouseRelease(view.windowHandle(), Qt::LeftButton, {}, inWidget(point));
    }
    void click(const ViewPoint &point) { QTest::mouseClick(view.windowHandle(), Qt::LeftButton, {}, inWidget(point)); }
    void drag(const ViewPoint &from, const ViewPoint &to)
    {
        press(from);
        move(to);
        release(to);
    }
    bool isAt(const PDFView::Place &place) const
    {
        return view.place().pageIndex == place.pageIndex && std::abs(view.place().corner.y - place.corner.y) < 0.01;
    }
    QColor pixel(const ViewPoint &point)
    {
        const QImage shown = view.viewport()->grab().toImage();
        return shown.pixelColor(inWidget(point) * shown.devicePixelRatio());
    }
};

// Widths of Helvetica in thousandths: F 611, i 222, r 333, s 500, t 278, so that "First" ends 35 points further on.
TEST_F(Reading, ADragSelectsTextAcrossLinesAndPagesAlsoBeforeItIsRead)
{
    QSignalSpy changes(&view, &PDFView::textSelectionChanged);
    drag(at(72 + 39, 705), at(72 + 59, 675)); // "First |line here", "second| line"
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.hasTextSelection(); }, 10000));
    EXPECT_EQ(view.selectedText(), QStringLiteral("line here\nsecond"));
    EXPECT_GE(changes.count(), 1);
    view.setScaleFactor(0.5);
    drag(at(72 + 39, 705), at(200, 705, 1));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.selectedText().endsWith(QStringLiteral("Middle page")); }, 10000));
    EXPECT_EQ(view.selectedText(), QStringLiteral("line here\nsecond line\nMiddle page"));
    view.copySelection();
    EXPECT_EQ(QApplication::clipboard()->text(), view.selectedText());

    document.exchangePages(0, 1);
    view.layoutDocumentView();
    EXPECT_EQ(view.selectedText(), QStringLiteral("\nFirst ")) << "from the one place to the other as they are now";
    click(at(300, 100));
    EXPECT_FALSE(view.hasTextSelection());
    EXPECT_EQ(view.selectedText(), QString());
}

TEST_F(Reading, SeveralClicksSelectWordsAndLinesAndShiftExtends)
{
    ASSERT_TRUE(isRead());
    const ViewPoint first = at(85, 705);
    QApplication::setDoubleClickInterval(5000);
    click(first);
    press(first);
    EXPECT_EQ(view.selectedText(), QStringLiteral("First"));
    move(at(72 + 45, 705));
    EXPECT_EQ(view.selectedText(), QStringLiteral("First line"));
    release(at(72 + 45, 705));
    click(first);
    EXPECT_EQ(view.selectedText(), QStringLiteral("First line here"));
    press(at(72 + 39, 675), Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), QStringLiteral("First line here\nsecond line"));
    release(at(72 + 39, 675));
    click(at(300, 705));
    QApplication::setDoubleClickInterval(400);
    EXPECT_FALSE(view.hasTextSelection());
    view.selectAllText();
    EXPECT_EQ(view.selectedText(), QStringLiteral("First line here\nsecond line"));
    view.clearTextSelection();
    EXPECT_FALSE(view.hasTextSelection());
}

TEST_F(Reading, ADragBeyondTheEdgeScrollsAndSelectsOn)
{
    ASSERT_TRUE(isRead());
    press(at(72, 705));
    move({300, -30});
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.currentPageIndex() == 2; }, 10000));
    release({300, -30});
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.selectedText().contains(QStringLiteral("Middle page\n")); }, 10000));
}

TEST_F(Reading, EscapeOrTheLossOfTheWindowEndsADrag)
{
    ASSERT_TRUE(isRead());
    for (const QEvent::Type end : {QEvent::KeyPress, QEvent::WindowBlocked}) {
        press(at(72 + 39, 705));
        move(at(72 + 59, 675));
        ASSERT_TRUE(view.hasTextSelection());
        if (end == QEvent::KeyPress) {
            QTest::keyClick(&view, Qt::Key_Escape);
        } else {
            QEvent event(end);
            QApplication::sendEvent(&view, &event);
        }
        const QString selected = view.selectedText();
        EXPECT_EQ(selected.isEmpty(), end == QEvent::KeyPress);
        move(at(72 + 20, 675));
        EXPECT_EQ(view.selectedText(), selected);
        release(at(72 + 20, 675));
    }
}

TEST_F(Reading, LinksInsideGoThereAndBack)
{
    ASSERT_TRUE(isRead());
    QSignalSpy histories(&view, &PDFView::historyChanged);
    const PDFView::Place start = view.place();
    drag(at(80, 510), at(140, 510));
    EXPECT_FALSE(view.canGoBack()) << "a drag follows no link";
    click(at(80, 510));
    EXPECT_TRUE(view.canGoBack());
    EXPECT_EQ(histories.count(), 1);
    EXPECT_NEAR(at(0, 650, 2).y, view.height(), 1.01) << "its top is at the view's";
    const PDFView::Place there = view.place();
    view.goBack();
    EXPECT_TRUE(isAt(start));
    EXPECT_TRUE(!view.canGoBack() && view.canGoForward());
    QTest::mouseClick(view.windowHandle(), Qt::ForwardButton, {}, QPoint(300, 300));
    EXPECT_TRUE(isAt(there));
    view.followDestination({2, 792 - 650.0});
    EXPECT_FALSE(view.canGoForward());
    view.goBack();
    EXPECT_TRUE(isAt(start)) << "going where one is leaves no trace";
    view.followDestination({99, {}});
    EXPECT_TRUE(view.canGoForward());
    document.exchangePages(0, 2);
    EXPECT_EQ(view.pageForSourceIndex(2), document.pageAtIndex(0));
    view.layoutDocumentView();
    view.goForward();
    EXPECT_EQ(view.place().pageIndex, 0) << "the page that was left, wherever it is now";
    EXPECT_EQ(view.pageForSourceIndex(-1), nullptr);
}

TEST_F(Reading, LinksOutsideOnlyTellTheirAddress)
{
    ASSERT_TRUE(isRead());
    QSignalSpy addresses(&view, &PDFView::addressActivated);
    const QPoint place = inWidget(at(80, 410));
    QHelpEvent hover(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
    QApplication::sendEvent(view.viewport(), &hover);
    EXPECT_EQ(QToolTip::text(), QStringLiteral("<qt>https://example.org/a?b=&lt;i&gt;</qt>"));
    QToolTip::hideText();
    press(at(80, 410));
    move(at(83, 410)); // no hand is that steady
    release(at(83, 410));
    ASSERT_EQ(addresses.count(), 1);
    EXPECT_EQ(addresses[0][0].toString(), QString::fromLatin1(address));
    EXPECT_FALSE(view.isOverLink(at(80, 300)));
}

TEST_F(Reading, MarksAreWhereTheyWereFoundAndTheCurrentOneStandsOut)
{
    std::vector<FindHit> marks(20'000, FindHit{3, {QRectF(100, 100, 50, 10)}});
    marks.push_back({0, {QRectF(100, 300, 50, 20)}}); // from the top: 492 in page space
    marks.push_back({0, {QRectF(200, 300, 50, 20), QRectF(200, 330, 50, 20)}});
    marks.push_back({0, {QRectF(550, 300, 1e9, 20)}});
    const QColor groundBeside = pixel(at(617, 482));
    view.setFindMarks(marks, 20'001);
    for (const int rotation : {0, 180}) {
        document.pageAtIndex(0)->setRotation(rotation);
        view.layoutDocumentView();
        ASSERT_TRUE(isDrawn());
        EXPECT_EQ(pixel(at(125, 482)), QColor(255, 232, 110));
        EXPECT_EQ(pixel(at(225, 452)), QColor(255, 180, 80));
        EXPECT_EQ(pixel(at(617, 482)), groundBeside) << "beside the page";
    }
    view.setFindMarks({}, -1);
    EXPECT_EQ(pixel(at(125, 482)), QColor(Qt::white));
}

TEST_F(Reading, InkStaysDarkBelowMarksAndTheCurrentOneIsNotSelectedToo)
{
    ASSERT_TRUE(isRead());
    const ViewPoint stem = at(72 + 2.4, 704); // of the F: 0.086 to 0.18 of its size
    const int ink = pixel(stem).value();
    ASSERT_LT(ink, 60);
    view.selectAllText();
    EXPECT_TRUE(view.selectedPlace());
    const auto isDarkButSeen = [&] {
        return std::clamp(pixel(stem).value() - ink, 25, 50) == pixel(stem).value() - ink;
    };
    EXPECT_TRUE(isDarkButSeen()) << "on a dark page there is nothing else to see";
    const QColor selected = pixel(at(72 + 37, 705)); // the space between the words
    view.setFindMarks({{0, {QRectF(72, 76, 39, 20)}}}, 0);
    EXPECT_TRUE(isDarkButSeen());
    EXPECT_EQ(pixel(at(72 + 37, 705)), QColor(255, 180, 80));
    EXPECT_EQ(pixel(at(72 + 70, 705)), selected);
}

} // namespace
