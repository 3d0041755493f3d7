#include "V1/editing/EditedTextItem.h"

#include "V1/editing/TextStampEditor.h"

#include <QAbstractTextDocumentLayout>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QStyleOptionGraphicsItem>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>

EditedTextItem::EditedTextItem(TextStampEditor &editor) : m_editor(editor)
{
    setTextInteractionFlags(Qt::TextEditorInteraction);
    setCursor(Qt::IBeamCursor);
    setDefaultTextColor(Qt::black); // on paper, whatever the theme
}

void EditedTextItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    QStyleOptionGraphicsItem plain = *option;
    plain.state &= ~(QStyle::State_HasFocus | QStyle::State_Selected);
    QGraphicsTextItem::paint(painter, &plain, widget);
}

void EditedTextItem::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste))
        m_editor.paste();
    else if (event->matches(QKeySequence::Copy))
        m_editor.copy(); // plain as well
    else if (event->matches(QKeySequence::Cut))
        m_editor.cut();
    else
        QGraphicsTextItem::keyPressEvent(event);
}

// A press on selected text would begin to drag it away, in an event loop of its own.
void EditedTextItem::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && !event->modifiers().testFlag(Qt::ShiftModifier)) {
        QTextCursor cursor = textCursor();
        cursor.clearSelection();
        setTextCursor(cursor);
    }
    QGraphicsTextItem::mousePressEvent(event);
}

void EditedTextItem::dragEnterEvent(QGraphicsSceneDragDropEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->ignore(); // files are the window's
    else
        QGraphicsTextItem::dragEnterEvent(event);
}

void EditedTextItem::dropEvent(QGraphicsSceneDragDropEvent *event)
{
    if (!event->mimeData()->hasText()) {
        event->ignore();
        return;
    }
    placeCursor(event->pos());
    m_editor.insertPlainText(event->mimeData()->text());
    event->acceptProposedAction();
}

void EditedTextItem::placeCursor(const QPointF &point)
{
    QTextCursor cursor = textCursor();
    cursor.setPosition(std::max(document()->documentLayout()->hitTest(point, Qt::FuzzyHit), 0));
    setTextCursor(cursor);
}
