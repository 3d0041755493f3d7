#include "platform/widgets/OutlineView.h"

#include "platform/widgets/OutlineModel.h"
#include "platform/widgets/PDFView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

#include <utility>

namespace inkory
{

namespace
{

constexpr int levelIndentation = 14;
constexpr int leastTitleWidth = 80;
// More than this opened at first would be a list to scroll through, not an overview.
constexpr int mostRowsAtFirst = 2'000;
constexpr int rowPadding = 3; // above and below a title

class RoomyRows : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 2 * rowPadding);
    }
};

} // namespace

OutlineView::OutlineView(QWidget *parent) : QTreeView(parent)
{
    setItemDelegate(new RoomyRows(this));
    setHeaderHidden(true);
    setUniformRowHeights(true); // thousands of rows are laid out at once
    setIndentation(levelIndentation);
    setFrameShape(QFrame::NoFrame);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    setTextElideMode(Qt::ElideRight);
    setAccessibleName(tr("Contents"));
    connect(this, &QTreeView::clicked, this, &OutlineView::follow);
}

OutlineView::~OutlineView()
{
    PDFDocument *read = document();
    if (m_token != 0 && read && read->pageSource())
        read->pageSource()->cancel(m_token);
}

PDFDocument *OutlineView::document() const
{
    return m_view ? m_view->document() : nullptr;
}

void OutlineView::setPDFView(PDFView *view)
{
    m_view = view;
    if (!document())
        return;
    if (document()->isGeometrySettled())
        readWhenQuiet();
    else
        connect(document(), &PDFDocument::geometrySettled, this, &OutlineView::readWhenQuiet);
}

void OutlineView::readWhenQuiet()
{
    if (!document() || !document()->pageSource())
        return;
    document()->pageSource()->callAfterFirstPage([view = QPointer(this)] {
        if (view)
            view->read();
    });
}

void OutlineView::read()
{
    if (!document() || document()->state() != PDFDocument::State::Open)
        return;
    m_token = document()->pageSource()->readOutline([this](const Result<std::vector<OutlineItem>> &items) {
        m_token = 0;
        if (items && !items->empty())
            showItems(*items);
    });
}

void OutlineView::showItems(std::vector<OutlineItem> items)
{
    m_model = new OutlineModel(std::move(items), this);
    setModel(m_model);
    for (const QModelIndex &index : m_model->indicesOpenAtFirst(mostRowsAtFirst))
        expand(index);
    header()->setStretchLastSection(true);
    header()->setMinimumSectionSize((m_model->deepestLevel() + 1) * levelIndentation + leastTitleWidth);
    selectionModel()->setCurrentIndex(m_model->index(0, 0), QItemSelectionModel::NoUpdate);
    Q_EMIT filled();
}

void OutlineView::follow(const QModelIndex &index)
{
    const OutlineItem *item = m_model ? m_model->item(index) : nullptr;
    if (item && item->destination && m_view)
        m_view->followDestination(*item->destination);
}

void OutlineView::keyboardSearch(const QString &) {}

void OutlineView::keyPressEvent(QKeyEvent *event)
{
    const bool isLetter = !event->text().isEmpty() && event->text().at(0).isLetterOrNumber() &&
                          !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        follow(currentIndex());
    else if (isLetter)
        event->ignore(); // on to the window, where letters choose tools
    else
        QTreeView::keyPressEvent(event);
}

} // namespace inkory
