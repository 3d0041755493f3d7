#pragma once

#include "platform/core/Geometry.h"
#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PDFPage.h"
#include "platform/pdf/PageText.h"
#include "platform/widgets/PageImageStore.h"
#include "platform/widgets/PageLayout.h"
#include "platform/widgets/PageNotes.h"
#include "platform/widgets/ScreenDrawingContext.h"
#include "platform/widgets/TextSelection.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QVariantAnimation>

#include <memory>
#include <optional>
#include <vector>

class QHelpEvent;

namespace inkory
{

struct PageSpot;

/// Whether a point beside all pages counts for the nearest one.
enum class PageSearch { Exact, Nearest };

class TouchInput;

/// Shows the pages of a document below one another, scrolled and zoomed, and converts between page space, view space
/// and the other spaces on screen: nobody else does that arithmetic. Qt has no widget that draws pages through the
/// pages' own drawing. Page contents are drawn in the background and never on the GUI thread; what pages draw over them
/// is drawn at once.
class PDFView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    static constexpr double minScaleFactor = 0.1;
    static constexpr double maxScaleFactor = 64.0;

    explicit PDFView(QWidget *parent = nullptr);
    ~PDFView() override;

    /// Not owned; none shows nothing. Starts at the top of the first page.
    void setDocument(PDFDocument *document);
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

    // Reading: the text of pages, their links, and marks on them.

    bool hasTextSelection() const;
    /// Lines end with line feeds; pages too. Not more than so many UTF-16 units, and none that is half a character.
    QString selectedText(qsizetype most = TextSelection::mostUnits) const;
    /// Where the selected text begins: in the middle of what is selected of its first line. None without a selection,
    /// or while it is far from what is shown.
    std::optional<Place> selectedPlace() const;
    /// Puts the selected text on the clipboard; nothing without one.
    void copySelection();
    /// All text of the current page.
    void selectAllText();
    void clearTextSelection();

    /// What a search found, to be marked on the pages; `current` is the index of the mark that stands out, or -1.
    void setFindMarks(std::vector<FindHit> marks, int current);
    /// The document's page that shows this page of the file; none where it has no such page.
    PDFPage *pageForSourceIndex(int sourceIndex) const;
    /// For the pointer's shape. Not over what has not been read yet.
    bool isOverText(const ViewPoint &point) const;
    /// Of the link at the point that leads out of the document; empty without one.
    QString addressAt(const ViewPoint &point) const;
    /// Over a link that a click would follow.
    bool isOverLink(const ViewPoint &point) const;

    /// Goes to a destination inside the document, and remembers the place that is left.
    void followDestination(const PageDestination &destination);
    bool canGoBack() const;
    bool canGoForward() const;
    /// To the place that was left last, and on again.
    void goBack();
    void goForward();

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

    /// What the page draws over its content changed as a whole: it is drawn again, also in the thumbnails.
    void annotationsChangedOnPage(const PDFPage *page);
    /// Sizes, rotations or the order of pages changed.
    void layoutDocumentView();
    void setNeedsDisplayInRect(const ViewRect &rect);

    /// Whether every visible page shows its content at the present zoom.
    bool isContentComplete() const { return m_contentComplete; }

Q_SIGNALS:
    void currentPageChanged();
    /// Before and after a change of the zoom factor.
    void scaleFactorWillChange();
    void scaleFactorChanged();
    /// The pages moved under the view.
    void contentViewBoundsChanged();
    /// See annotationsChangedOnPage(); with none, all pages changed their layout.
    void pageAppearanceChanged(const inkory::PDFPage *page);
    /// isContentComplete() became true.
    void contentCompleted();
    void textSelectionChanged();
    /// The selected text is on the clipboard, all of it or as much as could be read.
    void selectionCopied(bool isWhole);
    /// canGoBack() or canGoForward() may have changed.
    void historyChanged();
    /// A press on a link that leads out of the document: http, https or mailto. Nothing has been opened.
    void addressActivated(const QString &address);
    /// The document was printed to a file of this name.
    void printedToFile(const QString &displayableName);
    /// The page, which could not be drawn, is being tried again because the person wants it.
    void pageDrawnAgain(const inkory::PDFPage *page);

protected:
    /// Called once before each frame is painted. Marks that it makes join that frame.
    virtual void viewWillDraw() {}
    /// Whether a finger that starts to move here drags what stands there (its moves arrive as a mouse's) instead of the
    /// pages.
    virtual bool claimsTouch(const ViewPoint &) const { return false; }
    /// What a tap at the point is meant for, by a finger that reaches this far (pixels) around it: that point, or one
    /// of something small beside it.
    virtual ViewPoint tapTarget(const ViewPoint &point, double) const { return point; }

