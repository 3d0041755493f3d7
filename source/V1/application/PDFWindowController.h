#pragma once

#include "V1/editing/ToolType.h"
#include "V1/library/ImageStampReceiver.h"
#include "platform/core/Image.h"
#include "platform/widgets/WindowController.h"

#include <QPointer>

#include <functional>

class KRPDFDocument;
class KRPDFView;
class QAction;
class QComboBox;
class QMenu;
class QStackedWidget;
class QTabWidget;
class QToolButton;

namespace inkory
{
class DocumentStatePage;
class DocumentStatusBar;
class FindBar;
class NoticeStrip;
class OutlineView;
class PDFThumbnailView;
class SegmentedControl;
} // namespace inkory

/// Asks the window controller of every open document to change its tool; user info "toolType": a number.
inline const QString pdfViewRequestChangeToolNotification = QStringLiteral("PDF_VIEW_REQUEST_CHANGE_TOOL");

/// Runs the window of one document: wires its views together, turns controls, menu items and single-letter keys into
/// commands of the editing view, and owns the notion of the current tool. Made and owned by the document.
class PDFWindowController : public inkory::WindowController, public inkory::ImageStampReceiver
{
    Q_OBJECT

public:
    explicit PDFWindowController(const QString &interfaceName);
    ~PDFWindowController() override;

    /// The document's PDF, handed over before the window is loaded. Not owned: the document outlives its windows.
    void setPdfDoc(KRPDFDocument *pdfDoc);
    KRPDFDocument *pdfDoc() const { return m_pdfDoc; }

    /// Commands by the tag of the sender's selected segment: 0 in, 1 out, 2 actual size, 3 fit page, 4 fit width.
    void zoom(const inkory::SegmentedControl *sender);
    /// 0 counter-clockwise, 1 clockwise, 2 flip.
    void rotate(const inkory::SegmentedControl *sender);
    /// The tool is the tag of a segmented control's selected segment or of a menu item; other senders are ignored.
    void switchTool(const QObject *sender);

    ToolType currentToolType() const { return m_currentToolType; }
    /// The image tool first runs the dialog in which a signature is chosen, every time; without a choice the select
    /// tool becomes the current one.
    void setCurrentToolType(ToolType tool);

    inkory::ImagePtr imageStampViewImage() const { return m_imageStampViewImage; }
    /// The image that new image stamps show. Nothing for the one already set.
    void setImageStampViewImage(const inkory::ImagePtr &image) override;
    QWidget *imageStampWindow() override { return window(); }

    KRPDFView *pdfView() const { return m_pdfView; }

protected:
    void awakeFromNib() override;
    void windowDidLoad() override;
    bool keyDown(QKeyEvent &event) override;

private:
    void connectFileActions();
    void connectEditActions();
    void connectViewActions();
    void connectReadingActions();
    void connectFindActions();
    void connectOutline();
    void connectTextActions();
    void connectControls();
    void connectStatusBar();
    void observeNotifications();
    void onTriggered(const char *actionName, const std::function<void()> &command);
    void fillRecentMenu();
    void showDocumentState();
    void showSidePanel();
    void showGeometryState();
    void showZoomFactor();
    void enterZoomFactor();
    void showCurrentPage();
    void updateUndoActions();
    void updatePageCommands();
    void updateReadingCommands();
    void updateTextCommands();
    void undo();
    void redo();
    void showContextMenu(const QPoint &place);
    void addAddressItems(QMenu &menu, const QString &address);
    void askToOpenAddress(const QString &address);
    bool offersTools() const;
    void showSignatureImage();
    void showToolHint(const QString &hint);
    void showAbout();

    QPointer<KRPDFDocument> m_pdfDoc;
    inkory::ImagePtr m_imageStampViewImage;
    ToolType m_currentToolType = ToolTypeSelect;
    QString m_toolHint; // as last shown
    bool m_hasChosenFirstZoom = false;
    bool m_isSaving = false;
    bool m_hasToldOfRepair = false;

    // Outlets; they belong to the window.
    KRPDFView *m_pdfView = nullptr;
    inkory::PDFThumbnailView *m_pdfThumbnailView = nullptr;
    inkory::OutlineView *m_outlineView = nullptr;
    QTabWidget *m_sidePanel = nullptr;
    inkory::FindBar *m_findBar = nullptr;
    inkory::SegmentedControl *m_toolSelectionControl = nullptr;
    QToolButton *m_imageStampToolbarImageView = nullptr;
    QStackedWidget *m_pageArea = nullptr;
    inkory::NoticeStrip *m_noticeStrip = nullptr;
    inkory::DocumentStatePage *m_statePage = nullptr;
    inkory::DocumentStatusBar *m_statusBar = nullptr;
    QComboBox *m_zoomFactorField = nullptr;
};
