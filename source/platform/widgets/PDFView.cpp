#include "platform/widgets/PDFView.h"

#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace inkory
{

namespace
{

const double zoomStep = 1.25;
constexpr int pixelsPerScrollStep = 40;

} // namespace

PDFView::PDFView(QWidget *parent) : QAbstractScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);      // the viewport's origin is the view's
    setLayoutDirection(Qt::LeftToRight); // the same: a scroll bar at the left would move it
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_AcceptTouchEvents);
    connect(&m_images, &PageImageStore::pieceArrived, this, &PDFView::pageContentArrived);
}

PDFView::~PDFView() = default;

void PDFView::setDocument(PDFDocument *document)
{
    if (m_document)
        m_document->disconnect(this);
    m_document = document;
    m_images.setDocument(document);
    if (document) {
        connect(document, &PDFDocument::layoutChanged, this, &PDFView::layoutDocumentView);
        connect(document, &PDFDocument::stateChanged, this, &PDFView::layoutDocumentView);
    }
    layoutDocumentView();
    verticalScrollBar()->setValue(0);
}

void PDFView::setScaleFactor(double factor)
{
    const ViewRect visible = visibleRect();
    setScaleFactor(factor, visible.center());
}

void PDFView::setScaleFactor(double factor, const ViewPoint &anchor)
{
    if (std::isnan(factor))
        return;
    factor = std::clamp(factor, minScaleFactor, maxScaleFactor);
    if (qFuzzyCompare(factor, m_scaleFactor))
        return;
    Q_EMIT scaleFactorWillChange();
    const PDFPage *page = pageForPoint(anchor, PageSearch::Nearest);
    const PagePoint kept = page ? convertPointToPage(anchor, page) : PagePoint{};
    m_scaleFactor = factor;
    const int chosen = m_chosenPage;
    layoutDocumentView();
    if (page) {
        const ViewPoint now = convertPointFromPage(kept, page);
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() + qRound(now.x - anchor.x));
        verticalScrollBar()->setValue(verticalScrollBar()->value() + qRound(anchor.y - now.y));
    }
    m_chosenPage = chosen; // zooming is not going elsewhere
    noteCurrentPage();
    Q_EMIT scaleFactorChanged();
}

void PDFView::zoomIn()
{
    setScaleFactor(m_scaleFactor * zoomStep);
}

void PDFView::zoomOut()
{
    setScaleFactor(m_scaleFactor / zoomStep);
}

PDFPage *PDFView::currentPage() const
{
    return m_document ? m_document->pageAtIndex(currentPageIndex()) : nullptr;
}

int PDFView::currentPageIndex() const
{
    if (m_chosenPage >= 0 && m_chosenPage < m_layout.pageCount() &&
        pageRectInWidget(m_chosenPage).intersects(viewport()->rect()))
        return m_chosenPage;
    return m_layout.nearestPage(viewport()->height() / 2.0 - documentOrigin().y());
}

void PDFView::goToPage(int index)
{
    if (index < 0 || index >= m_layout.pageCount())
        return;
    verticalScrollBar()->setValue(qRound(m_layout.pageRect(index).top() - PageLayout::margin));
    m_chosenPage = index; // also where there is nothing to scroll
    noteCurrentPage();
}

PDFView::Place PDFView::place() const
{
    return {};
}

void PDFView::goToPlace(const Place &) {}
void PDFView::scrollToVisible(const PageRect &, const PDFPage *) {}

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

void PDFView::layoutDocumentView()
{
    std::vector<QSizeF> sizes;
    if (m_document) {
        sizes.reserve(static_cast<std::size_t>(m_document->pageCount()));
        for (int i = 0; i < m_document->pageCount(); ++i)
            sizes.push_back(m_document->pageAtIndex(i)->shownSize());
    }
    m_layout = PageLayout(sizes, m_scaleFactor);
    m_contentComplete = false;
    updateScrollBars();
    viewport()->update();
    // Before the frame, but after whoever else reacts to the same change: the zoom may be about to follow.
    QMetaObject::invokeMethod(this, &PDFView::requestVisibleContent, Qt::QueuedConnection);
    noteCurrentPage();
    Q_EMIT pageAppearanceChanged(nullptr);
}

