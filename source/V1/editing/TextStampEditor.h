#pragma once

#include "platform/core/Geometry.h"
#include "platform/core/TextStorage.h"

#include <QGraphicsScene>
#include <QGraphicsView>

#include <memory>
#include <vector>

class EditedTextItem;

/// The editor that lies over a text stamp while its text is edited in place. It shows and changes the stamp's own text
/// storage, in the very layout in which the stamp draws it: what is typed stands where it will stand on the page. As
/// wide and as high as its text, framed in grey. Plain text comes in, whoever sends it; what cannot be shown or is too
/// much is left out, and said. A child of the overlay container.
class TextStampEditor : public QGraphicsView
{
    Q_OBJECT

public:
    /// No stamp's text becomes longer, in UTF-16 code units.
    static constexpr int maxLength = 10'000;

    explicit TextStampEditor(QWidget *container);
    ~TextStampEditor() override;

    /// From now on this text is shown and edited; its history begins here. Its paint device is its own again after
    /// removeTextStorage().
    void replaceTextStorage(std::shared_ptr<inkory::TextStorage> text);
    /// Lets go of the text and forgets the history of what was typed. Nothing without a text.
    void removeTextStorage();
    bool isAttached() const { return m_text != nullptr; }

    /// Where the editor's upper left corner stands, and how many device-independent pixels a unit of 1/72 inch has.
    void place(const inkory::OverlayPoint &origin, double scaleFactor);
    /// Exactly as large as the text; the widget's own geometry is that in whole pixels.
    inkory::OverlayRect frame() const;

    void setSelectedRange(int from, int length);
    QTextCursor textCursor() const;
    /// What the next typed characters will have.
    QTextCharFormat typingAttributes() const { return m_typingAttributes; }
    void setTypingAttributes(const QTextCharFormat &attributes);
    /// Changes the selected characters, or without a selection what is typed next.
    void changeFormat(const QTextCharFormat &change);
    void toggleBold();
    void toggleItalic();
    void toggleUnderline();

    /// The history of what was typed, apart from the document's.
    bool canUndo() const;
    bool canRedo() const;
    void undo();
    void redo();

    /// Inserts at the cursor, in place of the selection, what of the text can be shown and is not too much.
    void insertPlainText(const QString &text);
    /// What an input method is still composing becomes part of the text.
    void commitComposition();
    void paste();
    void selectAll();
    void copy() const;
    void cut();

Q_SIGNALS:
    void typingAttributesChanged();
    void undoAvailabilityChanged();
    /// Escape was pressed.
    void endRequested();
    /// For the person: why not all of a text was taken.
    void refused(const QString &reason);

protected:
    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void drawForeground(QPainter *painter, const QRectF &rect) override;

private:
    void fitToText();
    void applyGeometry();
    void followCursor();
    void takeTypingAttributes();
    int room() const;

    QGraphicsScene m_scene;
    EditedTextItem *m_item = nullptr; // the scene's
    std::shared_ptr<inkory::TextStorage> m_text;
    QTextCharFormat m_typingAttributes;
    inkory::OverlayPoint m_origin;
    double m_scaleFactor = 1;
    QSizeF m_size; // of the text, in units of 1/72 inch
    bool m_isFitting = false;
    int m_cursorPosition = 0; // and where the selection begins: when the typing attributes were taken last
    int m_cursorAnchor = 0;
    std::vector<QMetaObject::Connection> m_connections; // to the text
};
