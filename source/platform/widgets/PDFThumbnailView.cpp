#include "platform/widgets/PDFThumbnailView.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/widgets/PDFView.h"

#include <QAbstractListModel>
#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QtMath>

#include <algorithm>

namespace inkory
{

namespace
{

constexpr int thumbnailWidth = 120;
constexpr int thumbnailHeight = 156;
constexpr int padding = 10;
// How long the pictures wait for the first page at most.
constexpr int patienceMilliseconds = 500;
constexpr double markSize = 20;
constexpr double stampedMarkRadius = 4.5;
constexpr double stampedMarkInset = 9;
const QColor markColor(0x80, 0x80, 0x80); // the page is white in every theme
constexpr float quietTextShare = 0.65F;

// A page that cannot be drawn: the page itself says so in words.
void drawFailureMark(QPainter &painter, const QRectF &page)
{
    const double side = std::min({markSize, page.width() / 2, page.height() / 2});
    const QRectF mark(page.center() - QPointF(side, side) / 2, QSizeF(side, side));
    painter.setPen(QPen(markColor, side / 10, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(mark.topLeft(), mark.bottomRight());
    painter.drawLine(mark.topRight(), mark.bottomLeft());
}

// A page that takes long; three dots.
void drawWaitingMark(QPainter &painter, const QRectF &page)
{
    const double distance = std::min({markSize, page.width() / 2, page.height() / 2}) / 2;
    painter.setPen(QPen(markColor, distance / 3, Qt::SolidLine, Qt::RoundCap));
    for (const int dot : {-1, 0, 1})
        painter.drawPoint(page.center() + QPointF(dot * distance, 0));
}

// In the page's upper right corner, with a white ring, so that it is seen on any page and in any theme.
void drawStampedMark(QPainter &painter, const QRectF &page, const QColor &color)
{
    painter.setPen(QPen(Qt::white, 2));
    painter.setBrush(color);
    painter.drawEllipse(page.topRight() + QPointF(-stampedMarkInset, stampedMarkInset), stampedMarkRadius,
                        stampedMarkRadius);
}

} // namespace

/// One row for each page, without data but for what a screen reader says.
class PDFThumbnailView::Model : public QAbstractListModel
{
public:
    explicit Model(PDFThumbnailView *view) : QAbstractListModel(view), m_thumbnails(view) {}

    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : m_pageCount; }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role != Qt::AccessibleTextRole || !index.isValid())
            return {};
        const QString text = m_thumbnails->isStamped(index.row()) ? PDFThumbnailView::tr("Page %1, stamped")
                                                                  : PDFThumbnailView::tr("Page %1");
        return text.arg(index.row() + 1);
    }

    void setPageCount(int count)
    {
        if (count == m_pageCount)
            return;
        beginResetModel();
        m_pageCount = count;
        endResetModel();
    }

private:
    PDFThumbnailView *m_thumbnails;
    int m_pageCount = 0;
};

class PDFThumbnailView::Delegate : public QStyledItemDelegate
{
public:
    explicit Delegate(PDFThumbnailView *view) : QStyledItemDelegate(view), m_thumbnails(view) {}

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        return {thumbnailWidth + 2 * padding, thumbnailHeight + 2 * padding + option.fontMetrics.height()};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        PDFDocument *document = m_thumbnails->m_view ? m_thumbnails->m_view->document() : nullptr;
        if (PDFPage *page = document ? document->pageAtIndex(index.row()) : nullptr)
            m_thumbnails->paintThumbnail(*painter, option.rect, *page, option.state.testFlag(QStyle::State_Selected));
    }

private:
    PDFThumbnailView *m_thumbnails;
};

PDFThumbnailView::PDFThumbnailView(QWidget *parent) : QListView(parent), m_model(new Model(this))
{
    setModel(m_model);
    setItemDelegate(new Delegate(this));
    setUniformItemSizes(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setFrameShape(QFrame::NoFrame);
    setAccessibleName(tr("Pages"));
    connect(&m_images, &PageImageStore::pieceArrived, viewport(), qOverload<>(&QWidget::update));
    connect(&m_waitingPages, &WaitingPages::becameOverdue, viewport(), qOverload<>(&QWidget::update));
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &current) {
        if (m_view && current.isValid() && current.row() != m_view->currentPageIndex())
            m_view->goToPage(current.row());
    });
}

PDFThumbnailView::~PDFThumbnailView() = default;

void PDFThumbnailView::setPDFView(PDFView *view)
{
    if (m_view)
        m_view->disconnect(this);
    m_view = view;
    if (view) {
        connect(view, &PDFView::currentPageChanged, this, &PDFThumbnailView::showCurrentPage);
        connect(view, &PDFView::pageAppearanceChanged, this, &PDFThumbnailView::noteAppearance);
        connect(view, &PDFView::contentCompleted, this, &PDFThumbnailView::startRequests);
        connect(view, &PDFView::pageDrawnAgain, this, [this](const PDFPage *page) {
            m_images.retry(*page);
            viewport()->update();
        });
        QTimer::singleShot(patienceMilliseconds, this, &PDFThumbnailView::startRequests);
    }
    reload();
}

