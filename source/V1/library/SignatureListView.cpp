#include "V1/library/SignatureListView.h"

#include <QDragEnterEvent>
#include <QPainter>

namespace inkory
{

namespace
{

constexpr qreal dropEdge = 3;
constexpr qreal dropAreaMargin = 14;
constexpr float dropAreaOpacity = 0.4F;
constexpr qreal cornerRadius = 6;

} // namespace

SignatureListView::SignatureListView(QWidget *parent) : QListView(parent)
{
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setResizeMode(Adjust);
    setMouseTracking(true);
    setAcceptDrops(true);
    viewport()->setBackgroundRole(QPalette::Window); // the cards stand out from it, in light and in dark
}

void SignatureListView::setDropHandlers(std::function<Qt::DropAction(const QMimeData &)> validate,
                                        std::function<bool(const QMimeData &)> accept)
{
    m_validateDrop = std::move(validate);
    m_acceptDrop = std::move(accept);
}

int SignatureListView::selectedRow() const
{
    const QModelIndexList rows = selectionModel() ? selectionModel()->selectedIndexes() : QModelIndexList();
    return rows.isEmpty() ? -1 : rows.constFirst().row();
}

void SignatureListView::selectRow(int row)
{
    const QModelIndex index = model() ? model()->index(row, 0) : QModelIndex();
    if (!index.isValid())
        return;
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    scrollTo(index);
}

void SignatureListView::setDragAction(Qt::DropAction action)
{
    m_dragAction = action;
    viewport()->update();
}

void SignatureListView::answer(QDropEvent &event) const
{
    if (m_dragAction == Qt::IgnoreAction || !event.possibleActions().testFlag(m_dragAction)) {
        event.ignore();
        return;
    }
    event.setDropAction(m_dragAction);
    event.accept();
}

void SignatureListView::dragEnterEvent(QDragEnterEvent *event)
{
    setDragAction(m_validateDrop ? m_validateDrop(*event->mimeData()) : Qt::IgnoreAction);
    answer(*event);
}

void SignatureListView::dragMoveEvent(QDragMoveEvent *event)
{
    answer(*event);
}

void SignatureListView::dragLeaveEvent(QDragLeaveEvent *)
{
    setDragAction(Qt::IgnoreAction);
}

void SignatureListView::dropEvent(QDropEvent *event)
{
    answer(*event);
    if (event->isAccepted() && !m_acceptDrop(*event->mimeData()))
        event->ignore();
    setDragAction(Qt::IgnoreAction);
}

void SignatureListView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    const bool dragHovers = m_dragAction != Qt::IgnoreAction;
    const bool empty = !model() || model()->rowCount() == 0;
    if (!dragHovers && !empty)
        return;
    QColor color = palette().color(dragHovers ? QPalette::Highlight : QPalette::WindowText);
    if (!dragHovers)
        color.setAlphaF(dropAreaOpacity);
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, dragHovers ? dropEdge : 1.5, empty ? Qt::DashLine : Qt::SolidLine));
    const qreal margin = empty ? dropAreaMargin : dropEdge / 2;
    painter.drawRoundedRect(QRectF(viewport()->rect()).adjusted(margin, margin, -margin, -margin), cornerRadius,
                            cornerRadius);
}

} // namespace inkory
