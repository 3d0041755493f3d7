// The events of the text editor: what Qt's text item would take in another way than a stamp's text needs it.

#include "V1/editing/EditedTextItem.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/editing/TypedText.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QTextCursor>
#include <QTextDocumentFragment>

#include <algorithm>

using namespace inkory;

void TextStampEditor::focusInEvent(QFocusEvent *event)
{
    QGraphicsView::focusInEvent(event);
    m_item->setFocus(); // a menu takes it away
}

void TextStampEditor::keyPressEvent(QKeyEvent *event)
{
    const bool isTyped =
        !event->text().isEmpty() && event->text().at(0).isPrint() && !event->modifiers().testFlag(Qt::ControlModifier);
    if (event->key() == Qt::Key_Escape) {
        event->accept();
        Q_EMIT endRequested();
    } else if (isTyped && m_text && room() < event->text().size()) {
        insertPlainText(event->text()); // says why not
        event->accept();
    } else {
        QGraphicsView::keyPressEvent(event);
        event->accept(); // no key of the page's while a text is edited
    }
}

void TextStampEditor::inputMethodEvent(QInputMethodEvent *event)
{
    const TypedText typed = typedText(event->commitString(), m_text ? std::max(room(), 0) : 0);
    if (typed.text == event->commitString()) {
        QGraphicsView::inputMethodEvent(event);
        return;
    }
    QInputMethodEvent withoutCommit(event->preeditString(), event->attributes());
    QGraphicsView::inputMethodEvent(&withoutCommit);
    insertPlainText(event->commitString());
}

void TextStampEditor::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::MiddleButton)
        QGraphicsView::mousePressEvent(event);
}

// The middle button inserts what is selected elsewhere, where the desktop has that.
void TextStampEditor::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::MiddleButton) {
        QGraphicsView::mouseReleaseEvent(event);
    } else if (QGuiApplication::clipboard()->supportsSelection()) {
        m_item->placeCursor(m_item->mapFromScene(mapToScene(event->pos())));
        insertPlainText(QGuiApplication::clipboard()->text(QClipboard::Selection));
    }
}

void TextStampEditor::contextMenuEvent(QContextMenuEvent *event)
{
    const bool hasSelection = textCursor().hasSelection();
    const bool canPaste = !QGuiApplication::clipboard()->text().isEmpty();
    QMenu menu(this);
    const auto add = [&menu](const QString &title, QKeySequence::StandardKey key, bool isEnabled, auto &&action) {
        QAction *entry = menu.addAction(title, action);
        entry->setShortcut(key);
        entry->setEnabled(isEnabled);
    };
    add(tr("&Undo"), QKeySequence::Undo, canUndo(), [this] { undo(); });
    add(tr("&Redo"), QKeySequence::Redo, canRedo(), [this] { redo(); });
    menu.addSeparator();
    add(tr("Cu&t"), QKeySequence::Cut, hasSelection, [this] { cut(); });
    add(tr("&Copy"), QKeySequence::Copy, hasSelection, [this] { copy(); });
    add(tr("&Paste"), QKeySequence::Paste, canPaste, [this] { paste(); });
    add(tr("&Delete"), QKeySequence::Delete, hasSelection, [this] { textCursor().removeSelectedText(); });
    menu.addSeparator();
    add(tr("Select &All"), QKeySequence::SelectAll, m_text && !m_text->isEmpty(),
        [this] { setSelectedRange(0, m_text->length()); });
    menu.exec(event->globalPos());
}

void TextStampEditor::copy() const
{
    const QString selected = textCursor().selection().toPlainText();
    if (!selected.isEmpty())
        QGuiApplication::clipboard()->setText(selected);
}

void TextStampEditor::cut()
{
    copy();
    textCursor().removeSelectedText();
}
