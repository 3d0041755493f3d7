#include "V1/editing/TextFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QTextBlock>

using namespace inkory;

/// From the click that places a text to its undo steps.
class TextEditingTest : public TextFixture
{
};

TEST_F(TextEditingTest, TheFirstCharacterStandsWhereTheClickWasOnPagesOfEveryRotation)
{
    openTurnedPages();
    for (int i = 0; i < 4; ++i) {
        const double zoom = i < 2 ? 1 : 2;
        view->setScaleFactor(zoom);
        view->goToPage(i);
        QCoreApplication::processEvents();
        view->setCurrentToolType(ToolTypeTextStamp);
        click({350, 200});
        ASSERT_TRUE(view->isEditingText()) << i << " " << view->stampViews().size() << " " << view->currentPageIndex();
        const ViewPoint clicked{350, 300}; // the view is 500 high
        type(QStringLiteral("Hg"));
        key(Qt::Key_Escape);
        // The cursor's image is 22 high with the hot spot at 11: the baseline is 11 below the click. A line of DejaVu
        // Sans of 12 points is 14 high, 2.8 of that below the baseline; 5 before the first character.
        const ViewRect rect = view->stampRect(*stamp());
        EXPECT_NEAR(rect.x, clicked.x - 5 * zoom, 0.01) << i;
        EXPECT_NEAR(rect.y, clicked.y - 11 - 2.85 * zoom, 0.11 * zoom) << i;
        EXPECT_NEAR(rect.height, 14 * zoom, 0.11 * zoom) << i;
        EXPECT_EQ(stamp()->stampRotation(), i) << "upright on the screen";
    }
    const double height = stamp()->frame().height;
    EXPECT_NEAR(height, 17 + 10, 1) << "turned by 270 degrees: H and g are 9 and 7.6 wide, the frame's height is that";
}

TEST_F(TextEditingTest, PlacingIsOneStepAndChangingAnother)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("one"));
    key(Qt::Key_Escape);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Add/Delete Stamp"));
    const PageRect before = stamp()->frame();

    key(Qt::Key_Return);
    ASSERT_TRUE(view->isEditingText());
    EXPECT_EQ(view->textEditor()->textCursor().selectedText(), QStringLiteral("one"));
    type(QStringLiteral("1"));
    EXPECT_EQ(text(), QStringLiteral("1")) << "what is selected is replaced";
    type(QStringLiteral(" two\nthree"));
    key(Qt::Key_Escape);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Text changed"));
    const PageRect after = stamp()->frame();
    EXPECT_NEAR(after.height, 2 * before.height, 0.01);
    EXPECT_NEAR(after.y + after.height, before.y + before.height, 0.01) << "the upper edge stays";

    undoManager.undo();
    EXPECT_EQ(text(), QStringLiteral("one"));
    EXPECT_EQ(stamp()->frame(), before);
    undoManager.redo();
    EXPECT_EQ(text(), QStringLiteral("1 two\nthree"));
    EXPECT_EQ(stamp()->frame(), after);
    undoManager.undo();
    undoManager.undo();
    EXPECT_TRUE(view->stampViews().empty());
    EXPECT_FALSE(undoManager.canUndo());
    undoManager.redo();
    undoManager.redo();
    EXPECT_EQ(text(), QStringLiteral("1 two\nthree"));

    key(Qt::Key_Return);
    key(Qt::Key_Escape);
    undoManager.undo();
    EXPECT_EQ(text(), QStringLiteral("one")) << "looking at a text registers nothing";
}

