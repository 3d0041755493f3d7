#include "platform/widgets/PDFView.h"

#include "platform/widgets/PDFView+Reading.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

// How long nothing is to change until what may be looked at next is drawn.
constexpr int idleMilliseconds = 100;
// How many pixels a line has beyond what is visible of it.
constexpr int beyondView = 4;

} // namespace

PDFView::PDFView(QWidget *parent) : ScrolledPages(parent)
{
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    m_idle.setSingleShot(true);
    m_idle.setInterval(idleMilliseconds);
    connect(&m_idle, &QTimer::timeout, this, &PDFView::drawNeighboursAhead);
    connect(&m_images, &PageImageStore::pieceArrived, this, &PDFView::pageContentArrived);
    setUpReading();
}

PDFView::~PDFView() = default;

void PDFView::setDocument(PDFDocument *document)
{
    forgetReading();
    if (m_document)
        m_document->disconnect(this);
    startWithDocument(document);
    m_images.setDocument(document);
    if (document) {
        connect(document, &PDFDocument::layoutChanged, this, &PDFView::layoutDocumentView);
        connect(document, &PDFDocument::stateChanged, this, &PDFView::layoutDocumentView);
    }
    layoutDocumentView();
}

void PDFView::layoutDocumentView()
{
    layOutPages();
    Q_EMIT pageAppearanceChanged(nullptr);
}

void PDFView::pageSizesChanged()
{
    m_contentComplete = false;
    // Before the frame, but after whoever else reacts to the same change: the zoom may be about to follow.
    QMetaObject::invokeMethod(this, &PDFView::requestVisibleContent, Qt::QueuedConnection);
}

void PDFView::annotationsChangedOnPage(const PDFPage *page)
{
    if (page) {
        setNeedsDisplayInRect(convertRectFromPage(page->boundsForBox(DisplayBox::CropBox), page));
        Q_EMIT pageAppearanceChanged(page);
    }
}

void PDFView::setNeedsDisplayInRect(const ViewRect &rect)
{
    const QRectF inWidget(rect.x, height() - rect.maxY(), rect.width, rect.height);
    viewport()->update(inWidget.toAlignedRect().adjusted(-1, -1, 1, 1)); // antialiasing reaches one pixel further
}

void PDFView::pageContentArrived(int sourceIndex)
{
    for (const int i : visiblePages()) {
        if (m_document->pageAtIndex(i)->sourceIndex() == sourceIndex)
            viewport()->update(pageRectInWidget(i).toAlignedRect());
    }
}

void PDFView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    paintBackground(painter, event->region());
    painter.setRenderHint(QPainter::Antialiasing);
    bool complete = m_layout.pageCount() > 0;
    for (const int i : visiblePages())
        paintPage(painter, i, event->rect(), complete);
    m_images.cancelStaleRequests();
    m_pageNotes.endFrame();
    if (complete)
        m_idle.start();
    else
        m_idle.stop();
    if (complete && !std::exchange(m_contentComplete, complete))
        Q_EMIT contentCompleted();
    m_contentComplete = complete;
}

void PDFView::paintBackground(QPainter &painter, const QRegion &dirty) const
{
    QRegion beside = dirty;
    for (const int i : visiblePages()) {
        const QRectF page = pageRectInWidget(i) & QRectF(viewport()->rect());
        beside -= QRect(QPoint(qCeil(page.left()), qCeil(page.top())),
                        QPoint(qFloor(page.right()) - 1, qFloor(page.bottom()) - 1));
    }
    for (const QRect &rect : beside)
        painter.fillRect(rect, viewport()->palette().brush(viewport()->backgroundRole()));
}

void PDFView::paintPage(QPainter &painter, int pageIndex, const QRect &dirty, bool &complete)
{
    PDFPage &page = *m_document->pageAtIndex(pageIndex);
    const QRectF rect = pageRectInWidget(pageIndex);
    // Pages that need no painting are asked for their content all the same: that keeps their requests alive.
    painter.save();
    painter.setClipRect(dirty);
    const auto content = [&](QPainter &target, const PDFPage &drawn) {
        if (!drawPageContent(target, drawn, rect))
            complete = false;
        paintReading(target, pageIndex);
    };
    ScreenDrawingContext context(painter, widgetTransform(pageIndex), content, m_stampImages);
    const DrawingContext::Scope scope(context);
    page.drawWithBox(DisplayBox::CropBox);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1));
    const QRect near = viewport()->rect().adjusted(-beyondView, -beyondView, beyondView, beyondView);
    painter.drawRect((rect & QRectF(near)).toAlignedRect().adjusted(-1, -1, 0, 0)); // a thin edge around the page
    painter.restore();
}

QRect PDFView::neededPixels(const QRectF &pageRect) const
{
    const double ratio = viewport()->devicePixelRatioF();
    const QRectF visible = pageRect & QRectF(viewport()->rect());
    const QRectF inPage = visible.translated(-pageRect.topLeft());
    return QRectF(inPage.topLeft() * ratio, inPage.size() * ratio).toAlignedRect() &
           QRect(0, 0, qCeil(pageRect.width() * ratio), qCeil(pageRect.height() * ratio));
}

void PDFView::requestVisibleContent()
{
    if (!isVisible() || isZoomRestless())
        return;
    for (const int i : visiblePages())
        m_images.piece(*m_document->pageAtIndex(i), pixelsPerPoint(), neededPixels(pageRectInWidget(i)));
}

