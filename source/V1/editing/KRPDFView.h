#pragma once

#include "V1/editing/OverlayTracking.h"
#include "V1/editing/PointerInteraction.h"
#include "V1/editing/StampViewToolbar.h"
#include "V1/editing/TextEditing.h"
#include "V1/editing/ToolType.h"
#include "V1/stamps/StampHost.h"
#include "platform/core/Image.h"
#include "platform/core/UndoManager.h"
#include "platform/pdf/PrintInfo.h"
#include "platform/widgets/PDFView.h"

#include <QAbstractButton>
#include <QPointer>
#include <QToolButton>

#include <memory>
#include <vector>

/// Posted with the view as object after it placed a stamp.
inline const QString pdfViewAddedImageStampNotification = QStringLiteral("PDF_VIEW_ADDED_IMAGE_STAMP");
inline const QString pdfViewAddedTextStampNotification = QStringLiteral("PDF_VIEW_ADDED_TEXT_STAMP");

/// The view in which stamps are placed, selected, turned and deleted over the pages of a document, and which carries
/// the page commands. Stamps are no widgets: their pages draw them; this view keeps the list of the stamps that it
/// placed, holds the one selection, and shows it with small overlay widgets. Owned by the document window. Points are
/// in view space.
class KRPDFView : public inkory::PDFView, public inkory::StampHost, public inkory::UndoTarget
{
    Q_OBJECT

public:
    using StampList = std::vector<std::shared_ptr<KRStamp>>;

    explicit KRPDFView(QWidget *parent = nullptr);
    ~KRPDFView() override;

    /// First stage of set-up, once, when the toolbar and its buttons are there.
    void awakeFromNib();
    /// Second stage, once, when the view has its document: from now on scrolling is followed.
    void windowDidLoad();

    inkory::UndoManager *undoManager() const override { return m_undoManager; }
    /// The document's; not owned.
    void setUndoManager(inkory::UndoManager *undoManager) { m_undoManager = undoManager; }

    // Outlets, from the window's layout; any may be missing.
    StampViewToolbar *stampViewToolbar() const { return m_stampViewToolbar; }
    void setStampViewToolbar(StampViewToolbar *toolbar) { m_stampViewToolbar = toolbar; }
    QAbstractButton *rotateStampCWButton() const { return m_rotateStampCWButton; }
    void setRotateStampCWButton(QAbstractButton *button) { m_rotateStampCWButton = button; }
    QAbstractButton *rotateStampCCWButton() const { return m_rotateStampCCWButton; }
    void setRotateStampCCWButton(QAbstractButton *button) { m_rotateStampCCWButton = button; }
    QAbstractButton *textEditButton() const { return m_textEditButton; }
    void setTextEditButton(QAbstractButton *button) { m_textEditButton = button; }
    QAbstractButton *textFontButton() const { return m_textFontButton; }
    void setTextFontButton(QAbstractButton *button) { m_textFontButton = button; }
    QAbstractButton *textColorButton() const { return m_textColorButton; }
    void setTextColorButton(QAbstractButton *button) { m_textColorButton = button; }
    QToolButton *textBGColorButton() const { return m_textBGColorButton; }
    void setTextBGColorButton(QToolButton *button) { m_textBGColorButton = button; }

    /// Every stamp placed through this view, in the order of hit-testing: the first one wins where stamps overlap.
    const StampList &stampViews() const { return m_stampViews; }
    /// The first stamp whose rectangle on screen contains the point, or none.
    std::shared_ptr<KRStamp> stampViewForPoint(const inkory::ViewPoint &point) const;
    /// The stamp's rectangle on screen.
    inkory::ViewRect stampRect(const KRStamp &stamp) const;

    KRStamp *selectedStampView() const { return m_selectedStampView.get(); }
    /// None clears the selection. The stamp already selected: nothing at all.
    void setSelectedStampView(const std::shared_ptr<KRStamp> &stamp);

    ToolType currentToolType() const { return m_currentToolType; }
    /// The stamp tools clear the selection.
    void setCurrentToolType(ToolType tool);

    /// The image that new image stamps show; none at first.
    const inkory::ImagePtr &stampImage() const { return m_stampImage; }
    void setStampImage(const inkory::ImagePtr &image) { m_stampImage = image; }

    /// Places a stamp with the stamp image centred on the point of the nearest page, and selects it. Does nothing
    /// without an image; says placementRefused() while the document takes no stamps.
    void addImageStampView(const inkory::ViewPoint &point);
    /// Places an empty text whose first character will stand at the point, and starts editing it; refuses likewise.
    void addTextStampView(const inkory::ViewPoint &point) { m_textEditing.addTextStampView(point); }
    void addStampView(const std::shared_ptr<KRStamp> &stamp);
    void deleteStampView(const std::shared_ptr<KRStamp> &stamp);
    void deleteSelectedStampView();
    /// Moves the selected stamp so that its centre lies within its page's media box; registers no undo.
    void forceBoundsForSelectedStampView();
    void rotateSelectedStampClockwise();
    void rotateSelectedStampCounterClockwise();

