#include "V1/editing/OverlayTracking.h"

#include "V1/editing/KRPDFOverlayView.h"
#include "V1/editing/KRPDFView.h"
#include "V1/editing/StampViewOverlay.h"
#include "V1/editing/StampViewToolbar.h"
#include "V1/stamps/KRStamp.h"
#include "platform/widgets/NamedImages.h"

#include <QAbstractButton>
#include <QPixmap>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

using namespace inkory;

namespace
{

constexpr int toolbarPadding = 2;
constexpr int toolbarStep = 22; // from one button's left edge to the next one's
constexpr double toolbarGap = 1;

QCursor centredCursor(const QPixmap &image)
{
    const QSizeF size = image.deviceIndependentSize();
    return QCursor(image, static_cast<int>(std::ceil(size.width() * 0.5)),
                   static_cast<int>(std::ceil(size.height() * 0.5)));
}

const QPixmap &resizeCursorImage()
{
    static const QPixmap image = cursorImageNamed(QStringLiteral("resize-cursor"), 1);
    return image;
}

} // namespace

OverlayTracking::OverlayTracking(KRPDFView &view) : m_view(view) {}

const QCursor &OverlayTracking::imageStampCursor()
{
    static const QCursor cursor = centredCursor(cursorImageNamed(QStringLiteral("stamp-cursor"), 1));
    return cursor;
}

const QCursor &OverlayTracking::resizeCursor()
{
    static const QCursor cursor = centredCursor(resizeCursorImage());
    return cursor;
}

const QCursor &OverlayTracking::textStampCursor()
{
    static const QCursor cursor = centredCursor(cursorImageNamed(QStringLiteral("text-cursor"), 1));
    return cursor;
}

double OverlayTracking::textCursorDescent()
{
    const QCursor &cursor = textStampCursor();
    const QPixmap image = cursor.pixmap();
    return image.deviceIndependentSize().height() - cursor.hotSpot().y();
}

QSizeF OverlayTracking::resizeCursorSize()
{
    return resizeCursorImage().deviceIndependentSize();
}

void OverlayTracking::setUp()
{
    m_clipView = new KRPDFOverlayView(m_view.viewport());
    m_highlightedViewOverlay = new StampViewOverlay(m_clipView);
    m_highlightedViewOverlay->setHighlighted(true);
    m_highlightedViewOverlay->setResizable(false);
    m_highlightedViewOverlay->hide();
    m_stampViewOverlay = new StampViewOverlay(m_clipView);
    m_stampViewOverlay->hide();
    QObject::connect(m_clipView, &KRPDFOverlayView::pointerLeft, &m_connected, [this] { forgetPointer(); });
    if (StampViewToolbar *toolbar = m_view.stampViewToolbar()) {
        toolbar->setParent(m_clipView);
        toolbar->setCursor(Qt::ArrowCursor);
        toolbar->installEventFilter(m_clipView);
        toolbar->hide();
    }
}

void OverlayTracking::updateStampViewOverlay()
{
    if (!m_clipView)
        return;
    StampViewToolbar *toolbar = m_view.stampViewToolbar();
    const KRStamp *selected = m_view.selectedStampView();
    if (selected) {
        const OverlayRect rect = m_view.convertRectToOverlay(m_view.stampRect(*selected));
        if (selected->needsOverlay()) {
            m_stampViewOverlay->setFrame(rect);
            m_stampViewOverlay->show();
        }
        placeToolbar(rect);
    } else {
        m_stampViewOverlay->hide();
    }
    updateButtons(selected);
    if (toolbar) {
        if (selected)
            layOutToolbar();
        else
            toolbar->resize(0, toolbar->height()); // where it was is no place of its any more
        toolbar->setVisible(selected != nullptr);
    }
    m_stampViewOverlay->setResizing(m_view.isResizing());
}

void OverlayTracking::placeToolbar(const OverlayRect &stampRect)
{
    if (StampViewToolbar *toolbar = m_view.stampViewToolbar())
        toolbar->move(qRound(stampRect.x), qRound(stampRect.y - toolbar->height() - toolbarGap));
}

void OverlayTracking::updateButtons(const KRStamp *selected)
{
    const bool turnable = !selected || selected->stampMode() != StampModeEditing;
    for (QAbstractButton *button : {m_view.rotateStampCWButton(), m_view.rotateStampCCWButton()}) {
        if (button)
            button->setEnabled(turnable);
    }
    updateTextButtons(selected);
}

void OverlayTracking::updateTextButtons(const KRStamp *selected)
{
    const bool isShown = selected && selected->isEditable();
    const bool isEditing = isShown && selected->stampMode() == StampModeEditing;
    if (QAbstractButton *edit = m_view.textEditButton())
        edit->setChecked(isEditing);
    for (QAbstractButton *button : {m_view.textFontButton(), m_view.textColorButton()}) {
        if (button)
            button->setEnabled(isEditing);
    }
    const std::array<QAbstractButton *, 4> all{m_view.textEditButton(), m_view.textFontButton(),
                                               m_view.textColorButton(), m_view.textBGColorButton()};
    for (QAbstractButton *button : all) {
        if (button)
            button->setVisible(isShown);
    }
}

