#pragma once

#include "platform/pdf/PageText.h"
#include "platform/widgets/PageImageStore.h"
#include "platform/widgets/PageNotes.h"
#include "platform/widgets/ScreenDrawingContext.h"
#include "platform/widgets/ScrolledPages.h"
#include "platform/widgets/TextSelection.h"

#include <QPointer>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class QHelpEvent;

namespace inkory
{

struct PageSpot;

/// Shows the pages of a document below one another, lets a person read in them, and draws: Qt has no widget that draws
/// pages through the pages' own drawing. Page contents are drawn in the background and never on the GUI thread; what
/// pages draw over them is drawn at once.
class PDFView : public ScrolledPages
{
    Q_OBJECT

public:
    explicit PDFView(QWidget *parent = nullptr);
    ~PDFView() override;

    /// Not owned; none shows nothing. Starts at the top of the first page.
    void setDocument(PDFDocument *document);

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

    /// What the page draws over its content changed as a whole: it is drawn again, also in the thumbnails.
    void annotationsChangedOnPage(const PDFPage *page);
    /// Sizes, rotations or the order of pages changed.
    void layoutDocumentView();
    void setNeedsDisplayInRect(const ViewRect &rect);

    /// Whether every visible page shows its content at the present zoom.
    bool isContentComplete() const { return m_contentComplete; }

Q_SIGNALS:
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
    void pageSizesChanged() override;

    void paintEvent(QPaintEvent *event) override;
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
    void watchWindow();
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

    PageImageStore m_images{DrawPriority::Visible};
    ScaledImages m_stampImages;
    PageNotes m_pageNotes{*this, [this](int pageIndex) { drawAgain(pageIndex); }};
    QPointer<QWidget> m_watchedWindow;
    QTimer m_idle; // until the neighbours of what is shown are drawn
    bool m_contentComplete = false;
    std::unique_ptr<Reading> m_reading; // goes before the document
};

} // namespace inkory