TEST_F(TextEditingTest, AClickOnTheSelectedTextEditsItAndADragMovesIt)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("grab me here"));
    key(Qt::Key_Escape);
    view->setCurrentToolType(ToolTypeSelect);
    view->setSelectedStampView(nullptr);
    const QPoint middle = middleOf(*stamp());
    click(middle);
    EXPECT_FALSE(view->isEditingText()) << "the first click selects";
    press(middle);
    moveBy({30, 20});
    release();
    EXPECT_FALSE(view->isEditingText());
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Stamp Size && Position"));
    click(middleOf(*stamp()));
    EXPECT_TRUE(view->isEditingText());
    EXPECT_FALSE(view->overlays().stampViewOverlay()->isVisible());

    const auto edited = stamp();
    KRStamp &other = addStamp(0, {300, 300, 100, 40}); // its selection ended the edit
    EXPECT_FALSE(view->isEditingText());
    view->setSelectedStampView(edited);
    view->startTextEditing();
    press(middleOf(other));
    moveBy({40, 0});
    release();
    EXPECT_EQ(view->selectedStampView(), &other);
    EXPECT_FALSE(view->isEditingText());
    EXPECT_EQ(other.frame().x, 300) << "the press that ends an edit takes nothing into the hand";
}

TEST_F(TextEditingTest, AnEmptyTextLeavesNothingBehind)
{
    openPage();
    place({100, 700});
    place({100, 500});
    EXPECT_EQ(view->stampViews().size(), 1U);
    view->setCurrentToolType(ToolTypeSelect);
    key(Qt::Key_Escape);
    EXPECT_TRUE(view->stampViews().empty());
    EXPECT_TRUE(page(0).stamps().empty());
    EXPECT_FALSE(undoManager.canUndo());
    EXPECT_FALSE(undoManager.isEdited());

    place({100, 700});
    type(QStringLiteral("gone"));
    key(Qt::Key_Escape);
    const PageRect frame = stamp()->frame();
    QCoreApplication::processEvents();
    key(Qt::Key_Return);
    key(Qt::Key_Backspace);
    key(Qt::Key_Escape);
    EXPECT_TRUE(view->stampViews().empty());
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Add/Delete Stamp"));
    undoManager.undo();
    EXPECT_EQ(text(), QStringLiteral("gone"));
    EXPECT_EQ(stamp()->frame(), frame);
    EXPECT_EQ(page(0).stamps().size(), 1U);
    undoManager.redo();
    EXPECT_TRUE(page(0).stamps().empty());
    undoManager.undo();
    EXPECT_EQ(text(), QStringLiteral("gone"));
}

TEST_F(TextEditingTest, TypingHasAHistoryOfItsOwn)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("first"));
    key(Qt::Key_Escape);
    key(Qt::Key_Return);
    key(Qt::Key_Right);
    type(QStringLiteral(" second"));
    EXPECT_TRUE(view->textEditor()->canUndo());
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(text(), QStringLiteral("first"));
    EXPECT_FALSE(view->textEditor()->canUndo());
    key(Qt::Key_Z, Qt::ControlModifier); // nothing is left; the document's steps are not touched
    EXPECT_TRUE(view->isEditingText());
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(text(), QStringLiteral("first second"));
    key(Qt::Key_Escape);
    EXPECT_FALSE(view->textEditor()->canUndo());
    undoManager.undo();
    EXPECT_EQ(text(), QStringLiteral("first"));

    place({100, 500});
    type(QStringLiteral("x"));
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(text(), QString());
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(text(), QStringLiteral("x")) << "an emptied text can be redone";
}

TEST_F(TextEditingTest, ScrollingZoomingTurningAndToolsEndTheEdit)
{
    openPage();
    const std::vector<std::function<void()>> ways{
        [this] { view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() + 5); },
        [this] { view->setScaleFactor(1.5); },
        [this] { view->rotateCurrentPageClockwise(); },
        [this] { view->flipDocument(); },
        [this] { view->setCurrentToolType(ToolTypeTextStamp); },
        [this] { view->setSelectedStampView(nullptr); },
        [this] { click(view->stampViewToolbar()->mapTo(&window, QPoint(1, 1))); },
        [this] { QTest::mouseClick(view->textEditButton(), Qt::LeftButton); },
    };
    place({100, 700});
    type(QStringLiteral("text"));
    const auto edited = stamp();
    for (std::size_t i = 0; i < ways.size(); ++i) {
        view->setSelectedStampView(edited);
        view->startTextEditing();
        ASSERT_TRUE(view->isEditingText()) << i;
        ways[i]();
        EXPECT_FALSE(view->isEditingText()) << i;
        EXPECT_TRUE(view->textEditor()->isHidden()) << i;
        EXPECT_EQ(text(), QStringLiteral("text")) << i;
    }
}