void PDFView::updateScrollBars()
{
    const QSizeF document = m_layout.documentSize();
    const QSize shown = viewport()->size();
    const auto adjust = [](QScrollBar *bar, double documentLength, int shownLength) {
        bar->setPageStep(shownLength);
        bar->setSingleStep(pixelsPerScrollStep);
        bar->setRange(0, std::max(0, qCeil(std::min(documentLength, 2e9)) - shownLength));
    };
    adjust(horizontalScrollBar(), document.width(), shown.width());
    adjust(verticalScrollBar(), document.height(), shown.height());
}

void PDFView::noteCurrentPage()
{
    const int current = currentPageIndex();
    if (std::exchange(m_lastCurrentPage, current) != current)
        Q_EMIT currentPageChanged();
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
    painter.setRenderHint(QPainter::Antialiasing);
    bool complete = m_layout.pageCount() > 0;
    for (const int i : visiblePages())
        paintPage(painter, i, event->rect(), complete);
    m_images.cancelStaleRequests();
    m_pageNotes.endFrame();
    if (complete && !std::exchange(m_contentComplete, complete))
        Q_EMIT contentCompleted();
    m_contentComplete = complete;
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
    };
    ScreenDrawingContext context(painter, widgetTransform(pageIndex), content, m_stampImages);
    const DrawingContext::Scope scope(context);
    page.drawWithBox(DisplayBox::CropBox);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1));
    painter.drawRect(rect.toAlignedRect().adjusted(-1, -1, 0, 0)); // a thin edge around the page
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
    if (!isVisible())
        return;
    for (const int i : visiblePages())
        m_images.piece(*m_document->pageAtIndex(i), pixelsPerPoint(), neededPixels(pageRectInWidget(i)));
}

bool PDFView::drawPageContent(QPainter &painter, const PDFPage &page, const QRectF &pageRect)
{
    painter.fillRect(pageRect, Qt::white);
    const QRect visible = visiblePart(page.index());
    const auto placeOf = [&](const PageImageStore::Piece &piece) {
        const double k = m_scaleFactor / piece.scale; // pixels of the image to pixels of the widget
        return QRectF(pageRect.topLeft() + QPointF(piece.region.topLeft()) * k, QSizeF(piece.image.size()) * k);
    };
    const auto draw = [&](const PageImageStore::Piece &piece) { painter.drawImage(placeOf(piece), piece.image); };
    if (const auto *piece = m_images.piece(page, pixelsPerPoint(), neededPixels(pageRect))) {
        draw(*piece);
        return true;
    }
    if (hasFailed(page.index())) {
        m_pageNotes.paintFailure(painter, {page.index(), visible});
        return true;
    }
    const auto *standIn = m_images.standIn(page);
    if (standIn && placeOf(*standIn).intersects(visible)) {
        painter.save();
        painter.setClipRect(pageRect, Qt::IntersectClip);
        draw(*standIn);
        painter.restore();
    } else {
        m_pageNotes.paintWaiting(painter, {page.index(), visible});
    }
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

void PDFView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
    noteCurrentPage();
    Q_EMIT contentViewBoundsChanged();
}

void PDFView::scrollContentsBy(int, int)
{
    m_chosenPage = -1;
    viewport()->update();
    noteCurrentPage();
    Q_EMIT contentViewBoundsChanged();
}

void PDFView::wheelEvent(QWheelEvent *event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    const double steps = event->angleDelta().y() / 120.0;
    setScaleFactor(m_scaleFactor * std::pow(zoomStep, steps),
                   {event->position().x(), height() - event->position().y()});
    event->accept();
}

void PDFView::keyPressEvent(QKeyEvent *event)
{
    QScrollBar *bar = verticalScrollBar();
    if (event->key() == Qt::Key_Home)
        bar->setValue(bar->minimum());
    else if (event->key() == Qt::Key_End)
        bar->setValue(bar->maximum());
    else if (event->key() == Qt::Key_Space)
        bar->triggerAction(event->modifiers().testFlag(Qt::ShiftModifier) ? QAbstractSlider::SliderPageStepSub
                                                                          : QAbstractSlider::SliderPageStepAdd);
    else
        QAbstractScrollArea::keyPressEvent(event);
}

bool PDFView::viewportEvent(QEvent *event)
{
    if ((event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) &&
        m_pageNotes.isSecondPress(static_cast<QMouseEvent *>(event)->position().toPoint()))
        return true;
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            setScaleFactor(m_scaleFactor * (1 + gesture->value()),
                           {gesture->position().x(), height() - gesture->position().y()});
            return true;
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

bool PDFView::event(QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::ParentChange)
        watchWindow();
    return QAbstractScrollArea::event(event);
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
        viewWillDraw();
        placeDrawAgainButtons();
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

} // namespace inkory
