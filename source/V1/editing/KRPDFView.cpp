#include "V1/editing/KRPDFView.h"

#include "V1/editing/FrameBounds.h"
#include "V1/editing/StampViewOverlay.h"
#include "V1/stamps/KRImageStamp.h"
#include "V1/stamps/KRPDFPage.h"
#include "platform/core/LocalizedStrings.h"
#include "platform/core/NotificationCenter.h"
#include "platform/pdf/PDFDocument.h"

#include <QAction>

#include <algorithm>

using namespace inkory;

namespace
{

const QString addStampViewOperation = QStringLiteral("addStampView");
const QString deleteStampViewOperation = QStringLiteral("deleteStampView");
const QString rotatePageOperation = QStringLiteral("rotateCurrentPageByAngleObject");
const QString flipDocumentOperation = QStringLiteral("flipDocument");

} // namespace

KRPDFView::KRPDFView(QWidget *parent) : PDFView(parent), m_overlays(*this) {}

KRPDFView::~KRPDFView() = default;

void KRPDFView::awakeFromNib()
{
    m_overlays.setUp();
    m_textEditing.setUp();
    connectToolbar();
    connect(this, &PDFView::currentPageChanged, this, &KRPDFView::updateStampViewOverlay);
    connect(this, &PDFView::scaleFactorChanged, this, &KRPDFView::updateStampViewOverlay);
}

void KRPDFView::connectToolbar()
{
    const auto connectButton = [this](QAbstractButton *button, auto action) {
        if (button)
            connect(button, &QAbstractButton::clicked, this, action);
    };
    connectButton(m_rotateStampCWButton, [this] { rotateSelectedStampClockwise(); });
    connectButton(m_rotateStampCCWButton, [this] { rotateSelectedStampCounterClockwise(); });
    connectButton(m_textEditButton, [this] { editSelectedStamp(); });
    connectButton(m_textFontButton, [this] { toolbarOpenFontPanel(); });
    connectButton(m_textColorButton, [this] { toolbarOpenColorPanel(); });
}

void KRPDFView::windowDidLoad()
{
    connect(this, &PDFView::contentViewBoundsChanged, this, &KRPDFView::updateStampViewOverlay);
}

ViewRect KRPDFView::stampRect(const KRStamp &stamp) const
{
    return convertRectFromPage(stamp.frame(), stamp.pdfPage());
}

std::shared_ptr<KRStamp> KRPDFView::stampViewForPoint(const ViewPoint &point) const
{
    const auto found = std::find_if(m_stampViews.begin(), m_stampViews.end(),
                                    [&](const auto &stamp) { return stampRect(*stamp).contains(point); });
    return found != m_stampViews.end() ? *found : nullptr;
}

void KRPDFView::setSelectedStampView(const std::shared_ptr<KRStamp> &stamp)
{
    if (stamp && stamp == m_selectedStampView)
        return;
    m_interaction.finish(); // of what was held until now
    endTextEditing();
    if (m_selectedStampView)
        m_selectedStampView->setStampMode(StampModeNormal);
    const std::shared_ptr<KRStamp> former = std::exchange(m_selectedStampView, stamp);
    setFocus();
    if (stamp) {
        stamp->setStampMode(StampModeSelected);
        if (StampViewOverlay *overlay = m_overlays.stampViewOverlay())
            overlay->setResizable(stamp->stampType() != StampTypeText);
        const auto place = std::find(m_stampViews.begin(), m_stampViews.end(), stamp);
        if (place != m_stampViews.end())
            std::rotate(m_stampViews.begin(), place, place + 1);
        setNeedsDisplayInRect(stampRect(*stamp));
    }
    if (former && former->pdfPage())
        setNeedsDisplayInRect(stampRect(*former));
    updateStampViewOverlay();
    Q_EMIT selectionChanged();
}

void KRPDFView::editSelectedStamp()
{
    if (m_selectedStampView && m_selectedStampView->isEditable() && !isEditingText()) {
        startTextEditing();
    } else {
        endTextEditing();
        if (m_selectedStampView)
            m_selectedStampView->setStampMode(StampModeNormal);
        setFocus();
    }
    updateStampViewOverlay();
}

bool KRPDFView::canSetFontAndColor() const
{
    return isEditingText() || m_currentToolType == ToolTypeTextStamp;
}

void KRPDFView::bgColorSelectedAction(const QAction &sender)
{
    m_textEditing.setBackgroundColor(sender.data().value<QColor>());
}

void KRPDFView::setCurrentToolType(ToolType tool)
{
    if (tool == ToolTypeImageStamp || tool == ToolTypeTextStamp)
        setSelectedStampView(nullptr);
    m_currentToolType = tool;
    m_overlays.followPointer();
}

void KRPDFView::updateCurrentCursor(const ViewPoint &point)
{
    m_overlays.updateCurrentCursor(point, stampViewForPoint(point).get());
}

