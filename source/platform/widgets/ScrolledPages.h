#pragma once

#include "platform/core/Geometry.h"
#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PDFPage.h"
#include "platform/widgets/PageLayout.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QVariantAnimation>

#include <memory>
#include <optional>
#include <vector>

namespace inkory
{

/// Whether a point beside all pages counts for the nearest one.
enum class PageSearch { Exact, Nearest };

class TouchInput;

/// The part of a page view that knows where the pages stand: it scrolls and zooms a document's pages, which are laid
/// out below one another, and converts between page space, view space and the other spaces on screen. Draws nothing.
class ScrolledPages : public QAbstractScrollArea
{
    Q_OBJECT

public:
    static constexpr double minScaleFactor = 0.1;
    static constexpr double maxScaleFactor = 64.0;

    explicit ScrolledPages(QWidget *parent);
    ~ScrolledPages() override;

    PDFDocument *document() const { return m_document; }

    /// Pixels (device-independent) per point.
    double scaleFactor() const { return m_scaleFactor; }
    /// Keeps the middle of the view where it is. Clamped to minScaleFactor and maxScaleFactor; NaN is ignored.
    void setScaleFactor(double factor);
    /// The same, keeping what is shown at the point.
    void setScaleFactor(double factor, const ViewPoint &anchor);
    void zoomIn();
    void zoomOut();
    void zoomActualSize();
    // The current page's media box, unturned, into the whole view. Nothing without a page.
    void fitPageWidth();
    void fitPageSize();

    /// The page gone to last, until the pages are scrolled, or zoomed so that another one is looked at; otherwise the
    /// one in the middle of the view's height. None without pages.
    PDFPage *currentPage() const;
    /// -1 without pages.
    int currentPageIndex() const;
    /// Makes the page the current one and scrolls its top to the top of the view, as far as that goes. Indices outside
    /// the document are ignored.
    void goToPage(int index);

    /// Where in the document the view stands: the page at the view's upper left corner, and that corner in page space.
    struct Place
    {
        int pageIndex = -1;
        PagePoint corner;

        bool operator==(const Place &) const = default;
    };
    Place place() const;
    /// As far as scrolling goes; the zoom factor stays. Places outside the document are ignored.
    void goToPlace(const Place &place);
    /// Device-independent pixels to the right and downward, as far as that goes. Ends what moves by itself.
    void scrollBy(const QPointF &distance) { scrollTo(m_scrollPosition + distance); }
    /// What is left free around something that is scrolled into the view.
    static constexpr double spaceAround = 24;
    /// Scrolls no further than needed for the rectangle, with the space (pixels) around it where there is room, to be
    /// in the view; not at all when it is in view. A rectangle larger than the view is in view where it covers it; one
    /// that is out of view is shown from its upper left corner.
    void scrollToVisible(const PageRect &rect, const PDFPage *page, double space = spaceAround);

    ViewRect convertRectFromPage(const PageRect &rect, const PDFPage *page) const;
    PageRect convertRectToPage(const ViewRect &rect, const PDFPage *page) const;
    ViewPoint convertPointFromPage(const PagePoint &point, const PDFPage *page) const;
    PagePoint convertPointToPage(const ViewPoint &point, const PDFPage *page) const;
    OverlayRect convertRectToOverlay(const ViewRect &rect) const;
    ViewRect convertRectFromOverlay(const OverlayRect &rect) const;
    OverlayPoint convertPointToOverlay(const ViewPoint &point) const;
    ViewPoint convertPointFromOverlay(const OverlayPoint &point) const;
    /// Of a pointer event that reached the view's window.
    ViewPoint convertPointFromWindow(const WindowPoint &point) const;
    /// The whole view, scroll bars included: origin (0, 0).
    ViewRect viewBounds() const;
    /// The part in which pages are shown.
    ViewRect visibleRect() const;
    /// The laid-out pages with their margins.
    ViewRect documentViewFrame() const;

