#include "V1/capture/SignaturePadView.h"

#include "platform/core/PhysicalKeys.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QStyleHints>
#include <QTabletEvent>
#include <QTouchEvent>

#include <algorithm>
#include <utility>

using namespace inkory;

namespace
{

// No finger has this number.
constexpr std::int64_t penIdentity = -1;

constexpr unsigned touchingMask = 7; // began, moved or stationary
constexpr unsigned endedMask = 8;

const Touch *firstTouch(const Touches &touches, unsigned phases)
{
    const auto found = std::find_if(touches.begin(), touches.end(), [phases](const Touch &touch) {
        return (static_cast<unsigned>(touch.phase) & phases) != 0;
    });
    return found != touches.end() ? &*found : nullptr;
}

TouchPhase phaseOf(const QEventPoint &point)
{
    switch (point.state()) {
    case QEventPoint::State::Pressed:
        return TouchPhase::Began;
    case QEventPoint::State::Updated:
        return TouchPhase::Moved;
    case QEventPoint::State::Released:
        return TouchPhase::Ended;
    default:
        return TouchPhase::Stationary;
    }
}

QPointF upward(QPointF normalized)
{
    return {normalized.x(), 1 - normalized.y()};
}

} // namespace

void SignaturePadView::setSignatureDrawingMode(SignatureDrawingMode mode)
{
    m_signatureDrawingMode = mode;
    m_isTap = false;
    stopDrawing();
    showHints();
    update();
}

void SignaturePadView::setTouchSource(TouchSource *source)
{
    if (m_touchSource && m_touchSource != source)
        m_touchSource->endCapture();
    m_touchSource = source;
}

void SignaturePadView::setIsTouchDrawing(bool isTouchDrawing)
{
    m_isTouchDrawing = isTouchDrawing;
    m_isTap = false;
    m_history.endStep();
    hideCursor();
    if (isTouchDrawing)
        setFocus(Qt::MouseFocusReason); // for Escape
    else if (m_touchSource)
        m_touchSource->endCapture();
    showHints();
    update();
}

void SignaturePadView::startCapture(QInputDevice::DeviceType clickedDevice)
{
    const bool isTrackpad = m_touchSource ? m_touchSource->startsWithClickOf(clickedDevice)
                                          : clickedDevice == QInputDevice::DeviceType::TouchPad;
    if (!isTrackpad || (m_touchSource && !m_touchSource->beginCapture(*this)))
        return;
    if (!m_isTouchDrawing) // a tap may have begun it, without the source
        setIsTouchDrawing(true);
}

void SignaturePadView::leaveCapture()
{
    setIsTouchDrawing(false);
    moveCursorToPoint({width() * 0.5, height() * 0.5});
}

void SignaturePadView::touchSourceLost()
{
    if (m_isTouchDrawing)
        setIsTouchDrawing(false);
}

void SignaturePadView::hideEvent(QHideEvent *event)
{
    touchSourceLost();
    QWidget::hideEvent(event);
}

void SignaturePadView::keyPressEvent(QKeyEvent *event)
{
    if (m_isTouchDrawing && physicalKey(*event) == PhysicalKey::Escape)
        leaveCapture();
    else
        QWidget::keyPressEvent(event);
}

// The mouse, and a pen outside capture.

void SignaturePadView::pointerPressed(QPointF position)
{
    if (m_signatureDrawingMode == SignatureDrawingModeDrag)
        startDrawingFromPoint(padPointAt(position));
}

void SignaturePadView::pointerMoved(QPointF position, Qt::MouseButtons buttons)
{
    const bool isDrag = m_signatureDrawingMode == SignatureDrawingModeDrag && buttons.testFlag(Qt::LeftButton);
    const bool isHover = m_signatureDrawingMode == SignatureDrawingModeClick && buttons == Qt::NoButton;
    if (m_isDrawing && (isDrag || isHover))
        trackToPoint(padPointAt(position));
}

