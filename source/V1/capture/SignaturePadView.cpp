#include "V1/capture/SignaturePadView.h"

#include "V1/capture/PadImage.h"
#include "V1/capture/SignatureTrimming.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace inkory;

namespace
{

constexpr std::uint64_t defaultThickness = 5;
constexpr double thinnestLine = 1; // what a line without a width covers at most

bool isFinite(PadPoint point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

// The pixels of an image that a rectangle in points touches.
QRect pixelsOf(const QRectF &points, const QImage &image)
{
    const double ratio = image.devicePixelRatio();
    const QRectF pixels(points.topLeft() * ratio, points.size() * ratio);
    return (pixels & QRectF(image.rect())).toAlignedRect();
}

// Without a colour it erases. A dot is a disc of its own: the painter's points are wider than its lines.
void paintSegment(QImage &image, const QLineF &line, double width, const std::optional<QColor> &color)
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!color)
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
    const QColor paint = color.value_or(Qt::black);
    if (line.p1() == line.p2()) {
        const double radius = std::max(width, thinnestLine) / 2;
        painter.setPen(Qt::NoPen);
        painter.setBrush(paint);
        painter.drawEllipse(line.p1(), radius, radius);
    } else {
        painter.setPen(QPen(paint, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawLine(line);
    }
}

QRect pointsOf(const QRect &pixels, double ratio)
{
    return QRectF(QPointF(pixels.topLeft()) / ratio, QSizeF(pixels.size()) / ratio).toAlignedRect();
}

} // namespace

SignaturePadView::SignaturePadView(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_AcceptTouchEvents);
    setFocusPolicy(Qt::ClickFocus);
    setAccessibleName(tr("Signature pad"));
}

SignaturePadView::~SignaturePadView()
{
    if (m_touchSource)
        m_touchSource->endCapture();
}

void SignaturePadView::awakeFromNib()
{
    setThickness(defaultThickness);
    setSelectedSignatureDrawTool(SignatureDrawToolPen);
    setSignatureDrawingMode(SignatureDrawingModeDrag);
    setMouseTracking(true);
    setTabletTracking(true);
}

void SignaturePadView::setImage(const QImage &image)
{
    stopDrawing(); // of the last drawing
    m_image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    m_hasScreensDensity = m_image.isNull();
    m_history.forgetAll();
    coverPad();
    update();
    afterSteps({});
}

void SignaturePadView::coverPad()
{
    if (size().isEmpty())
        return;
    const bool isUntouched = !canUndo() && !canRedo() && !m_isDrawing;
    if (m_hasScreensDensity && isUntouched && m_image.devicePixelRatio() != devicePixelRatioF())
        m_image = {}; // the window has come to another screen
    const double ratio = m_image.isNull() ? devicePixelRatioF() : m_image.devicePixelRatio();
    const QImage empty = emptyPadImage(size(), ratio);
    const QSize covering = m_image.size().expandedTo(empty.size());
    if (m_image.isNull())
        m_image = empty;
    else if (covering != m_image.size())
        m_image = m_image.copy(QRect(QPoint(0, 0), covering)); // what is beyond the old image is transparent
}

void SignaturePadView::startDrawingFromPoint(PadPoint point)
{
    m_history.endStep();
    m_isDrawing = true;
    drawFromPoint(point, point);
    m_previousPoint = point;
}

void SignaturePadView::stopDrawing()
{
    m_isDrawing = false;
    m_draggingFinger.reset(); // its end may be told somewhere else
    m_history.endStep();
}

void SignaturePadView::trackToPoint(PadPoint point)
{
    drawFromPoint(m_previousPoint, point);
    m_previousPoint = point;
}

