#include "platform/widgets/ScrolledPages.h"

#include "platform/widgets/TouchInput.h"

#include <QNativeGestureEvent>

#include <utility>

namespace inkory
{

ScrolledPages::ScrolledPages(QWidget *parent)
    : QAbstractScrollArea(parent), m_touch(std::make_unique<TouchInput>(*this))
{
    setFrameShape(QFrame::NoFrame);      // the viewport's origin is the view's
    setLayoutDirection(Qt::LeftToRight); // the same: a scroll bar at the left would move it
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAttribute(Qt::WA_AcceptTouchEvents);
    viewport()->ungrabGesture(Qt::PanGesture); // it would scroll beside TouchInput, also under a drag
    m_zoomRest.setSingleShot(true);
    connect(&m_zoomRest, &QTimer::timeout, viewport(), qOverload<>(&QWidget::update));
    connect(&m_glide, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &position) { moveTo(position.toPointF()); });
}

ScrolledPages::~ScrolledPages() = default;

void ScrolledPages::startWithDocument(PDFDocument *document)
{
    m_document = document;
    stopMoving();
    m_scrollPosition = {};
    m_chosenPage = -1;
}

PDFPage *ScrolledPages::currentPage() const
{
    return m_document ? m_document->pageAtIndex(currentPageIndex()) : nullptr;
}

int ScrolledPages::currentPageIndex() const
{
    if (m_chosenPage >= 0 && m_chosenPage < m_layout.pageCount() &&
        pageRectInWidget(m_chosenPage).intersects(viewport()->rect()))
        return m_chosenPage;
    return m_layout.nearestPage(viewport()->height() / 2.0 - documentOrigin().y());
}

void ScrolledPages::layOutPages()
{
    std::vector<QSizeF> sizes;
    if (m_document) {
        sizes.reserve(static_cast<std::size_t>(m_document->pageCount()));
        for (int i = 0; i < m_document->pageCount(); ++i)
            sizes.push_back(m_document->pageAtIndex(i)->shownSize());
    }
    // The page at the top stays there, whatever the pages above it became.
    const int topPage = m_layout.nearestPage(m_scrollPosition.y() + PageLayout::margin / 2);
    const QPointF beyondCorner = topPage < 0 ? QPointF() : m_scrollPosition - m_layout.pageRect(topPage).topLeft();
    m_glide.stop();
    m_layout = PageLayout(sizes, m_scaleFactor, viewport()->devicePixelRatioF());
    m_zoomAnchor.reset();
    setScrollBarRanges();
    const bool isKept = topPage >= 0 && topPage < m_layout.pageCount();
    m_scrollPosition = bounded(isKept ? m_layout.pageRect(topPage).topLeft() + beyondCorner : QPointF());
    setScrollBarValues();
    viewport()->update();
    pageSizesChanged();
    noteCurrentPage();
    Q_EMIT contentViewBoundsChanged();
}

void ScrolledPages::noteCurrentPage()
{
    const int current = currentPageIndex();
    if (std::exchange(m_lastCurrentPage, current) != current)
        Q_EMIT currentPageChanged();
}

bool ScrolledPages::viewportEvent(QEvent *event)
{
    if (m_touch->handle(event))
        return true;
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
        stopMoving(); // what is pressed is not to slip away, or to be dragged by pages that glide on
    if (event->type() == QEvent::NativeGesture) {
        const auto *gesture = static_cast<QNativeGestureEvent *>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            setScaleFactor(m_scaleFactor * (1 + gesture->value()), viewPointAt(gesture->position()));
            return true;
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

} // namespace inkory
