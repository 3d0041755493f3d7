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

// Tab is a character of the text, and Shift+Tab nothing: neither takes the keyboard away.
bool TextStampEditor::event(QEvent *event)
{
    const auto *press = event->type() == QEvent::KeyPress ? static_cast<QKeyEvent *>(event) : nullptr;
    if (!press || (press->key() != Qt::Key_Tab && press->key() != Qt::Key_Backtab))
        return QGraphicsView::event(event);
    if (press->key() == Qt::Key_Tab && press->modifiers() == Qt::NoModifier)
        insertPlainText(QStringLiteral("\t"));
    event->accept();
    return true;
}

void TextStampEditor::keyPressEvent(QKeyEvent *event)
{
    const QString text = event->text();
    const bool isTyped = !text.isEmpty() && text.at(0).category() != QChar::Other_Control;
    if (event->key() == Qt::Key_Escape)
        Q_EMIT endRequested();
    else if (event->matches(QKeySequence::InsertParagraphSeparator))
        insertPlainText(QStringLiteral("\n")); // the new line is like what was typed, also in an empty text
    else if (event->matches(QKeySequence::InsertLineSeparator))
        insertPlainText(QString(QChar::LineSeparator));
    else if (isTyped && room() < text.size())
        insertPlainText(text); // says why not
    else
        QGraphicsView::keyPressEvent(event);
    event->accept(); // no key is the page's while a text is edited
    followCursor();
}

void TextStampEditor::inputMethodEvent(QInputMethodEvent *event)
{
    const TypedText typed = typedText(event->commitString(), m_text ? std::max(room(), 0) : 0);
    if (typed.text == event->commitString()) {
        QGraphicsView::inputMethodEvent(event);
        followCursor();
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
    followCursor();
}

void TextStampEditor::mouseMoveEvent(QMouseEvent *event)
{
    QGraphicsView::mouseMoveEvent(event);
    followCursor();
}

void TextStampEditor::mouseDoubleClickEvent(QMouseEvent *event)
{
    QGraphicsView::mouseDoubleClickEvent(event);
    followCursor();
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
    auto *menu = new QMenu(this); // the edit may end, and the window close, while it is open
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [this, menu](const QString &title, QKeySequence::StandardKey key, bool isEnabled, auto &&action) {
        QAction *entry = menu->addAction(title);
        entry->setShortcut(key);
        entry->setEnabled(isEnabled);
        connect(entry, &QAction::triggered, this, action);
    };
    add(tr("&Undo"), QKeySequence::Undo, canUndo(), [this] { undo(); });
    add(tr("&Redo"), QKeySequence::Redo, canRedo(), [this] { redo(); });
    menu->addSeparator();
    add(tr("Cu&t"), QKeySequence::Cut, hasSelection, [this] { cut(); });
    add(tr("&Copy"), QKeySequence::Copy, hasSelection, [this] { copy(); });
    add(tr("&Paste"), QKeySequence::Paste, canPaste, [this] { paste(); });
    add(tr("&Delete"), QKeySequence::Delete, hasSelection, [this] { textCursor().removeSelectedText(); });
    menu->addSeparator();
    add(tr("Select &All"), QKeySequence::SelectAll, m_text && !m_text->isEmpty(), [this] { selectAll(); });
    menu->popup(event->globalPos());
}

void TextStampEditor::selectAll()
{
    if (m_text)
        setSelectedRange(0, m_text->length());
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
