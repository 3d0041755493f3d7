#include "ApplicationFixture.h"

#include "V1/application/FindBar.h"
#include "V1/application/WebAddress.h"
#include "platform/widgets/OutlineView.h"

#include <QAction>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QTabBar>
#include <QTabWidget>

namespace inkory::test
{

/// The window of a document with three pages: "First word", "Second word, last word", "Third".
class ReadingTest : public DocumentWindowFixture
{
protected:
    ReadingTest() : DocumentWindowFixture(textPages({"First word", "Second word, last word", "Third"}))
    {
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.windowHandle()));
    }
    ~ReadingTest() override { setAddressOpener({}); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window.focusWidget(), key, modifiers);
    }
    /// Whether the line on that page comes to be seen.
    bool sees(int page)
    {
        const PagePoint line{80, 705};
        const PDFPage *shown = document.pdfDoc()->pageAtIndex(page);
        return QTest::qWaitFor([&] { return view.visibleRect().contains(view.convertPointFromPage(line, shown)); },
                               1000);
    }
    bool counts(const char *text)
    {
        return QTest::qWaitFor([&] { return part<QLabel>("findCount").text() == QLatin1String(text); });
    }
};

TEST_F(ReadingTest, FindsByKeysGoesRoundAndLeavesWithEscape)
{
    EXPECT_FALSE(sees(1));
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(window.focusWidget(), &part<QLineEdit>("findField"));
    QTest::keyClicks(window.focusWidget(), QStringLiteral("WORD"));
    EXPECT_TRUE(counts("1 of 3"));
    press(Qt::Key_Return);
    EXPECT_TRUE(counts("2 of 3"));
    EXPECT_TRUE(sees(1));
    press(Qt::Key_F3);
    press(Qt::Key_F3);
    EXPECT_TRUE(counts("1 of 3"));
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_TRUE(counts("3 of 3"));

    QTest::keyClicks(window.focusWidget(), QStringLiteral(" is not here"));
    press(Qt::Key_Return);
    EXPECT_TRUE(counts("Not found"));
    EXPECT_FALSE(part<QLabel>("findNote").isVisible()) << "the document has text";
    press(Qt::Key_Escape);
    EXPECT_FALSE(part<FindBar>("findBar").isVisible());
    EXPECT_EQ(window.focusWidget(), &view);
}

TEST_F(ReadingTest, BeginsAtTheSelectionAndGoesOnFromTheLastHitAfterEscape)
{
    view.goToPage(1);
    EXPECT_TRUE(sees(1));
    const auto inPages = [this](const PagePoint &point) {
        const ViewPoint there = view.convertPointFromPage(point, document.pdfDoc()->pageAtIndex(1));
        return QPoint(qRound(there.x), qRound(view.height() - there.y));
    };
    // "Second word, last word": the last word begins 149 points behind the line's beginning.
    EXPECT_TRUE(QTest::qWaitFor([&] {
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, inPages({72 + 165, 705}));
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, inPages({72 + 165, 705}));
        return view.selectedText() == QLatin1String("word");
    }));
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(counts("3 of 3"));
    view.setFocus();
    press(Qt::Key_Escape);
    EXPECT_FALSE(part<FindBar>("findBar").isVisible()) << "also from the pages";
    view.goToPage(2);
    press(Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_TRUE(counts("2 of 3"));
    press(Qt::Key_Escape);
    press(Qt::Key_F3);
    EXPECT_TRUE(counts("3 of 3"));
}

TEST_F(ReadingTest, CopiesThePagesTextAndFieldsKeepTheirOwn)
{
    EXPECT_FALSE(part<QAction>("actionCopy").isEnabled());
    view.setFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return part<QAction>("actionCopy").isEnabled(); }));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().trimmed(), QStringLiteral("First word"));
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(part<QLineEdit>("findField").text(), QStringLiteral("First word"));
    QTest::keyClicks(window.focusWidget(), QStringLiteral("other"));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("other"));
}

TEST_F(ReadingTest, TheOutlineIsASecondTabOnlyWhereThereIsOne)
{
    const PageSpec page{.contents = {textContent("text")}};
    const PDFDocumentModel &outlined =
        open(makeFile("b.pdf", makePdf({page, page}, {}, "/Outlines 8 0 R",
                                       {"<< /First 9 0 R /Last 9 0 R /Count 2 >>",
                                        "<< /Title (Outer) /Parent 8 0 R /First 10 0 R /Last 10 0 R /Count 1 >>",
                                        "<< /Title (Inner) /Parent 9 0 R /Dest [7 0 R /Fit] >>"})));
    QWidget &other = *outlined.pdfWindowController()->window();
    auto *panel = other.findChild<QTabWidget *>(QStringLiteral("sidePanel"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel->count() == 2; }));
    EXPECT_TRUE(panel->tabBar()->isVisible());
    EXPECT_FALSE(part<QTabWidget>("sidePanel").tabBar()->isVisible());
    EXPECT_EQ(part<QTabWidget>("sidePanel").count(), 1);

    EXPECT_EQ(panel->width(), 170);
    panel->setCurrentIndex(1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return panel->width() == 260; })) << "titles need more room than thumbnails";
    panel->setCurrentIndex(0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return panel->width() == 170; }));
    panel->setCurrentIndex(1);
    auto *tree = other.findChild<OutlineView *>();
    tree->setFocus();
    const KRPDFView &pages = *outlined.pdfWindowController()->pdfView();
    QTest::keyClick(tree, Qt::Key_Down); // the outer line is open
    EXPECT_EQ(tree->currentIndex().data().toString(), QStringLiteral("Inner"));
    QTest::keyClick(tree, Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return pages.currentPageIndex() == 1; }));
    EXPECT_TRUE(pages.canGoBack());
    QTest::keyClick(&other, Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return pages.currentPageIndex() == 0; }));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(tree->currentIndex()).center());
    EXPECT_TRUE(QTest::qWaitFor([&] { return pages.currentPageIndex() == 1; }));
}