    /// Makes the page the current one, where anything of it is seen, until the pages are scrolled.
    void choosePage(int index);

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent *event) override;
    /// Presses that a subclass does not claim select text and follow links.
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    friend class TouchInput; // fingers scroll and zoom in the same ways as wheels

    // Scrolling. Positions of the document's are those of PageLayout.
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

    // Zooming.
    /// Keeps the place at the point of the widget.
    void zoomKeeping(double factor, const Place &kept, const QPointF &at);
    void zoomByNotches(double notches, const QPointF &at);
    void noteZooming();
    QPointF pointInDocument(const Place &place) const;
    Place placeInDocument(const QPointF &point, int pageIndex) const;
    /// What is shown at a point of the widget, in the space of the nearest page.
    Place placeAt(const QPointF &point) const;
    ViewPoint viewPointAt(const QPointF &point) const { return {point.x(), height() - point.y()}; }

    /// From page space to the widget: origin upper left, y downward.
    QTransform widgetTransform(int pageIndex) const;
    QTransform viewTransform(const PDFPage *page) const;
    /// Where the document's upper left corner stands in the widget, not rounded.
    QPointF exactOrigin() const;
    /// The same on whole device pixels, as it is drawn.
    QPointF documentOrigin() const;
    QRectF pageRectInWidget(int pageIndex) const;
    /// From the top; those of which anything is seen.
    std::vector<int> visiblePages() const;
    QRect visiblePart(int pageIndex) const;
    double pixelsPerPoint() const;
    void watchWindow();
    void noteCurrentPage();
    void pageContentArrived(int sourceIndex);
    void paintPage(QPainter &painter, int pageIndex, const QRect &dirty, bool &complete);
    void paintBackground(QPainter &painter, const QRegion &dirty) const;
    bool drawPageContent(QPainter &painter, const PDFPage &page, const QRectF &pageRect);
    /// Exactly, where the image has the device's pixels, otherwise scaled.
    void drawPiece(QPainter &painter, const PageImageStore::Piece &piece, const QRectF &pageRect) const;
    QRectF placeOfPiece(const PageImageStore::Piece &piece, const QRectF &pageRect) const;
    /// The visible part of a page, in device pixels of the whole shown page.
    QRect neededPixels(const QRectF &pageRect) const;
    /// Asks for what the next frame will show, so that it is being drawn while that frame is still being prepared.
    void requestVisibleContent();
    void drawNeighboursAhead();
    bool hasFailed(int pageIndex) const;
    void placeDrawAgainButtons();
    void drawAgain(int pageIndex);

    struct Reading;
    struct LeftPlace;
    void setUpReading();
    /// Before the document changes.
    void forgetReading();
    /// Marks and selection, over the page's content.
    void paintReading(QPainter &painter, int pageIndex);
    void fetchTexts();
    TextSelection::Unit unitOfPress(const ViewPoint &point, bool isSecond);
    PageSpot spotAt(const ViewPoint &point) const;
    const PageLink *linkAt(const ViewPoint &point) const;
    bool showAddressAt(const QHelpEvent &event);
    void endPress();
    void selectTo(const ViewPoint &point);
    void follow(const PageLink &link);
    LeftPlace placeToLeave() const;
    void returnTo(const std::optional<LeftPlace> &target);

    QPointer<PDFDocument> m_document;
    PageLayout m_layout;
    PageImageStore m_images{DrawPriority::Visible};
    ScaledImages m_stampImages;
    PageNotes m_pageNotes{*this, [this](int pageIndex) { drawAgain(pageIndex); }};
    QPointer<QWidget> m_watchedWindow;
    struct ZoomAnchor
    {
        QPointF at; // in the widget
        Place kept;
    };

    double m_scaleFactor = 1;
    QPointF m_scrollPosition; // of the view's upper left corner in the document, exact
    bool m_isSettingScrollBars = false;
    QVariantAnimation m_glide;
    std::optional<ZoomAnchor> m_zoomAnchor; // of the last zooming, until the pages are scrolled
    QElapsedTimer m_sinceZoom;
    QTimer m_zoomRest; // runs while one factor follows another
    QTimer m_idle;     // until the neighbours of what is shown are drawn
    std::unique_ptr<TouchInput> m_touch;
    int m_lastCurrentPage = -1;
    int m_chosenPage = -1; // the one gone to, until the pages are scrolled; -1 for none
    bool m_contentComplete = false;
    std::unique_ptr<Reading> m_reading; // goes before the document
};

} // namespace inkory