TEST_F(TextEditingTest, ATextTurnedByAQuarterKeepsItsUpperEdge)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("a turned text"));
    key(Qt::Key_Escape);
    view->rotateSelectedStampClockwise();
    const PageRect turned = stamp()->frame();
    view->startTextEditing();
    type(QStringLiteral("longer than it was before"));
    const OverlayRect editor = view->textEditor()->frame();
    EXPECT_GT(editor.width, editor.height) << "edited upright";
    key(Qt::Key_Escape);
    const PageRect after = stamp()->frame();
    EXPECT_NEAR(after.x, turned.x, 0.01);
    EXPECT_NEAR(after.y + after.height, turned.y + turned.height, 0.01);
    EXPECT_NEAR(after.width, editor.height, 0.01);
    EXPECT_NEAR(after.height, editor.width, 0.01);
}

TEST_F(TextEditingTest, TheToolbarOffersWhatATextNeeds)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("text"));
    const auto expectState = [this](bool isEditing) {
        EXPECT_EQ(view->textEditButton()->isChecked(), isEditing);
        EXPECT_EQ(view->textFontButton()->isEnabled(), isEditing);
        EXPECT_EQ(view->textColorButton()->isEnabled(), isEditing);
        EXPECT_TRUE(view->textBGColorButton()->isEnabled());
        EXPECT_EQ(view->rotateStampCWButton()->isEnabled(), !isEditing);
        EXPECT_EQ(view->stampViewToolbar()->width(), 2 + 6 * 22);
        EXPECT_EQ(view->textBGColorButton()->x(), 2 + 3 * 22);
    };
    expectState(true);
    key(Qt::Key_Escape);
    expectState(false);
    const ViewRect rect = view->stampRect(*stamp());
    EXPECT_NEAR(view->overlays().toolbarRect().y, rect.maxY() + 1, 1);
    QTest::mouseClick(view->textEditButton(), Qt::LeftButton);
    expectState(true);
    addStamp(0, {300, 300, 100, 40});
    click(middleOf(*view->stampViews().front()));
    EXPECT_EQ(view->stampViewToolbar()->width(), 2 + 2 * 22) << "an image can only be turned";
}

TEST_F(TextEditingTest, FormatsAreOfTheSelectionOrOfWhatIsTypedNext)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("plain "));
    view->textEditor()->toggleBold();
    type(QStringLiteral("bold"));
    view->textEditor()->toggleBold();
    view->textEditor()->toggleItalic();
    type(QStringLiteral(" slanted"));
    const auto formats = stamp()->textStorage()->attributedText().runs;
    ASSERT_EQ(formats.size(), 3U);
    EXPECT_EQ(formats[1].text, QStringLiteral("bold"));
    EXPECT_EQ(formats[1].format.fontWeight(), QFont::Bold);
    EXPECT_TRUE(formats[2].format.fontItalic());
    EXPECT_NE(formats[2].format.fontWeight(), QFont::Bold);
    key(Qt::Key_Escape);
    QCoreApplication::processEvents();

    const AttributedText before = stamp()->textStorage()->attributedText();
    view->startTextEditing();
    view->textEditor()->setSelectedRange(6, 4);
    QAction yellow(nullptr);
    yellow.setData(QColor(Qt::yellow));
    view->bgColorSelectedAction(yellow);
    key(Qt::Key_Escape);
    EXPECT_EQ(stamp()->textStorage()->attributedText().runs[1].format.background().color(), QColor(Qt::yellow));
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Text changed")) << "a colour alone is a change";
    undoManager.undo();
    EXPECT_EQ(stamp()->textStorage()->attributedText(), before);

    undoManager.markClean();
    view->setSelectedStampView(stamp());
    view->bgColorSelectedAction(yellow);
    for (const auto &run : stamp()->textStorage()->attributedText().runs)
        EXPECT_EQ(run.format.background().color(), QColor(Qt::yellow)) << "all of it while it is not edited";
    EXPECT_TRUE(undoManager.isEdited());
}

