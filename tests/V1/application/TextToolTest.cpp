#include "ApplicationFixture.h"

#include "V1/application/DocumentStatusBar.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRStamp.h"
#include "platform/widgets/FontPanel.h"
#include "platform/widgets/SegmentedControl.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QTextCursor>
#include <QTextDocument>
#include <QToolButton>
#include <QWindow>

namespace inkory::test
{

/// The window of an open document, and a person who writes on its first page.
class TextToolTest : public DocumentWindowFixture
{
protected:
    TextToolTest() { EXPECT_TRUE(QTest::qWaitForWindowActive(&window)); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }
    void click(const QPoint &inView) const
    {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, view.mapTo(&window, inView));
    }
    void write(const char *letters) const
    {
        for (const char *letter = letters; *letter; ++letter)
            QTest::keyClick(window.windowHandle(), *letter);
    }
    QString savedText()
    {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !document.isSaving(); }));
        return pdfText(document.fileUrl().toLocalFile(), 1);
    }
    QString written() const { return view.textEditor()->textCursor().document()->toPlainText(); }

    const QPoint place{250, 200};
};

TEST_F(TextToolTest, IsChosenByKeySegmentAndMenuAndSaysWhereToClick)
{
    const auto &bar = part<DocumentStatusBar>("statusBar");
    const QString hint = QStringLiteral("Click where the text belongs.");
    press(Qt::Key_T);
    EXPECT_EQ(view.currentToolType(), ToolTypeTextStamp);
    EXPECT_EQ(bar.inlineMessage(), hint);
    press(Qt::Key_V);
    EXPECT_EQ(bar.inlineMessage(), QString());
    part<SegmentedControl>("toolSelectionControl").button(2)->click();
    EXPECT_EQ(bar.inlineMessage(), hint);
    press(Qt::Key_V);
    part<QAction>("actionTextTool").trigger();
    EXPECT_FALSE(part<QAction>("actionBold").isEnabled());
    click(place);
    EXPECT_TRUE(view.isEditingText());
    EXPECT_EQ(bar.inlineMessage(), QString());
    write("tsv"); // no keys of tools now
    EXPECT_EQ(view.currentToolType(), ToolTypeTextStamp);
    EXPECT_EQ(written(), QStringLiteral("tsv"));
}

TEST_F(TextToolTest, UndoIsTheTypingsOwnWhileATextIsEdited)
{
    const auto &undo = part<QAction>("actionUndo");
    press(Qt::Key_T);
    click(place);
    write("ab");
    EXPECT_EQ(undo.text(), QStringLiteral("Undo Typing"));
    EXPECT_FALSE(part<QAction>("actionDelete").isEnabled());
    part<QAction>("actionUndo").trigger();
    EXPECT_EQ(written(), QString());
    part<QAction>("actionRedo").trigger();
    press(Qt::Key_Escape);
    EXPECT_EQ(undo.text(), QStringLiteral("Undo Add/Delete Stamp"));
    part<QAction>("actionUndo").trigger();
    EXPECT_TRUE(view.stampViews().empty());
}

TEST_F(TextToolTest, SavingAndClosingTakeWhatIsBeingTyped)
{
    press(Qt::Key_T);
    click(place);
    write("typed");
    part<QAction>("actionSave").trigger();
    EXPECT_TRUE(savedText().contains(QStringLiteral("typed")));
    EXPECT_FALSE(document.isDocumentEdited());

    view.startTextEditing();
    write("again"); // in place of the selected text
    answers = {0};
    document.close();
    EXPECT_EQ(questions.last().first(), QStringLiteral("Save changes to “a.pdf” before closing?"));
    EXPECT_TRUE(documents().isEmpty());
}

TEST_F(TextToolTest, TheFormatMenuAndTheToolbarChangeTheText)
{
    press(Qt::Key_T);
    click(place);
    press(Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(view.textEditor()->typingAttributes().fontWeight(), QFont::Bold);
    part<QAction>("actionBold").trigger();
    part<QAction>("actionUnderline").trigger();
    EXPECT_EQ(view.textEditor()->typingAttributes().fontWeight(), QFont::Normal);
    EXPECT_TRUE(view.textEditor()->typingAttributes().fontUnderline());
    for (QAction *entry : part<QToolButton>("textBGColorButton").menu()->actions()) {
        if (entry->text() == u"Orange")
            entry->trigger();
    }
    EXPECT_EQ(view.textEditor()->typingAttributes().background().color().name(), QStringLiteral("#ff8000"));
    part<QAction>("actionFonts").trigger();
    EXPECT_TRUE(FontPanel::sharedFontPanel().isVisible() && view.isEditingText());

    Q_EMIT view.fontReplaced(QStringLiteral("A\nB"), QStringLiteral("C %1"));
    EXPECT_EQ(part<QLabel>("noticeText").text(),
              QStringLiteral("The font “A B” must not be stored in documents. “C %1” is used instead."));
}

} // namespace inkory::test