    /// Opens the editor over the selected text stamp; nothing without one.
    void startTextEditing() { m_textEditing.startTextEditing(); }
    /// What was typed becomes the stamp's. Harmless when nothing is edited.
    void endTextEditing() { m_textEditing.endTextEditing(); }
    bool isEditingText() const { return m_textEditing.isEditing(); }
    /// The toolbar's edit button: starts or ends editing.
    void editSelectedStamp();
    bool canSetFontAndColor() const;
    void toolbarOpenFontPanel() { m_textEditing.openFontPanel(); }
    void toolbarOpenColorPanel() { m_textEditing.openColorPanel(); }
    /// An entry of the toolbar's menu, whose data is the colour that goes behind the text.
    void bgColorSelectedAction(const QAction &sender);
    TextStampEditor *textEditor() const { return m_textEditing.textEditor(); }
    /// Where to click so that a new text's first character stands at this place, its left end on the baseline.
    inkory::ViewPoint textPlacementPoint(const inkory::ViewPoint &baselineStart) const
    {
        return m_textEditing.placementPoint(baselineStart);
    }

    /// Nudges the selected stamp across the screen (x to the right, y upward, page units at any zoom), not beyond its
    /// page, and scrolls to it. No undo step of its own: it joins the stamp's next one.
    void moveSelectedStampViewByX(float dx, float dy);
    void moveUp(float units = 1) { moveSelectedStampViewByX(0, units); }
    void moveDown(float units = 1) { moveSelectedStampViewByX(0, -units); }
    void moveLeft(float units = 1) { moveSelectedStampViewByX(-units, 0); }
    void moveRight(float units = 1) { moveSelectedStampViewByX(units, 0); }

    void rotateCurrentPageClockwise();
    void rotateCurrentPageCounterClockwise();
    /// Degrees clockwise, with undo; 0 does nothing.
    void rotateCurrentPageByAngle(double angle);
    /// Turns every page by 180 degrees and reverses their order, with undo; is its own opposite.
    void flipDocument();
    /// Asks how, and prints the document, with the shared print settings.
    Q_INVOKABLE void printDocument();
    /// The same with other settings. Nothing without an open document.
    void printWithInfo(const inkory::PrintInfo &info, inkory::AutoRotate autoRotate);
    void printWithInfo(const inkory::PrintInfo &info, inkory::AutoRotate autoRotate, inkory::PageScaling pageScaling);

    void updateStampViewOverlay() { m_overlays.updateStampViewOverlay(); }
    void updateHighlightOverlay(const inkory::ViewPoint &point) { m_overlays.updateHighlightOverlay(point); }
    void updateCurrentCursor(const inkory::ViewPoint &point);
    inkory::ViewRect stampOverlayResizeRect() const { return m_overlays.stampOverlayResizeRect(); }
    /// The laid-out pages with their margins, in view space.
    inkory::ViewRect getDocumentViewFrameInPDFViewCords() const { return documentViewFrame(); }
    const OverlayTracking &overlays() const { return m_overlays; }
    /// A resize of the selected stamp is in progress.
    bool isResizing() const { return m_interaction.isResizing(); }

    void performUndoOperation(const QString &operation, const QVariant &argument) override;

Q_SIGNALS:
    /// A click wanted to place a stamp, but the document takes none (yet).
    void placementRefused();
    void selectionChanged();
    /// An edit of a text began or ended.
    void editingTextChanged();
    /// What canUndo() and canRedo() of the text editor answer may have changed.
    void typingUndoChanged();
    /// Not all of what was to be inserted into a text was taken: why, for the person.
    void textRefused(const QString &reason);
    /// Another font is used than the chosen one, which must not be stored in documents.
    void fontReplaced(const QString &chosen, const QString &used);

protected:
    void viewWillDraw() override;
    bool claimsTouch(const inkory::ViewPoint &point) const override;
    inkory::ViewPoint tapTarget(const inkory::ViewPoint &point, double reach) const override;
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    friend class TextEditing;

    /// A stamp that was placed but never held anything goes as if it had not been placed.
    void takeBackStampView(const std::shared_ptr<KRStamp> &stamp);
    void noteChangeWithoutStep();
    void connectToolbar();
    /// Undo of a page's turning: {"page", "angle" in degrees}.
    void rotateCurrentPageByAngleObject(const QVariantMap &step);
    void rotatePageByAngle(inkory::PDFPage &page, double angle);
    void stampViewNeedsRefresh(const KRStamp &stamp, const QVariantMap &userInfo);
    void registerUndo(const QString &operation, const QVariant &argument, const char *actionName);

    QPointer<inkory::UndoManager> m_undoManager;
    QPointer<StampViewToolbar> m_stampViewToolbar;
    QPointer<QAbstractButton> m_rotateStampCWButton;
    QPointer<QAbstractButton> m_rotateStampCCWButton;
    QPointer<QAbstractButton> m_textEditButton;
    QPointer<QAbstractButton> m_textFontButton;
    QPointer<QAbstractButton> m_textColorButton;
    QPointer<QToolButton> m_textBGColorButton;
    StampList m_stampViews;
    std::shared_ptr<KRStamp> m_selectedStampView;
    inkory::ImagePtr m_stampImage;
    ToolType m_currentToolType = ToolTypeSelect;
    OverlayTracking m_overlays;
    PointerInteraction m_interaction{*this, m_overlays};
    TextEditing m_textEditing{*this, m_overlays};
};