void PDFThumbnailView::startRequests()
{
    if (!std::exchange(m_mayRequest, true))
        viewport()->update();
}

void PDFThumbnailView::keyboardSearch(const QString &) {}

void PDFThumbnailView::keyPressEvent(QKeyEvent *event)
{
    const bool isText = !event->text().isEmpty() && event->text().at(0).isPrint() &&
                        !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (isText)
        event->ignore(); // on to the window, where letters choose tools
    else if (m_view && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        m_view->setFocus();
    else
        QListView::keyPressEvent(event);
}

void PDFThumbnailView::reload()
{
    PDFDocument *document = m_view ? m_view->document() : nullptr;
    if (document != m_images.document())
        m_images.setDocument(document);
    m_model->setPageCount(document ? document->pageCount() : 0);
    viewport()->update();
    showCurrentPage();
}

void PDFThumbnailView::noteAppearance(const PDFPage *page)
{
    if (!page) {
        reload();
        return;
    }
    const QModelIndex index = m_model->index(page->index(), 0);
    if (index.isValid())
        Q_EMIT m_model->dataChanged(index, index, {Qt::AccessibleTextRole});
    viewport()->update(); // what is drawn over one page may have come from another one
}

bool PDFThumbnailView::isStamped(int pageIndex) const
{
    const PDFDocument *document = m_view ? m_view->document() : nullptr;
    const PDFPage *page = document ? document->pageAtIndex(pageIndex) : nullptr;
    return page && document->pageHasOverlay(*page);
}

void PDFThumbnailView::showCurrentPage()
{
    const QModelIndex index = m_model->index(m_view ? m_view->currentPageIndex() : -1, 0);
    if (!index.isValid() || index == currentIndex())
        return;
    const QSignalBlocker blocker(selectionModel()); // following the view is not going to a page
    setCurrentIndex(index);
    scrollTo(index);
    viewport()->update();
}

void PDFThumbnailView::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (!event->rect().contains(viewport()->rect()))
        return;
    m_images.cancelStaleRequests();
    m_waitingPages.endFrame();
}

// Moving the pixels and painting only what is new would keep the requests of pages that left the view.
void PDFThumbnailView::scrollContentsBy(int dx, int dy)
{
    QListView::scrollContentsBy(dx, dy);
    viewport()->update();
}

void PDFThumbnailView::changeEvent(QEvent *event)
{
    QListView::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        scheduleDelayedItemsLayout();
}

void PDFThumbnailView::paintThumbnail(QPainter &painter, const QRect &cell, PDFPage &page, bool isCurrent)
{
    const QRect picture(cell.left() + (cell.width() - thumbnailWidth) / 2, cell.top() + padding, thumbnailWidth,
                        thumbnailHeight);
    const QSizeF size = page.shownSize();
    const double scale = std::min(picture.width() / size.width(), picture.height() / size.height());
    const QSizeF shown = size * scale;
    const QRectF target(std::round(picture.center().x() - shown.width() / 2),
                        std::round(picture.bottom() + 1 - shown.height()), shown.width(), shown.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (isCurrent) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawRoundedRect(target.adjusted(-4, -4, 4, 4), 5, 5);
    }
    const double ratio = viewport()->devicePixelRatioF();
    const auto content = [&](QPainter &p, const PDFPage &drawn) {
        p.fillRect(target, Qt::white);
        const QSize pixels(qCeil(target.width() * ratio), qCeil(target.height() * ratio));
        const QRect whole(QPoint(), pixels);
        const auto *piece = m_mayRequest ? m_images.piece(drawn, scale * ratio, whole) : nullptr;
        if (!piece)
            piece = m_images.standIn(drawn);
        if (piece)
            p.drawImage(target, piece->image);
        else if (m_images.hasFailed(drawn, scale * ratio, whole))
            drawFailureMark(p, target);
        else if (m_waitingPages.isOverdue(drawn.index()))
            drawWaitingMark(p, target);
    };
    const QTransform transform = page.shownTransform() * QTransform::fromScale(scale, scale) *
                                 QTransform::fromTranslate(target.left(), target.top());
    ScreenDrawingContext context(painter, transform, content, m_stampImages);
    const DrawingContext::Scope scope(context);
    page.drawWithBox(DisplayBox::CropBox);
    painter.setPen(QPen(QColor(0, 0, 0, 70), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(target.adjusted(-0.5, -0.5, 0.5, 0.5));
    if (isStamped(page.index()))
        drawStampedMark(painter, target, palette().color(QPalette::Highlight));
    QColor number = palette().color(QPalette::WindowText);
    number.setAlphaF(isCurrent ? 1 : quietTextShare); // some dark schemes leave PlaceholderText black
    painter.setPen(number);
    const QRect label(cell.left(), picture.bottom() + 4, cell.width(), cell.bottom() - picture.bottom() - 4);
    painter.drawText(label, Qt::AlignHCenter | Qt::AlignTop, QString::number(page.index() + 1));
    painter.restore();
}

} // namespace inkory