void KRPDFView::addImageStampView(const ViewPoint &point)
{
    if (!m_stampImage)
        return;
    auto *page = dynamic_cast<KRPDFPage *>(pageForPoint(point, PageSearch::Nearest));
    if (!page || !document()->canSave()) {
        Q_EMIT placementRefused();
        return;
    }
    const PagePoint center = convertPointToPage(point, page);
    addStampView(KRImageStamp::create(m_stampImage, {center.x, center.y, 0, 0}, this, page));
    NotificationCenter::defaultCenter().post(pdfViewAddedImageStampNotification, this);
}

void KRPDFView::addStampView(const std::shared_ptr<KRStamp> &stamp)
{
    m_stampViews.insert(m_stampViews.begin(), stamp);
    setSelectedStampView(stamp);
    stamp->setup();
    updateStampViewOverlay();
    registerUndo(deleteStampViewOperation, QVariant::fromValue(stamp), "Add/Delete Stamp");
    NotificationCenter::defaultCenter().addObserver(
        this, stampViewNeedsRefreshNotification, stamp.get(),
        [this, changed = std::weak_ptr(stamp)](const Notification &notification) {
            if (const auto alive = changed.lock())
                stampViewNeedsRefresh(*alive, notification.userInfo);
        });
    annotationsChangedOnPage(stamp->pdfPage());
}

void KRPDFView::deleteStampView(const std::shared_ptr<KRStamp> &stamp)
{
    const std::shared_ptr<KRStamp> kept = stamp; // the list may hold the last reference
    if (kept == m_selectedStampView)
        endTextEditing(); // which deletes it itself if its text is empty
    if (std::erase(m_stampViews, kept) == 0)
        return;
    if (kept == m_selectedStampView)
        setSelectedStampView(nullptr);
    setNeedsDisplayInRect(stampRect(*kept));
    kept->cleanup();
    registerUndo(addStampViewOperation, QVariant::fromValue(kept), "Add/Delete Stamp");
    annotationsChangedOnPage(kept->pdfPage());
}

void KRPDFView::takeBackStampView(const std::shared_ptr<KRStamp> &stamp)
{
    std::erase(m_stampViews, stamp);
    if (stamp == m_selectedStampView)
        setSelectedStampView(nullptr);
    stamp->cleanup();
    if (m_undoManager)
        m_undoManager->removeLastStep(*this, deleteStampViewOperation, QVariant::fromValue(stamp));
}

void KRPDFView::deleteSelectedStampView()
{
    if (m_selectedStampView)
        deleteStampView(m_selectedStampView);
}

void KRPDFView::forceBoundsForSelectedStampView()
{
    if (!m_selectedStampView)
        return;
    const KRPDFPage *page = m_selectedStampView->pdfPage();
    const PageRect frame = m_selectedStampView->frame();
    const PageRect bounded = frameWithCenterInBox(frame, page ? page->boundsForBox(DisplayBox::MediaBox) : PageRect{});
    if (bounded == frame)
        return;
    m_selectedStampView->setFrame(bounded);
    updateStampViewOverlay();
}

void KRPDFView::rotateSelectedStampClockwise()
{
    if (!m_selectedStampView)
        return;
    m_selectedStampView->rotateClockwise();
    annotationsChangedOnPage(m_selectedStampView->pdfPage());
}

void KRPDFView::rotateSelectedStampCounterClockwise()
{
    if (!m_selectedStampView)
        return;
    m_selectedStampView->rotateCounterClockwise();
    annotationsChangedOnPage(m_selectedStampView->pdfPage());
}

void KRPDFView::stampViewNeedsRefresh(const KRStamp &stamp, const QVariantMap &userInfo)
{
    setNeedsDisplayInRect(stampRect(stamp));
    if (!userInfo.isEmpty()) {
        const auto former = userInfo.value(QStringLiteral("frame")).value<PageRect>();
        setNeedsDisplayInRect(convertRectFromPage(former, stamp.pdfPage()));
    }
    updateStampViewOverlay();
    annotationsChangedOnPage(stamp.pdfPage());
}

void KRPDFView::viewWillDraw()
{
    updateStampViewOverlay();
    m_overlays.followPointer();
    PDFView::viewWillDraw();
}

void KRPDFView::performUndoOperation(const QString &operation, const QVariant &argument)
{
    if (operation == addStampViewOperation)
        addStampView(argument.value<std::shared_ptr<KRStamp>>());
    else if (operation == deleteStampViewOperation)
        deleteStampView(argument.value<std::shared_ptr<KRStamp>>());
    else if (operation == rotatePageOperation)
        rotateCurrentPageByAngleObject(argument.toMap());
    else if (operation == flipDocumentOperation)
        flipDocument();
    else
        Q_ASSERT_X(false, "KRPDFView", "unknown undo operation");
}

void KRPDFView::noteChangeWithoutStep()
{
    if (m_undoManager)
        m_undoManager->noteChangeWithoutStep();
}

void KRPDFView::registerUndo(const QString &operation, const QVariant &argument, const char *actionName)
{
    if (!m_undoManager)
        return;
    m_undoManager->registerUndo(*this, operation, argument);
    m_undoManager->setActionName(localizedString(actionName));
}
