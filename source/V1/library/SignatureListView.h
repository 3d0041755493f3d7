#pragma once

#include <QListView>

#include <functional>

class QMimeData;

namespace inkory
{

/// The list of signatures in the selection dialog. A drop is for the list as a whole, never for a row, which QListView
/// cannot say; what is taken is decided by its owner.
class SignatureListView : public QListView
{
    Q_OBJECT

public:
    explicit SignatureListView(QWidget *parent = nullptr);

    /// Which action a drop of this data would be (Qt::IgnoreAction: none), and what does it. Asked once per drag.
    void setDropHandlers(std::function<Qt::DropAction(const QMimeData &)> validate,
                         std::function<bool(const QMimeData &)> accept);

    /// The selected row, or -1.
    int selectedRow() const;
    /// Selects this row alone; nothing for a row that is none.
    void selectRow(int row);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setDragAction(Qt::DropAction action);
    void answer(QDropEvent &event) const;

    std::function<Qt::DropAction(const QMimeData &)> m_validateDrop;
    std::function<bool(const QMimeData &)> m_acceptDrop;
    Qt::DropAction m_dragAction = Qt::IgnoreAction; // of the drag that hovers over the list
};

} // namespace inkory