TEST_F(TextEditingTest, OnlyPlainTextThatCanBeShownComesIn)
{
    openPage();
    QSignalSpy refused(view, &KRPDFView::textRefused);
    place({100, 700});
    auto *rich = new QMimeData;
    rich->setHtml(QStringLiteral("<table><tr><td><b>cell</b></td></tr></table>"));
    rich->setText(QStringLiteral("one\r\ntwo\tthree\x07\xAD"));
    QGuiApplication::clipboard()->setMimeData(rich);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text(), QStringLiteral("one\ntwo\tthree\xAD"));
    ASSERT_EQ(refused.count(), 1);
    EXPECT_EQ(stamp()->textStorage()->attributedText().runs.size(), 1U) << "in one format";

    QString broken = QStringLiteral("x😀y");
    broken.remove(2, 1); // leaves half of a pair
    view->textEditor()->insertPlainText(broken);
    EXPECT_TRUE(text().endsWith(QStringLiteral("xy")));
    EXPECT_EQ(refused.count(), 2);

    view->textEditor()->setSelectedRange(0, stamp()->textStorage()->length());
    QGuiApplication::clipboard()->setText(QString(1 << 20, QLatin1Char('w')));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text().size(), TextStampEditor::maxLength);
    type(QStringLiteral("w"));
    EXPECT_EQ(text().size(), TextStampEditor::maxLength);
    ASSERT_EQ(refused.count(), 4);
    EXPECT_EQ(refused[2][0].toString(), QStringLiteral("A text can have 10,000 characters. The rest was left out."));
    key(Qt::Key_Escape);
    EXPECT_GT(stamp()->frame().width, 50000) << "one very long word";

    view->startTextEditing();
    view->textEditor()->insertPlainText(QString(3000, QLatin1Char('\n')));
    key(Qt::Key_Escape);
    EXPECT_NEAR(stamp()->frame().height, 3001 * 14, 3001 * 0.11);
    window.grab();
}

TEST_F(TextEditingTest, InputMethodsComposeInPlace)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("ab"));
    const double before = view->textEditor()->frame().width;
    QInputMethodEvent composing(QStringLiteral("にほん"), {});
    QApplication::sendEvent(QApplication::focusWidget(), &composing);
    EXPECT_EQ(text(), QStringLiteral("ab"));
    EXPECT_GT(view->textEditor()->frame().width, before + 20) << "there is space for what is being composed";
    EXPECT_NEAR(view->textEditor()->frame().height, 14, 4) << "in the same line";
    QInputMethodEvent committing(QString(), {});
    committing.setCommitString(QStringLiteral("日本"));
    QApplication::sendEvent(QApplication::focusWidget(), &committing);
    EXPECT_EQ(text(), QStringLiteral("ab日本"));
    const QRect caret = view->textEditor()->inputMethodQuery(Qt::ImCursorRectangle).toRectF().toRect();
    EXPECT_NEAR(caret.x(), view->textEditor()->frame().width - 5, 3);
}

TEST_F(TextEditingTest, AStepWithoutTextAndFrameIsHarmless)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("text"));
    key(Qt::Key_Escape);
    stamp()->setTextWithFrameAndPage({{QStringLiteral("text"), QVariant::fromValue(AttributedText{})},
                                      {QStringLiteral("page"), QVariant::fromValue<PDFPage *>(&page(0))}});
    EXPECT_EQ(stamp()->frame(), PageRect{});
    window.grab();
    undoManager.undo();
    EXPECT_EQ(text(), QStringLiteral("text"));
}