void OverlayTracking::layOutToolbar()
{
    StampViewToolbar *toolbar = m_view.stampViewToolbar();
    const auto children = toolbar->findChildren<QAbstractButton *>(Qt::FindDirectChildrenOnly);
    std::vector<QAbstractButton *> buttons(children.begin(), children.end());
    std::stable_sort(buttons.begin(), buttons.end(), [](const QAbstractButton *a, const QAbstractButton *b) {
        return a->property("tag").toInt() < b->property("tag").toInt();
    });
    int x = toolbarPadding;
    for (QAbstractButton *button : buttons) {
        if (button->isHidden())
            continue;
        button->move(x, button->y());
        x += toolbarStep;
    }
    toolbar->resize(x, toolbar->height());
}

void OverlayTracking::updateHighlightOverlay(const ViewPoint &point)
{
    if (!m_clipView)
        return;
    const std::shared_ptr<KRStamp> stamp = m_view.stampViewForPoint(point);
    updateCurrentCursor(point, stamp.get());
    if (stamp && stamp.get() != m_view.selectedStampView()) {
        m_highlightedViewOverlay->setFrame(m_view.convertRectToOverlay(m_view.stampRect(*stamp)));
        m_highlightedViewOverlay->show();
    } else {
        m_highlightedViewOverlay->hide();
    }
}

void OverlayTracking::notePointer(const ViewPoint &point)
{
    m_pointer = m_view.convertPointToOverlay(point);
}

void OverlayTracking::followPointer()
{
    if (m_pointer)
        updateHighlightOverlay(m_view.convertPointFromOverlay(*m_pointer));
}

void OverlayTracking::forgetPointer()
{
    m_pointer.reset();
    hideHighlight();
}

void OverlayTracking::hideHighlight()
{
    if (m_highlightedViewOverlay)
        m_highlightedViewOverlay->hide();
}

OverlayTracking::CursorKind OverlayTracking::cursorFor(const ViewPoint &point, const KRStamp *stampAtPoint) const
{
    if (m_view.isResizing() || isOnHandle(point))
        return CursorKind::Resize;
    if (stampAtPoint || toolbarRect().contains(point) || !m_view.visibleRect().contains(point))
        return CursorKind::Arrow;
    return cursorOverPages(point);
}

// Where no stamp and nothing that lies over the pages has a say.
OverlayTracking::CursorKind OverlayTracking::cursorOverPages(const ViewPoint &point) const
{
    switch (m_view.currentToolType()) {
    case ToolTypeTextStamp:
        return CursorKind::TextStamp;
    case ToolTypeImageStamp:
        return CursorKind::ImageStamp;
    default:
        if (m_view.isOverLink(point))
            return CursorKind::PointingHand;
        return m_view.isOverText(point) ? CursorKind::IBeam : CursorKind::Arrow;
    }
}

void OverlayTracking::updateCurrentCursor(const ViewPoint &point, const KRStamp *stampAtPoint)
{
    setCursor(cursorFor(point, stampAtPoint));
}

void OverlayTracking::setCursor(CursorKind kind)
{
    if (kind == m_cursor)
        return;
    m_cursor = kind;
    switch (kind) {
    case CursorKind::Resize:
        m_view.viewport()->setCursor(resizeCursor());
        break;
    case CursorKind::ImageStamp:
        m_view.viewport()->setCursor(imageStampCursor());
        break;
    case CursorKind::TextStamp:
        m_view.viewport()->setCursor(textStampCursor());
        break;
    case CursorKind::PointingHand:
        m_view.viewport()->setCursor(Qt::PointingHandCursor);
        break;
    case CursorKind::IBeam:
        m_view.viewport()->setCursor(Qt::IBeamCursor);
        break;
    default:
        m_view.viewport()->setCursor(Qt::ArrowCursor);
        break;
    }
}

ViewRect OverlayTracking::selectionRect() const
{
    return m_stampViewOverlay ? m_view.convertRectFromOverlay(m_stampViewOverlay->frame()) : ViewRect{};
}

ViewRect OverlayTracking::stampOverlayResizeRect() const
{
    const ViewRect overlay = selectionRect();
    const QSizeF handle = resizeCursorSize();
    return {overlay.maxX() - handle.width(), overlay.y, handle.width(), handle.height()};
}

bool OverlayTracking::isOnHandle(const ViewPoint &point) const
{
    return m_view.selectedStampView() && m_stampViewOverlay && m_stampViewOverlay->resizable() &&
           stampOverlayResizeRect().contains(point) && selectionRect().contains(point);
}

ViewRect OverlayTracking::toolbarRect() const
{
    const StampViewToolbar *toolbar = m_view.stampViewToolbar();
    return toolbar ? m_view.convertRectFromOverlay(fromQRectF<OverlaySpace>(QRectF(toolbar->geometry()))) : ViewRect{};
}

bool OverlayTracking::isToolbarShown() const
{
    return m_view.stampViewToolbar() && !m_view.stampViewToolbar()->isHidden();
}