void SignaturePadView::drawFromPoint(PadPoint from, PadPoint to)
{
    const bool isPen = m_selectedSignatureDrawTool == SignatureDrawToolPen;
    if (m_image.isNull() || !isFinite(from) || !isFinite(to) || (isPen && !m_color.isValid()))
        return;
    const QPointF start = viewPosition(from);
    const QPointF end = viewPosition(to);
    const auto width = static_cast<double>(m_thickness);
    const double reach = std::max(width, thinnestLine);
    const QRectF area = QRectF(start, end).normalized().adjusted(-reach, -reach, reach, reach);
    m_history.willPaint(m_image, pixelsOf(area, m_image));
    paintSegment(m_image, QLineF(start, end), width, isPen ? std::optional(m_color) : std::nullopt);
    update((area & QRectF(rect())).toAlignedRect());
    afterSteps({});
}

void SignaturePadView::clear()
{
    const QRect drawn = drawnPixels(m_image);
    if (!drawn.isEmpty()) {
        m_history.endStep();
        m_history.willPaint(m_image, drawn);
        m_history.endStep();
        m_image.fill(Qt::transparent);
    }
    afterSteps(m_image.rect());
}

void SignaturePadView::undo()
{
    stopDrawing();
    afterSteps(m_history.undo(m_image));
}

void SignaturePadView::redo()
{
    stopDrawing();
    afterSteps(m_history.redo(m_image));
}

// Shows what changed, and tells whoever offers undo and redo.
void SignaturePadView::afterSteps(const QRect &changedPixels)
{
    if (!changedPixels.isEmpty())
        update(pointsOf(changedPixels, m_image.devicePixelRatio()));
    if (m_couldUndo == canUndo() && m_couldRedo == canRedo())
        return;
    m_couldUndo = canUndo();
    m_couldRedo = canRedo();
    Q_EMIT undoStateChanged();
}

PadPoint SignaturePadView::padPointAt(QPointF position) const
{
    return {position.x(), height() - position.y()};
}

QPointF SignaturePadView::viewPosition(PadPoint point) const
{
    return {point.x, height() - point.y};
}

void SignaturePadView::setCursor(const QCursor &cursor)
{
    update(capturedCursorRect());
    m_cursor = cursor;
    update(capturedCursorRect());
    showHints();
}

// The pointer's shape, and what a screen reader tells.
void SignaturePadView::showHints()
{
    const bool isTrackpad = m_signatureDrawingMode == SignatureDrawingModeTrackpad;
    if (m_isTouchDrawing)
        QWidget::setCursor(Qt::BlankCursor);
    else
        QWidget::setCursor(isTrackpad ? QCursor(Qt::ArrowCursor) : m_cursor);
    if (isTrackpad)
        setAccessibleDescription(TrackpadHint::text(m_isTouchDrawing));
    else if (m_signatureDrawingMode == SignatureDrawingModeClick)
        setAccessibleDescription(tr("Click to start a line, and click again to end it."));
    else
        setAccessibleDescription(tr("Press and drag to draw."));
}

QRect SignaturePadView::capturedCursorRect() const
{
    if (!m_capturedCursorPoint)
        return {};
    const QPixmap brush = m_cursor.pixmap();
    const QPointF corner = viewPosition(*m_capturedCursorPoint) - m_cursor.hotSpot();
    return QRectF(corner, brush.deviceIndependentSize()).toAlignedRect();
}

void SignaturePadView::moveCursorToPoint(PadPoint point)
{
    if (!m_isTouchDrawing) {
        QCursor::setPos(mapToGlobal(viewPosition(point)).toPoint());
        return;
    }
    update(capturedCursorRect());
    m_capturedCursorPoint = point;
    update(capturedCursorRect());
}

void SignaturePadView::hideCursor()
{
    update(capturedCursorRect());
    m_capturedCursorPoint.reset();
}

void SignaturePadView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform); // for an image made on a screen of another density
    painter.drawImage(QPointF(0, 0), m_image);
    if (m_signatureDrawingMode == SignatureDrawingModeTrackpad)
        m_hint.paint(painter, rect(), m_isTouchDrawing);
    if (m_capturedCursorPoint)
        painter.drawPixmap(viewPosition(*m_capturedCursorPoint) - m_cursor.hotSpot(), m_cursor.pixmap());
}

void SignaturePadView::resizeEvent(QResizeEvent *)
{
    coverPad();
}
