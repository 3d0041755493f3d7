#pragma once

#include <QGraphicsTextItem>

class TextStampEditor;

/// The text inside the editor: Qt's text item, which takes plain text only and draws no frame of its own. Owned by the
/// editor's scene.
class EditedTextItem : public QGraphicsTextItem
{
    Q_OBJECT

public:
    explicit EditedTextItem(TextStampEditor &editor);

    /// Puts the cursor nearest to the point, in the item's coordinates.
    void placeCursor(const QPointF &point);

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void dragEnterEvent(QGraphicsSceneDragDropEvent *event) override;
    void dropEvent(QGraphicsSceneDragDropEvent *event) override;

private:
    TextStampEditor &m_editor;
};