TEST_F(ReadingTest, AnAddressIsOpenedOnlyAfterTheQuestion)
{
    QList<QUrl> opened;
    setAddressOpener([&](const QUrl &url) {
        opened.append(url);
        return true;
    });
    const QString address = QStringLiteral("https://example.org/<b>?q=") + QString(60, u'x');
    answers = {0, 1};
    Q_EMIT view.addressActivated(address);
    EXPECT_TRUE(questions.isEmpty()) << "the press that it came from ends first";
    QCoreApplication::processEvents();
    ASSERT_EQ(questions.size(), 1);
    EXPECT_EQ(questions.first().at(0), QStringLiteral("Open this address?"));
    EXPECT_EQ(QString(questions.first().at(1)).remove(u'\u200b'),
              QStringLiteral("It leads to: example.org\n\nhttps://example.org/%3Cb%3E?q=") + QString(60, u'x'));
    EXPECT_EQ(questions.first().mid(2), QStringList({QStringLiteral("Open"), QStringLiteral("Cancel")}));
    EXPECT_TRUE(opened.isEmpty());
    EXPECT_EQ(openAddressIfAgreed(address, &window), AddressOutcome::Opened);
    EXPECT_EQ(opened, QList<QUrl>({QUrl(address)}));
    for (const char *other : {"file:///etc/passwd", "javascript:alert(1)", "https:///x", "mailto:", "HTTP", ""})
        EXPECT_EQ(openAddressIfAgreed(QLatin1String(other), &window), AddressOutcome::Failed) << other;
    EXPECT_EQ(questions.size(), 2);

    openAddressIfAgreed(QStringLiteral("https://bank.example@evil.example"), &window);
    EXPECT_EQ(questions.last().at(1).section(u'\n', 0, 1),
              QStringLiteral("It leads to: evil.example\n"
                             "What stands before “@” is only a user name: bank.example"));
    openAddressIfAgreed(QStringLiteral("mailto:a@x.org?attach=/etc/passwd&Subject=a%26b&cc=c@x.org#x"), &window);
    EXPECT_EQ(opened.last().toString(QUrl::FullyEncoded), QStringLiteral("mailto:a@x.org?Subject=a%26b&cc=c@x.org"));
}

TEST_F(ReadingTest, ALinksMenuOpensAndCopiesItsAddress)
{
    const QByteArray link = linkAnnotation("72 400 172 420", "/A << /S /URI /URI (https://example.org/) >>");
    const PDFDocumentModel &linked =
        open(makeFile("b.pdf", makePdf({PageSpec{.contents = {""}, .more = "/Annots [" + link + "]"}})));
    const KRPDFView &pages = *linked.pdfWindowController()->pdfView();
    ViewPoint onLink;
    EXPECT_TRUE(QTest::qWaitFor([&] {
        onLink = pages.convertPointFromPage({100, 410}, linked.pdfDoc()->pageAtIndex(0));
        return pages.isOverLink(onLink);
    }));
    const QPoint place(qRound(onLink.x), qRound(pages.height() - onLink.y));
    QContextMenuEvent wanted(QContextMenuEvent::Mouse, place, pages.mapToGlobal(place));
    QCoreApplication::sendEvent(pages.viewport(), &wanted);
    const auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->actions().at(1)->text(), QStringLiteral("Copy A&ddress"));
    menu->actions().at(1)->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("https://example.org/"));
    answers = {0};
    menu->actions().first()->trigger();
    EXPECT_TRUE(QTest::qWaitFor([this] { return questions.size() == 1; }));
    QApplication::activePopupWidget()->close();
}

TEST_F(ReadingTest, EveryMenuItemHasAKeyOfItsOwn)
{
    auto &bar = part<QMenuBar>("menubar");
    QList<QMenu *> menus = bar.findChildren<QMenu *>(Qt::FindDirectChildrenOnly);
    EXPECT_GE(menus.size(), 6);
    QSet<QKeySequence> shortcuts;
    for (const QMenu *menu : menus) {
        QSet<QKeySequence> keys;
        for (const QAction *item : menu->actions()) {
            const QKeySequence key = QKeySequence::mnemonic(item->text());
            EXPECT_FALSE(!key.isEmpty() && keys.contains(key)) << item->text().toStdString();
            EXPECT_FALSE(!item->shortcut().isEmpty() && shortcuts.contains(item->shortcut()))
                << item->text().toStdString();
            keys.insert(key);
            shortcuts.insert(item->shortcut());
        }
    }
}

} // namespace inkory::test
