#include "V1/editing/TextFixture.h"
#include "platform/widgets/FontPanel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTextBlock>
#include <QTextLayout>

using namespace inkory;

/// Where an edit meets something else that happens.
class TextEditingEdgesTest : public TextFixture
{
protected:
    void writeOne()
    {
        openPage();
        place({100, 700});
        type(QStringLiteral("one"));
        key(Qt::Key_Escape);
        QCoreApplication::processEvents();
    }

    QColor colorOf(int run) const
    {
        return stamp()
            ->textStorage()
            ->attributedText()
            .runs.at(static_cast<std::size_t>(run))
            .format.foreground()
            .color();
    }
};

TEST_F(TextEditingEdgesTest, ANarrowerWindowEndsTheEditAndMovesNothing)
{
    writeOne();
    const PageRect before = stamp()->frame();
    view->startTextEditing();
    view->setGeometry(0, 0, 500, 400);
    QCoreApplication::processEvents();
    EXPECT_FALSE(view->isEditingText());
    EXPECT_NEAR(stamp()->frame().x, before.x, 0.01);
    EXPECT_NEAR(stamp()->frame().y, before.y, 0.01);
}

TEST_F(TextEditingEdgesTest, FormatsFollowTheCursorAndStayInNewLines)
{
    openPage();
    place({100, 700});
    QTextCharFormat color;
    color.setForeground(QColor(Qt::red));
    view->textEditor()->changeFormat(color);
    key(Qt::Key_Return); // the first key of the text
    type(QStringLiteral("AA"));
    color.setForeground(QColor(Qt::blue));
    view->textEditor()->changeFormat(color);
    type(QStringLiteral("BB"));
    EXPECT_EQ(stamp()->textStorage()->attributedText().runs.size(), 2U);
    EXPECT_EQ(colorOf(0), QColor(Qt::red));
    EXPECT_EQ(stamp()->textStorage()->attributedText().runs[0].text, QStringLiteral("\u2029AA"));

    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Left);
    EXPECT_EQ(view->textEditor()->typingAttributes().foreground().color(), QColor(Qt::red));
    QGuiApplication::clipboard()->setText(QStringLiteral("p"));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(stamp()->textStorage()->attributedText().runs[0].text, QStringLiteral("\u2029ApA"));
}

TEST_F(TextEditingEdgesTest, EachTextIsGoneOnWithInItsOwnFormat)
{
    writeOne();
    const auto first = stamp();
    place({100, 500});
    view->textEditor()->toggleBold();
    type(QStringLiteral("two")); // as long as the other one, so that the cursor is at the same place
    for (const auto &[edited, weight] : {std::pair(first, QFont::Normal), std::pair(stamp(), QFont::Bold)}) {
        view->setSelectedStampView(edited);
        view->startTextEditing();
        EXPECT_EQ(view->textEditor()->typingAttributes().fontWeight(), weight);
        key(Qt::Key_Escape);
    }
}

TEST_F(TextEditingEdgesTest, AnotherSizeLeavesTheRestOfAMixedSelection)
{
    openPage();
    place({100, 700});
    type(QStringLiteral("plain "));
    view->textEditor()->toggleBold();
    type(QStringLiteral("bold"));
    view->textEditor()->selectAll();
    view->toolbarOpenFontPanel();
    QFont larger = view->textEditor()->typingAttributes().font();
    larger.setPointSizeF(20);
    Q_EMIT FontPanel::sharedFontPanel().fontChanged(larger);
    const auto runs = stamp()->textStorage()->attributedText().runs;
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].format.fontPointSize(), 20);
    EXPECT_EQ(runs[0].format.fontWeight(), QFont::Normal);
    EXPECT_EQ(runs[1].format.fontWeight(), QFont::Bold);
}

TEST_F(TextEditingEdgesTest, WhatIsStillComposedBelongsToTheText)
{
    openPage();
    place({100, 700});
    QInputMethodEvent composing(QStringLiteral("XYZ"), {});
    QApplication::sendEvent(QApplication::focusWidget(), &composing);
    view->endTextEditing();
    ASSERT_EQ(view->stampViews().size(), 1U);
    EXPECT_EQ(text(), QStringLiteral("XYZ"));
    EXPECT_EQ(stamp()->textStorage()->document().firstBlock().layout()->preeditAreaText(), QString());
}

