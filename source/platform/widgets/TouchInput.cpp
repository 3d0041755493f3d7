#include "platform/widgets/TouchInput.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QTouchEvent>

#include <cmath>

namespace inkory
{

namespace
{

// Fingers closer than this do not say how much to zoom.
constexpr double leastPinchDistance = 10;
// How far a finger moves before it is not a tap: a few millimetres.
constexpr double dragStartMetres = 0.003;

std::vector<QPointF> fingersOf(const QTouchEvent &event)
{
    std::vector<QPointF> fingers;
    for (const QEventPoint &point : event.points()) {
        if (point.state() != QEventPoint::State::Released)
            fingers.push_back(point.position());
    }
    return fingers;
}

double distanceBetween(const QPointF &a, const QPointF &b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

bool TouchInput::handle(QEvent *event)
{
    switch (event->type()) {
    case QEvent::TouchBegin:
        event->setAccepted(begin(*static_cast<QTouchEvent *>(event)));
        return event->isAccepted();
    case QEvent::TouchUpdate:
        move(*static_cast<QTouchEvent *>(event));
        return true;
    case QEvent::TouchEnd:
        lift(*static_cast<QTouchEvent *>(event));
        return true;
    case QEvent::TouchCancel:
        cancel();
        return true;
    case QEvent::ScrollPrepare: {
        auto *prepare = static_cast<QScrollPrepareEvent *>(event);
        prepare->setViewportSize(m_view.viewport()->size());
        prepare->setContentPosRange(QRectF(QPointF(0, 0), m_view.scrollRange()));
        prepare->setContentPos(m_view.m_scrollPosition);
        prepare->accept();
        return true;
    }
    case QEvent::Scroll:
        m_view.moveTo(static_cast<QScrollEvent *>(event)->contentPos());
        event->accept();
        return true;
    default:
        return false;
    }
}

void TouchInput::stop()
{
    if (m_scroller)
        m_scroller->stop();
}

bool TouchInput::begin(const QTouchEvent &event)
{
    const Fingers fingers = fingersOf(event);
    if (fingers.empty() || belongsToChild(fingers.front()))
        return false; // becomes a mouse event for it
    m_view.m_glide.stop();
    if (fingers.size() > 1) {
        startPinch(fingers);
    } else if (m_view.claimsTouch(m_view.viewPointAt(fingers.front()))) {
        stop();
        m_mode = Mode::Drag;
        m_last = fingers.front();
        sendMouse(QEvent::MouseButtonPress, m_last);
    } else {
        m_mayTap = !m_scroller || m_scroller->state() == QScroller::Inactive; // otherwise it ends the gliding
        startScrolling(fingers.front(), static_cast<qint64>(event.timestamp()));
    }
    return true;
}

void TouchInput::move(const QTouchEvent &event)
{
    const Fingers fingers = fingersOf(event);
    const auto milliseconds = static_cast<qint64>(event.timestamp());
    if (fingers.empty())
        return;
    if (m_mode == Mode::Drag) {
        m_last = fingers.front();
        sendMouse(QEvent::MouseMove, m_last);
    } else if (fingers.size() > 1) {
        if (m_mode == Mode::Scroll)
            startPinch(fingers);
        pinch(fingers);
    } else if (m_mode == Mode::Pinch) {
        startScrolling(fingers.front(), milliseconds); // with the finger that stayed
    } else if (m_mode == Mode::Scroll) {
        m_last = fingers.front();
        scroller().handleInput(QScroller::InputMove, m_last, milliseconds);
        m_mayTap = m_mayTap && scroller().state() == QScroller::Pressed;
    }
}

void TouchInput::lift(const QTouchEvent &event)
{
    const Mode mode = std::exchange(m_mode, Mode::None);
    const QPointF position = event.points().isEmpty() ? m_last : event.points().front().position();
    if (mode == Mode::Drag) {
        sendMouse(QEvent::MouseButtonRelease, position);
    } else if (mode == Mode::Scroll) {
        scroller().handleInput(QScroller::InputRelease, position, static_cast<qint64>(event.timestamp()));
        if (m_mayTap) {
            const QPointF target = tapTarget();
            sendMouse(QEvent::MouseButtonPress, target);
            sendMouse(QEvent::MouseButtonRelease, target);
        }
    }
    m_pinch.reset();
}

void TouchInput::cancel()
{
    stop();
    if (std::exchange(m_mode, Mode::None) == Mode::Drag)
        sendMouse(QEvent::MouseButtonRelease, m_last);
    m_pinch.reset();
}

void TouchInput::startScrolling(const QPointF &finger, qint64 milliseconds)
{
    m_mode = Mode::Scroll;
    m_pinch.reset();
    m_last = finger;
    scroller().handleInput(QScroller::InputPress, finger, milliseconds);
}

void TouchInput::startPinch(const Fingers &fingers)
{
    stop();
    m_mode = Mode::Pinch;
    m_mayTap = false;
    m_pinch = Pinch{std::max(leastPinchDistance, distanceBetween(fingers[0], fingers[1])), m_view.scaleFactor(),
                    m_view.placeAt((fingers[0] + fingers[1]) / 2)};
}

void TouchInput::pinch(const Fingers &fingers)
{
    if (!m_pinch)
        return;
    const double spread = std::max(leastPinchDistance, distanceBetween(fingers[0], fingers[1])) / m_pinch->distance;
    m_view.zoomKeeping(m_pinch->factor * spread, m_pinch->middle, (fingers[0] + fingers[1]) / 2);
}

// Buttons and fields over the pages get what Qt makes of fingers that nobody takes: a mouse.
bool TouchInput::belongsToChild(const QPointF &finger) const
{
    const QWidget *child = m_view.viewport()->childAt(finger.toPoint());
    return child && (qobject_cast<const QAbstractButton *>(child) || child->focusPolicy() != Qt::NoFocus);
}

// Within the distance by which a tap may move, too.
QPointF TouchInput::tapTarget()
{
    const double reach = dragStartMetres * scroller().pixelPerMeter().x();
    const OverlayPoint target = m_view.convertPointToOverlay(m_view.tapTarget(m_view.viewPointAt(m_last), reach));
    return {target.x, target.y};
}

void TouchInput::sendMouse(QEvent::Type type, const QPointF &position) const
{
    QWidget *viewport = m_view.viewport();
    const bool isMove = type == QEvent::MouseMove;
    const bool isHeld = type != QEvent::MouseButtonRelease;
    QMouseEvent event(type, position, viewport->mapTo(viewport->window(), position), viewport->mapToGlobal(position),
                      isMove ? Qt::NoButton : Qt::LeftButton, isHeld ? Qt::LeftButton : Qt::NoButton,
                      QGuiApplication::keyboardModifiers());
    QGuiApplication::sendEvent(viewport, &event);
}

QScroller &TouchInput::scroller()
{
    if (!m_scroller) {
        m_scroller = QScroller::scroller(m_view.viewport());
        QScrollerProperties properties = m_scroller->scrollerProperties();
        properties.setScrollMetric(QScrollerProperties::DragStartDistance, dragStartMetres);
        for (const auto policy :
             {QScrollerProperties::HorizontalOvershootPolicy, QScrollerProperties::VerticalOvershootPolicy})
            properties.setScrollMetric(policy, QVariant::fromValue(QScrollerProperties::OvershootAlwaysOff));
        m_scroller->setScrollerProperties(properties);
    }
    return *m_scroller;
}

} // namespace inkory