void SignaturePadView::pointerReleased(QPointF position)
{
    if (m_signatureDrawingMode != SignatureDrawingModeClick)
        return; // isDrawing stays: no drag follows without a press, which starts anew
    if (m_isDrawing)
        stopDrawing();
    else
        startDrawingFromPoint(padPointAt(position));
}

// The position in the widget has been rounded to whole points, which are several pixels on a dense screen.
QPointF SignaturePadView::exactPosition(const QMouseEvent &event) const
{
    return mapFromGlobal(event.globalPosition());
}

void SignaturePadView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    noteTap(exactPosition(*event));
    pointerPressed(exactPosition(*event));
}

void SignaturePadView::mouseMoveEvent(QMouseEvent *event)
{
    pointerMoved(exactPosition(*event), event->buttons());
}

void SignaturePadView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (m_signatureDrawingMode != SignatureDrawingModeTrackpad)
        pointerReleased(exactPosition(*event));
    else if (std::exchange(m_isTap, false)) // not of a press from before the mode, or during capture
        startCapture(event->pointingDevice()->type());
}

void SignaturePadView::noteTap(QPointF position)
{
    m_isTap = m_signatureDrawingMode == SignatureDrawingModeTrackpad;
    m_tapStart = position;
}

// What goes far is a stroke by somebody who does not know yet how this begins.
void SignaturePadView::followTap(QPointF position)
{
    const double farthest = QGuiApplication::styleHints()->startDragDistance();
    m_isTap = m_isTap && (position - m_tapStart).manhattanLength() < farthest;
}

// Accepted whatever it does, so that no mouse is made of it.
void SignaturePadView::tabletEvent(QTabletEvent *event)
{
    const bool isTip = event->button() == Qt::LeftButton;
    if (m_isTouchDrawing) {
        capturedPenEvent(*event);
    } else if (event->type() == QEvent::TabletMove) {
        followTap(event->position());
        pointerMoved(event->position(), event->buttons());
    } else if (event->type() == QEvent::TabletPress && isTip) {
        noteTap(event->position());
        pointerPressed(event->position());
    } else if (event->type() == QEvent::TabletRelease && isTip) {
        if (m_isTap)
            setIsTouchDrawing(true);
        else
            pointerReleased(event->position());
    }
    event->accept();
}

// A pen's tip on the pad is a finger on the surface.
void SignaturePadView::capturedPenEvent(const QTabletEvent &event)
{
    Touch touch{penIdentity, TouchPhase::Moved,
                upward({event.position().x() / width(), event.position().y() / height()})};
    if (event.type() != QEvent::TabletMove && event.button() != Qt::LeftButton)
        return;
    if (event.type() == QEvent::TabletPress)
        touch.phase = TouchPhase::Began;
    else if (event.type() == QEvent::TabletRelease)
        touch.phase = TouchPhase::Ended;
    else if (!event.buttons().testFlag(Qt::LeftButton))
        return;
    touchesChanged({touch});
}

bool SignaturePadView::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        if (touchEvent(*static_cast<QTouchEvent *>(event))) {
            event->accept();
            return true;
        }
        return QWidget::event(event);
    case QEvent::ScreenChangeInternal:
        coverPad();
        return QWidget::event(event);
    case QEvent::ShortcutOverride: // Escape ends capture, and does not close the window
        if (m_isTouchDrawing && physicalKey(*static_cast<QKeyEvent *>(event)) == PhysicalKey::Escape)
            event->accept();
        return QWidget::event(event);
    default:
        return QWidget::event(event);
    }
}