    /// The page at the point, or (Nearest) the closest one in height; none without pages.
    PDFPage *pageForPoint(const ViewPoint &point, PageSearch search) const;

Q_SIGNALS:
    void currentPageChanged();
    /// Before and after a change of the zoom factor.
    void scaleFactorWillChange();
    void scaleFactorChanged();
    /// The pages moved under the view.
    void contentViewBoundsChanged();

protected:
    /// Not owned; none shows nothing. Its pages are still to be laid out.
    void startWithDocument(PDFDocument *document);
    /// Sizes, rotations or the order of pages changed.
    void layOutPages();
    /// Pages came to have other sizes on the screen; called before whoever listens to the change reacts.
    virtual void pageSizesChanged() = 0;
    /// Whether a finger that starts to move here drags what stands there (its moves arrive as a mouse's) instead of the
    /// pages.
    virtual bool claimsTouch(const ViewPoint &) const { return false; }
    /// What a tap at the point is meant for, by a finger that reaches this far (pixels) around it: that point, or one
    /// of something small beside it.
    virtual ViewPoint tapTarget(const ViewPoint &point, double) const { return point; }
    /// Makes the page the current one, where anything of it is seen, until the pages are scrolled.
    void choosePage(int index);

    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool viewportEvent(QEvent *event) override;

    /// One zoom factor follows another, so that it is not worth drawing for this one.
    bool isZoomRestless() const { return m_zoomRest.isActive(); }
    /// From page space to the widget: origin upper left, y downward.
    QTransform widgetTransform(int pageIndex) const;
    QRectF pageRectInWidget(int pageIndex) const;
    /// From the top; those of which anything is seen.
    std::vector<int> visiblePages() const;
    QRect visiblePart(int pageIndex) const;
    double pixelsPerPoint() const;

    QPointer<PDFDocument> m_document;
    PageLayout m_layout;

private:
    friend class TouchInput; // fingers scroll and zoom in the same ways as wheels

    struct ZoomAnchor
    {
        QPointF at; // in the widget
        Place kept;
    };

    // Positions of the document's are those of PageLayout.
    /// Where the view's upper left corner may get at most.
    QSizeF scrollRange() const;
    /// As far as that goes; what is not a number is ignored.
    void moveTo(const QPointF &position);
    /// The same, and ends what moves by itself.
    void scrollTo(const QPointF &position);
    void glideBy(const QPointF &distance);
    void stopMoving();
    void positionChanged();
    QPointF bounded(const QPointF &position) const;
    void setScrollBarRanges();
    void setScrollBarValues();
    /// One step of a scroll bar for this length to scroll.
    static double pixelsPerBarStep(double range);
    bool scrollWithKey(const QKeyEvent &event);
    void scrollSidewaysOrTurnPage(int direction);
    bool isLookedAt(int index) const;
    void noteCurrentPage();

    /// Keeps the place at the point of the widget.
    void zoomKeeping(double factor, const Place &kept, const QPointF &at);
    void zoomByNotches(double notches, const QPointF &at);
    void noteZooming();

    QPointF pointInDocument(const Place &place) const;
    Place placeInDocument(const QPointF &point, int pageIndex) const;
    /// What is shown at a point of the widget, in the space of the nearest page.
    Place placeAt(const QPointF &point) const;
    ViewPoint viewPointAt(const QPointF &point) const { return {point.x(), height() - point.y()}; }
    QTransform viewTransform(const PDFPage *page) const;
    /// Where the document's upper left corner stands in the widget, not rounded.
    QPointF exactOrigin() const;
    /// The same on whole device pixels, as it is drawn.
    QPointF documentOrigin() const;

    double m_scaleFactor = 1;
    QPointF m_scrollPosition; // of the view's upper left corner in the document, exact
    bool m_isSettingScrollBars = false;
    QVariantAnimation m_glide;
    std::optional<ZoomAnchor> m_zoomAnchor; // of the last zooming, until the pages are scrolled
    QElapsedTimer m_sinceZoom;
    QTimer m_zoomRest; // runs while one factor follows another
    std::unique_ptr<TouchInput> m_touch;
    int m_lastCurrentPage = -1;
    int m_chosenPage = -1; // the one gone to, until the pages are scrolled; -1 for none
};

} // namespace inkory
