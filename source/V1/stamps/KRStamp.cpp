#include "V1/stamps/KRStamp.h"

#include "V1/stamps/KRPDFPage.h"
#include "platform/core/LocalizedStrings.h"
#include "platform/core/NotificationCenter.h"
#include "platform/pdf/DrawingContext.h"

#include <QPainter>

#include <algorithm>

using namespace inkory;

namespace
{

const QString rotateOperation = QStringLiteral("rotateWithObject");
const QString updateFrameAndPageOperation = QStringLiteral("updateFrameAndPage");
const QString frameKey = QStringLiteral("frame");
const QString pageKey = QStringLiteral("page");

bool overlap(const PageRect &a, const PageRect &b)
{
    return a.x < b.maxX() && b.x < a.maxX() && a.y < b.maxY() && b.y < a.maxY();
}

} // namespace

KRStamp::KRStamp(const PageRect &frame, StampHost *pdfView, KRPDFPage *pdfPage)
    : m_frame(frame), m_pdfView(pdfView), m_pdfPage(pdfPage)
{
}

KRStamp::~KRStamp() = default;

void KRStamp::setPdfPage(KRPDFPage *page)
{
    if (page == m_pdfPage)
        return;
    const auto self = shared_from_this(); // the old page's list may be all that holds the stamp
    if (m_pdfPage)
        m_pdfPage->removeStamp(this);
    m_pdfPage = page;
    setup();
}

void KRStamp::setStampMode(StampMode mode)
{
    if (mode == m_stampMode)
        return;
    if (mode == StampModeSelected && m_pdfPage)
        moveToTop(*m_pdfPage);
    m_stampMode = mode;
}

// The order of a page's stamps is saved, but choosing one of them is no step that a person would want to undo, and no
// change at all where nobody sees which one is on top.
void KRStamp::moveToTop(KRPDFPage &page)
{
    if (!page.stamps().empty() && page.stamps().back().get() == this)
        return;
    const auto self = shared_from_this();
    const auto &stamps = page.stamps();
    const bool isSeen =
        std::any_of(std::find(stamps.begin(), stamps.end(), self), stamps.end(),
                    [&](const auto &stamp) { return stamp != self && overlap(m_frame, stamp->frame()); });
    page.removeStamp(this);
    page.addStamp(self);
    if (!isSeen)
        return;
    if (UndoManager *undoManager = m_pdfView ? m_pdfView->undoManager() : nullptr)
        undoManager->noteChangeWithoutStep();
    postNeedsRefresh();
}

StampType KRStamp::stampType() const
{
    qFatal("%s: (StampType)stampType must be overriden", "KRStamp");
}

bool KRStamp::needsOverlay() const
{
    return m_stampMode != StampModeEditing || stampType() != StampTypeText;
}

void KRStamp::setup()
{
    if (m_pdfPage)
        m_pdfPage->addStamp(shared_from_this());
}

void KRStamp::cleanup()
{
    const auto self = shared_from_this();
    if (m_pdfPage)
        m_pdfPage->removeStamp(this);
}

void KRStamp::createStamp()
{
    const int pageRotation = m_pdfPage ? m_pdfPage->rotation() : 0;
    if (pageRotation == 90 || pageRotation == 270)
        std::swap(m_frame.width, m_frame.height);
    if (pageRotation > 0)
        m_stampRotation = pageRotation / 90;
}

void KRStamp::rotateClockwise()
{
    rotateFrame();
    rotate((m_stampRotation + 3) % 4);
}

void KRStamp::rotateCounterClockwise()
{
    rotateFrame();
    rotate((m_stampRotation + 1) % 4);
}

void KRStamp::rotate180()
{
    rotate((m_stampRotation + 2) % 4);
}

void KRStamp::rotate(int quarterTurns)
{
    registerUndo(rotateOperation, m_stampRotation, "Rotate Stamp");
    m_stampRotation = quarterTurns;
    postNeedsRefresh();
}

void KRStamp::rotateWithObject(int quarterTurns)
{
    if ((quarterTurns + m_stampRotation) % 2 != 0)
        rotateFrame();
    rotate(quarterTurns);
}

