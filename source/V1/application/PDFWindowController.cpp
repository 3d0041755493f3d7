#include "V1/application/PDFWindowController.h"

#include "V1/application/DocumentStatePage.h"
#include "V1/application/DocumentStatusBar.h"
#include "V1/application/FindBar.h"
#include "V1/application/NoticeStrip.h"
#include "V1/editing/KRPDFView.h"
#include "V1/library/ImageStampSelectionController.h"
#include "V1/stamps/KRPDFDocument.h"
#include "platform/core/NotificationCenter.h"
#include "platform/core/PhysicalKeys.h"
#include "platform/widgets/ColorPanel.h"
#include "platform/widgets/Document.h"
#include "platform/widgets/InterfaceDescriptions.h"
#include "platform/widgets/OutlineView.h"
#include "platform/widgets/PDFThumbnailView.h"
#include "platform/widgets/SegmentedControl.h"

#include <QAction>
#include <QComboBox>
#include <QKeyEvent>
#include <QPainter>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolButton>

#include <algorithm>
#include <utility>

using namespace inkory;

namespace
{

// A page is not enlarged beyond this when a document is shown for the first time.
constexpr double maxFirstZoom = 1.5;

// The image on a small sheet: ink is drawn for paper, also in dark themes.
QPixmap onPaper(const QImage &image, const QSize &sheet, double devicePixelRatio)
{
    QPixmap pixmap(sheet * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(QPointF(0, 0), QSizeF(sheet)).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    const QSizeF fitted = QSizeF(image.size()).scaled(QSizeF(sheet) - QSizeF(8, 4), Qt::KeepAspectRatio);
    const QImage scaled = image.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                              .scaled((fitted * devicePixelRatio).toSize().expandedTo(QSize(1, 1)),
                                      Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(
        QRectF(QPointF((sheet.width() - fitted.width()) / 2, (sheet.height() - fitted.height()) / 2), fitted), scaled);
    return pixmap;
}

} // namespace

PDFWindowController::PDFWindowController(const QString &interfaceName) : WindowController(interfaceName) {}

PDFWindowController::~PDFWindowController() = default;

void PDFWindowController::setPdfDoc(KRPDFDocument *pdfDoc)
{
    m_pdfDoc = pdfDoc;
}

void PDFWindowController::awakeFromNib()
{
    const QWidget &root = *window();
    m_pdfView = outlet<KRPDFView>(root, QStringLiteral("pdfView"));
    m_pdfThumbnailView = outlet<PDFThumbnailView>(root, QStringLiteral("pdfThumbnailView"));
    m_outlineView = outlet<OutlineView>(root, QStringLiteral("outlineView"));
    m_sidePanel = outlet<QTabWidget>(root, QStringLiteral("sidePanel"));
    m_findBar = outlet<FindBar>(root, QStringLiteral("findBar"));
    m_toolSelectionControl = outlet<SegmentedControl>(root, QStringLiteral("toolSelectionControl"));
    m_imageStampToolbarImageView = outlet<QToolButton>(root, QStringLiteral("imageStampToolbarImageView"));
    m_pageArea = outlet<QStackedWidget>(root, QStringLiteral("pageArea"));
    m_noticeStrip = outlet<NoticeStrip>(root, QStringLiteral("noticeStrip"));
    m_statePage = outlet<DocumentStatePage>(root, QStringLiteral("documentStatePage"));
    m_statusBar = outlet<DocumentStatusBar>(root, QStringLiteral("statusBar"));
    m_zoomFactorField = outlet<QComboBox>(root, QStringLiteral("zoomFactorField"));
    m_pdfView->awakeFromNib();
    showSignatureImage();
}

void PDFWindowController::windowDidLoad()
{
    ColorPanel::closeShared(); // a text in another window may have left it open
    if (document())
        m_pdfView->setUndoManager(&document()->undoManager());
    m_pdfView->setDocument(m_pdfDoc);
    m_pdfThumbnailView->setPDFView(m_pdfView);
    m_findBar->setPDFView(m_pdfView);
    connectOutline();
    setCurrentToolType(ToolTypeSelect);
    observeNotifications();
    m_pdfView->windowDidLoad();

    connectControls();
    connectFileActions();
    connectEditActions();
    connectViewActions();
    connectReadingActions();
    connectFindActions();
    connectTextActions();
    connectStatusBar();
    if (m_pdfDoc) {
        connect(m_pdfDoc, &PDFDocument::stateChanged, this, &PDFWindowController::showDocumentState);
        connect(m_pdfDoc, &PDFDocument::geometrySettled, this, &PDFWindowController::showGeometryState);
    }
    showDocumentState();
}

// The tool stays when a stamp was added, so that the next click adds another; only its hint has done its work.
void PDFWindowController::observeNotifications()
{
    NotificationCenter &center = NotificationCenter::defaultCenter();
    center.addObserver(this, pdfViewRequestChangeToolNotification, nullptr, [this](const Notification &notification) {
        setCurrentToolType(static_cast<ToolType>(notification.userInfo.value(QStringLiteral("toolType")).toInt()));
    });
    for (const QString &added : {pdfViewAddedImageStampNotification, pdfViewAddedTextStampNotification})
        center.addObserver(this, added, m_pdfView, [this](const Notification &) { showToolHint({}); });
}

void PDFWindowController::zoom(const SegmentedControl *sender)
{
    switch (sender->tagForSegment(sender->selectedSegment())) {
    case 0:
        m_pdfView->zoomIn();
        break;
    case 1:
        m_pdfView->zoomOut();
        break;
    case 2:
        m_pdfView->zoomActualSize();
        break;
    case 3:
        m_pdfView->fitPageSize();
        break;
    case 4:
        m_pdfView->fitPageWidth();
        break;
    default:
        break;
    }
}

void PDFWindowController::rotate(const SegmentedControl *sender)
{
    switch (sender->tagForSegment(sender->selectedSegment())) {
    case 0:
        m_pdfView->rotateCurrentPageCounterClockwise();
        break;
    case 1:
        m_pdfView->rotateCurrentPageClockwise();
        break;
    case 2:
        m_pdfView->flipDocument();
        break;
    default:
        break;
    }
}

void PDFWindowController::switchTool(const QObject *sender)
{
    if (const auto *control = qobject_cast<const SegmentedControl *>(sender))
        setCurrentToolType(static_cast<ToolType>(control->tagForSegment(control->selectedSegment())));
    else if (const auto *item = qobject_cast<const QAction *>(sender))
        setCurrentToolType(static_cast<ToolType>(item->property("tag").toInt()));
}

void PDFWindowController::setCurrentToolType(ToolType tool)
{
    switch (tool) {
    case ToolTypeSelect:
        m_toolSelectionControl->setSelectedSegment(0);
        break;
    case ToolTypeImageStamp:
        m_toolSelectionControl->setSelectedSegment(1);
        if (!ImageStampSelectionController::sharedImageStampSelection().showModal(*this)) {
            tool = ToolTypeSelect;
            m_toolSelectionControl->setSelectedSegment(0);
        }
        break;
    case ToolTypeTextStamp:
        m_toolSelectionControl->setSelectedSegment(2);
        break;
    default:
        break;
    }
    m_pdfView->setCurrentToolType(tool);
    m_currentToolType = tool;
    if (tool == ToolTypeImageStamp && m_imageStampViewImage)
        showToolHint(tr("Click where the signature belongs."));
    else
        showToolHint(tool == ToolTypeTextStamp ? tr("Click where the text belongs.") : QString());
}

// Empty: the last one goes, if it is still there.
void PDFWindowController::showToolHint(const QString &hint)
{
    if (!hint.isEmpty() || (!m_toolHint.isEmpty() && m_statusBar->inlineMessage() == m_toolHint))
        m_statusBar->showInlineMessage(hint, DocumentStatusBar::Stay::AWhile);
    m_toolHint = hint;
}

void PDFWindowController::setImageStampViewImage(const ImagePtr &image)
{
    if (image == m_imageStampViewImage)
        return;
    m_imageStampViewImage = image;
    showSignatureImage();
    m_pdfView->setStampImage(image);
}

// A document that is only read, or not open, has nothing to place stamps on.
bool PDFWindowController::offersTools() const
{
    return m_pdfDoc && m_pdfDoc->state() == PDFDocument::State::Open && m_pdfDoc->readOnlyReason().isEmpty();
}

bool PDFWindowController::keyDown(QKeyEvent &event)
{
    if (hasAnyModifier(event))
        return false;
    if (physicalKey(event) == PhysicalKey::Escape && m_findBar->isVisible()) {
        m_findBar->dismiss(); // nobody else had anything to end
        return true;
    }
    if (!offersTools())
        return false;
    switch (physicalKey(event)) {
    case PhysicalKey::V:
        setCurrentToolType(ToolTypeSelect);
        return true;
    case PhysicalKey::S:
        setCurrentToolType(ToolTypeImageStamp);
        return true;
    case PhysicalKey::T:
        setCurrentToolType(ToolTypeTextStamp);
        return true;
    default:
        return false;
    }
}

void PDFWindowController::showDocumentState()
{
    if (!m_pdfDoc)
        return;
    const bool isOpen = m_pdfDoc->state() == PDFDocument::State::Open;
    m_statePage->showState(*m_pdfDoc, document() ? document()->displayName() : QString());
    showSidePanel();
    if (isOpen) {
        m_pageArea->setCurrentWidget(m_pdfView);
        m_pdfView->setFocus();
        if (!std::exchange(m_hasChosenFirstZoom, true)) {
            m_pdfView->fitPageWidth();
            m_pdfView->setScaleFactor(std::min(m_pdfView->scaleFactor(), maxFirstZoom));
            m_pdfView->goToPage(0);
        }
    } else {
        m_pageArea->setCurrentWidget(m_statePage);
        m_findBar->dismiss();
    }
    updateReadingCommands();
    showGeometryState();
    showCurrentPage();
    showZoomFactor();
}

// Without pages there is nothing to show in it: the person's choice waits until there are some.
void PDFWindowController::showSidePanel()
{
    auto *action = outlet<QAction>(*window(), QStringLiteral("actionSidePanel"));
    const bool hasPages = m_pdfDoc && m_pdfDoc->state() == PDFDocument::State::Open;
    action->setEnabled(hasPages);
    m_sidePanel->setVisible(hasPages && action->isChecked());
    outlet<QSplitter>(*window(), QStringLiteral("splitter"))
        ->refresh(); // the first zoom fits what is left to the pages
}

void PDFWindowController::showGeometryState()
{
    updatePageCommands();
    const bool isOpen = m_pdfDoc && m_pdfDoc->state() == PDFDocument::State::Open;
    const QString readOnlyReason = isOpen ? m_pdfDoc->readOnlyReason() : QString();
    m_statusBar->showInlineMessage(m_isSaving ? tr("Saving…") : readOnlyReason, DocumentStatusBar::Stay::UntilReplaced);
    if (!isOpen || !m_pdfDoc->isGeometrySettled() || !m_pdfDoc->wasRepaired() || std::exchange(m_hasToldOfRepair, true))
        return;
    m_noticeStrip->showNotice(
        readOnlyReason.isEmpty()
            ? tr("This document was damaged and has been repaired while it was opened. Check its pages before you sign "
                 "it.")
            : tr("This document was damaged and has been repaired while it was opened."));
}

void PDFWindowController::showSignatureImage()
{
    auto *item = window()->findChild<QAction *>(QStringLiteral("imageStampToolbarItem"));
    if (item)
        item->setVisible(m_imageStampViewImage != nullptr);
    if (!m_imageStampViewImage)
        return;
    const QSize frame = m_imageStampToolbarImageView->iconSize();
    m_imageStampToolbarImageView->setIcon(
        QIcon(onPaper(m_imageStampViewImage->pixels(), frame, m_imageStampToolbarImageView->devicePixelRatioF())));
}