void PDFView::drawNeighboursAhead()
{
    const std::vector<int> shown = visiblePages();
    if (shown.empty() || !isVisible() || isZoomRestless())
        return;
    std::vector<const PDFPage *> neighbours;
    for (const int i : {shown.back() + 1, shown.front() - 1}) {
        if (const PDFPage *page = m_document->pageAtIndex(i))
            neighbours.push_back(page);
    }
    m_images.drawAhead(neighbours, pixelsPerPoint());
}

QRectF PDFView::placeOfPiece(const PageImageStore::Piece &piece, const QRectF &pageRect) const
{
    const double k = scaleFactor() / piece.scale; // pixels of the image to pixels of the widget
    return {pageRect.topLeft() + QPointF(piece.region.topLeft()) * k, QSizeF(piece.image.size()) * k};
}

void PDFView::drawPiece(QPainter &painter, const PageImageStore::Piece &piece, const QRectF &pageRect) const
{
    painter.save();
    if (qFuzzyCompare(piece.scale, pixelsPerPoint())) {
        const QPointF corner = painter.deviceTransform().map(pageRect.topLeft());
        ScreenDrawingContext::enterDevicePixels(painter);
        painter.drawImage(QPointF(std::round(corner.x()), std::round(corner.y())) + piece.region.topLeft(),
                          piece.image);
    } else {
        // Of an image that is enlarged a lot, only what is visible: the painter does not count far enough.
        const QRectF whole = placeOfPiece(piece, pageRect);
        const double k = piece.scale / scaleFactor();
        const QRectF visible = (whole & QRectF(viewport()->rect())).translated(-whole.topLeft());
        const QRect source = QRectF(visible.topLeft() * k, visible.size() * k).toAlignedRect().adjusted(-1, -1, 1, 1) &
                             piece.image.rect();
        const QRectF target(whole.topLeft() + QPointF(source.topLeft()) / k, QSizeF(source.size()) / k);
        painter.setClipRect(pageRect & QRectF(viewport()->rect()), Qt::IntersectClip);
        if (!source.isEmpty())
            painter.drawImage(target, piece.image, source);
    }
    painter.restore();
}

bool PDFView::drawPageContent(QPainter &painter, const PDFPage &page, const QRectF &pageRect)
{
    const QRect visible = visiblePart(page.index());
    const auto reaches = [&](const PageImageStore::Piece *piece) {
        return piece && placeOfPiece(*piece, pageRect).intersects(visible);
    };
    const auto *standIn = m_images.standIn(page);
    const auto *backdrop = m_images.backdrop(page);
    const bool waits = isZoomRestless() && (reaches(standIn) || backdrop);
    using Missing = PageImageStore::Missing;
    if (const auto *piece =
            m_images.piece(page, pixelsPerPoint(), neededPixels(pageRect), waits ? Missing::Leave : Missing::Request)) {
        drawPiece(painter, *piece, pageRect);
        return true;
    }
    painter.fillRect(pageRect & QRectF(viewport()->rect()), Qt::white);
    if (hasFailed(page.index())) {
        m_pageNotes.paintFailure(painter, {page.index(), visible});
        return true;
    }
    if (backdrop)
        drawPiece(painter, *backdrop, pageRect);
    if (reaches(standIn))
        drawPiece(painter, *standIn, pageRect);
    else if (!backdrop)
        m_pageNotes.paintWaiting(painter, {page.index(), visible});
    return false;
}

bool PDFView::hasFailed(int pageIndex) const
{
    return m_images.hasFailed(*m_document->pageAtIndex(pageIndex), pixelsPerPoint(),
                              neededPixels(pageRectInWidget(pageIndex)));
}

void PDFView::placeDrawAgainButtons()
{
    std::vector<PageNotes::Page> failed;
    for (const int i : visiblePages()) {
        if (hasFailed(i))
            failed.push_back({i, visiblePart(i)});
    }
    m_pageNotes.showButtons(failed);
}

void PDFView::drawAgain(int pageIndex)
{
    const PDFPage *page = m_document ? m_document->pageAtIndex(pageIndex) : nullptr;
    if (!page)
        return;
    m_images.retry(*page);
    placeDrawAgainButtons();
    viewport()->update(visiblePart(pageIndex));
    Q_EMIT pageDrawnAgain(page);
}

bool PDFView::viewportEvent(QEvent *event)
{
    if ((event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) &&
        m_pageNotes.isSecondPress(static_cast<QMouseEvent *>(event)->position().toPoint()))
        return true;
    if (event->type() == QEvent::ToolTip && showAddressAt(*static_cast<QHelpEvent *>(event)))
        return true;
    return ScrolledPages::viewportEvent(event);
}

bool PDFView::event(QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::ParentChange)
        watchWindow();
    const bool isTakenAway = event->type() == QEvent::WindowDeactivate || event->type() == QEvent::WindowBlocked ||
                             event->type() == QEvent::Hide;
    if (isTakenAway)
        endPress(); // its release may go elsewhere, and the pages would scroll on
    return ScrolledPages::event(event);
}

// The hook before a frame runs from the window's update request: from paintEvent() its marks would cause frame after
// frame.
void PDFView::watchWindow()
{
    if (m_watchedWindow == window())
        return;
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
    m_watchedWindow = window();
    m_watchedWindow->installEventFilter(this);
}

bool PDFView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_watchedWindow && event->type() == QEvent::UpdateRequest && isVisible()) {
        if (m_layout.pixelRatio() != viewport()->devicePixelRatioF())
            layoutDocumentView(); // the window came to another screen
        viewWillDraw();
        placeDrawAgainButtons();
    }
    return ScrolledPages::eventFilter(watched, event);
}

} // namespace inkory