void KRStamp::rotateFrame()
{
    const auto [x, y, w, h] = m_frame;
    PageRect turned{0, 0, h, w};
    switch (m_pdfPage ? m_pdfPage->rotation() : 0) {
    case 0:
        turned.x = x;
        turned.y = y + h - w;
        break;
    case 90:
        turned.x = x;
        turned.y = y;
        break;
    case 180:
        turned.x = x - h + w;
        turned.y = y;
        break;
    case 270:
        turned.x = x - h + w;
        turned.y = y + h - w;
        break;
    default:
        break;
    }
    m_lastFrame = turned;
    postNeedsRefresh({{frameKey, QVariant::fromValue(m_frame)}});
    m_frame = turned;
}

void KRStamp::trackFrameAndPageChanges()
{
    if (m_pdfPage == m_lastPage && m_frame == m_lastFrame)
        return;
    if (m_lastFrame != PageRect{}) {
        registerUndo(updateFrameAndPageOperation,
                     QVariantMap{{frameKey, QVariant::fromValue(m_lastFrame)},
                                 {pageKey, QVariant::fromValue<PDFPage *>(m_lastPage)}},
                     "Stamp Size && Position");
    }
    resetLastFrameAndPage();
}

void KRStamp::updateFrameAndPage(const QVariantMap &former)
{
    setPdfPage(dynamic_cast<KRPDFPage *>(former.value(pageKey).value<PDFPage *>()));
    m_frame = former.value(frameKey).value<PageRect>();
    postNeedsRefresh({{frameKey, QVariant::fromValue(m_lastFrame)}});
    trackFrameAndPageChanges();
}

void KRStamp::resetLastFrameAndPage()
{
    m_lastPage = m_pdfPage;
    m_lastFrame = m_frame;
}

void KRStamp::restorePlacement(const Placement &former)
{
    setPdfPage(former.page);
    m_frame = former.frame;
    m_lastPage = former.lastPage;
    m_lastFrame = former.lastFrame;
}

void KRStamp::draw()
{
    const PageRect content = m_frame;
    if (m_stampRotation == 0) {
        drawStampInRect(toQRectF(content), opacity());
        return;
    }
    // The content keeps its upright proportions at the frame's origin, and is turned about its centre into the frame.
    const bool oddTurn = m_stampRotation % 2 != 0;
    const QRectF upright(content.x, content.y, oddTurn ? content.height : content.width,
                         oddTurn ? content.width : content.height);
    QPainter &painter = DrawingContext::current()->painter();
    painter.save();
    painter.translate(content.center().x, content.center().y);
    painter.rotate(m_stampRotation * 90.0); // y runs upward here, so positive is counter-clockwise
    painter.translate(-upright.center());
    drawStampInRect(upright, opacity());
    painter.restore();
}

void KRStamp::drawStampInRect(const QRectF &, float) {}

float KRStamp::opacity() const
{
    if (!DrawingContext::current()->isDrawingToScreen())
        return 1.0F;
    switch (m_stampMode) {
    case StampModeSelected:
        return 0.8F;
    case StampModeDragging:
        return 0.5F;
    default:
        return 1.0F;
    }
}

void KRStamp::performUndoOperation(const QString &operation, const QVariant &argument)
{
    if (operation == rotateOperation)
        rotateWithObject(argument.toInt());
    else if (operation == updateFrameAndPageOperation)
        updateFrameAndPage(argument.toMap());
    else
        Q_ASSERT_X(false, "KRStamp", "unknown undo operation");
}

void KRStamp::registerUndo(const QString &operation, const QVariant &argument, const char *actionName)
{
    UndoManager *undoManager = m_pdfView ? m_pdfView->undoManager() : nullptr;
    if (!undoManager)
        return;
    undoManager->registerUndo(*this, operation, argument);
    undoManager->setActionName(localizedString(actionName));
}

void KRStamp::postNeedsRefresh(const QVariantMap &userInfo)
{
    NotificationCenter::defaultCenter().post(stampViewNeedsRefreshNotification, this, userInfo);
}