TEST_F(TextEditingEdgesTest, UndoKeepsTheHeightOfLinesWithoutCharacters)
{
    openPage();
    QFont small(QStringLiteral("DejaVu Sans"));
    small.setPointSizeF(5);
    sharedFontManager().setSelectedFont(small);
    place({100, 700});
    type(QStringLiteral("ab"));
    key(Qt::Key_Return, Qt::ShiftModifier);
    key(Qt::Key_Return);
    type(QStringLiteral("cd"));
    key(Qt::Key_Escape);
    QCoreApplication::processEvents();
    view->startTextEditing();
    type(QStringLiteral("x"));
    key(Qt::Key_Escape);
    undoManager.undo();
    int lines = 0;
    stamp()->textStorage()->layOut(stamp()->frame().width);
    stamp()->textStorage()->visitLines(stamp()->frame().height,
                                       [&lines](const QTextBlock &, int, const QPointF &) { ++lines; });
    EXPECT_EQ(lines, 3);
}

TEST_F(TextEditingEdgesTest, NoKeyOfAnEditReachesTheStamp)
{
    writeOne();
    view->startTextEditing();
    key(Qt::Key_Right);
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    key(Qt::Key_Backspace);
    key(Qt::Key_Up);
    EXPECT_EQ(text(), QStringLiteral("on"));
    EXPECT_TRUE(view->isEditingText());
    view->textEditor()->selectAll();
    key(Qt::Key_Backspace);
    view->deleteSelectedStampView();
    EXPECT_TRUE(view->stampViews().empty());
    undoManager.undo();
    EXPECT_EQ(view->stampViews().size(), 1U);
    EXPECT_EQ(page(0).stamps().size(), 1U);
    EXPECT_EQ(text(), QStringLiteral("one"));
}

TEST_F(TextEditingEdgesTest, AnotherFieldKeepsTheKeysThatItTook)
{
    auto *field = new QLineEdit(window.centralWidget());
    field->setGeometry(400, 460, 200, 30);
    field->show();
    field->raise();
    writeOne();
    view->startTextEditing();
    type(QStringLiteral("two"));
    click(field->geometry().center());
    EXPECT_FALSE(view->isEditingText());
    key(Qt::Key_T);
    EXPECT_EQ(field->text(), QStringLiteral("t"));
    EXPECT_EQ(text(), QStringLiteral("two"));
}

TEST_F(TextEditingEdgesTest, TwoTextsAreTwoStepsWithTheirNames)
{
    writeOne();
    view->startTextEditing();
    type(QStringLiteral("two"));
    click(windowPoint(0, {100, 500})); // ends the edit and places another text
    key(Qt::Key_Escape);
    EXPECT_EQ(undoManager.undoActionName(), QStringLiteral("Text changed"));
    view->setSelectedStampView(stamp());
    view->startTextEditing();
    type(QStringLiteral("three"));
    click(windowPoint(0, {100, 500}));
    type(QStringLiteral("new"));
    key(Qt::Key_Escape);
    undoManager.undo();
    ASSERT_EQ(view->stampViews().size(), 1U);
    EXPECT_EQ(text(), QStringLiteral("three"));
    click(windowPoint(0, {104, 512})); // where the toolbar of the text that is gone was
    EXPECT_TRUE(view->isEditingText());
}

TEST_F(TextEditingEdgesTest, AMenuMayOutliveTheEdit)
{
    writeOne();
    view->startTextEditing();
    QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(5, 5), view->textEditor()->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(view->textEditor()->viewport(), &asked);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    view->endTextEditing();
    for (QAction *entry : menu->actions())
        entry->trigger();
    menu->close();
    EXPECT_EQ(text(), QStringLiteral("one"));
}

TEST_F(TextEditingEdgesTest, NothingMakesATextLongerThanItMayBe)
{
    openPage();
    place({100, 700});
    view->textEditor()->insertPlainText(QString(TextStampEditor::maxLength, QLatin1Char('w')));
    key(Qt::Key_Return);
    EXPECT_EQ(stamp()->textStorage()->length(), TextStampEditor::maxLength);
    key(Qt::Key_Tab);
    EXPECT_EQ(stamp()->textStorage()->length(), TextStampEditor::maxLength);
    type(QStringLiteral("\u00AD"));
    EXPECT_EQ(stamp()->textStorage()->length(), TextStampEditor::maxLength);
}