// Whether the fingers are done with. Those that click are not: they become a mouse.
bool SignaturePadView::touchEvent(const QTouchEvent &event)
{
    if (m_isTouchDrawing) {
        touchesChanged(touchesOf(event));
    } else if (m_signatureDrawingMode == SignatureDrawingModeDrag) {
        dragFingers(event);
    } else if (m_signatureDrawingMode == SignatureDrawingModeTrackpad) {
        const QPointF finger = event.points().isEmpty() ? m_tapStart : event.points().first().position();
        if (event.type() == QEvent::TouchBegin)
            noteTap(finger);
        else if (event.type() == QEvent::TouchCancel)
            m_isTap = false;
        followTap(finger);
        if (event.type() == QEvent::TouchEnd && m_isTap)
            setIsTouchDrawing(true);
    } else {
        return false;
    }
    return true;
}

// The first finger draws; others that come to lie on the pad meanwhile do not.
void SignaturePadView::dragFingers(const QTouchEvent &event)
{
    if (event.type() == QEvent::TouchCancel)
        stopDrawing();
    for (const QEventPoint &finger : event.points()) {
        const auto state = finger.state();
        if (state == QEventPoint::State::Pressed && !m_draggingFinger) {
            startDrawingFromPoint(padPointAt(finger.position()));
            m_draggingFinger = finger.id();
        } else if (m_draggingFinger == finger.id() && state != QEventPoint::State::Stationary) {
            if (m_isDrawing)
                trackToPoint(padPointAt(finger.position()));
        }
        if (m_draggingFinger == finger.id() && state == QEventPoint::State::Released)
            stopDrawing();
    }
}

Touches SignaturePadView::touchesOf(const QTouchEvent &event) const
{
    const bool isSurfaceBesideScreen = event.deviceType() == QInputDevice::DeviceType::TouchPad;
    Touches touches;
    for (const QEventPoint &point : event.points()) {
        const QPointF onPad(point.position().x() / width(), point.position().y() / height());
        touches.push_back({point.id(), event.type() == QEvent::TouchCancel ? TouchPhase::Cancelled : phaseOf(point),
                           upward(isSurfaceBesideScreen ? point.normalizedPosition() : onPad)});
    }
    return touches;
}

void SignaturePadView::touchesChanged(const Touches &touches)
{
    const Touch *first = firstTouch(touches, touchingMask);
    const bool startsAnew = first && first->phase == TouchPhase::Began;
    if (firstTouch(touches, endedMask)) // first, as a number may end and be used again within one report
        touchesEndedWithEvent(touches);
    if (startsAnew)
        m_history.endStep(); // the last one may never have ended
    // Where another finger comes to lie on the surface, the line first goes on to where the drawing one is by now.
    if (!startsAnew && firstTouch(touches, static_cast<unsigned>(TouchPhase::Moved)))
        touchesMovedWithEvent(touches);
    if (firstTouch(touches, static_cast<unsigned>(TouchPhase::Began)))
        touchesBeganWithEvent(touches);
    if (!first) {
        hideCursor();
        m_history.endStep();
    }
}

PadPoint SignaturePadView::padPointOf(const Touch &touch) const
{
    return {touch.normalizedPosition.x() * width(), touch.normalizedPosition.y() * height()};
}

void SignaturePadView::touchesBeganWithEvent(const Touches &touches)
{
    const Touch *touch = firstTouch(touches, touchingMask);
    if (!m_isTouchDrawing || !touch)
        return;
    m_drawingBeginTouchIdentity = touch->identity;
    m_previousPoint = padPointOf(*touch);
    drawFromPoint(m_previousPoint, m_previousPoint);
    moveCursorToPoint(m_previousPoint);
}

void SignaturePadView::touchesMovedWithEvent(const Touches &touches)
{
    const Touch *touch = firstTouch(touches, touchingMask);
    if (!m_isTouchDrawing || !touch)
        return;
    trackToPoint(padPointOf(*touch));
    moveCursorToPoint(m_previousPoint);
}

void SignaturePadView::touchesEndedWithEvent(const Touches &touches)
{
    if (!m_isTouchDrawing)
        return;
    hideCursor();
    const Touch *touch = firstTouch(touches, endedMask);
    if (touch && touch->identity == m_drawingBeginTouchIdentity)
        trackToPoint(padPointOf(*touch));
}
