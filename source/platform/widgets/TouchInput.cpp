#include "platform/widgets/TouchInput.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QTouchEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace inkory
{

namespace
{

// Fingers closer than this do not say how much to zoom.
constexpr double leastPinchDistance = 10;
// How far a finger moves before it is not a tap: a few millimetres.
constexpr double dragStartMetres = 0.003;

double distanceBetween(const QPointF &a, const QPointF &b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

TouchInput::Fingers TouchInput::fingersOf(const QTouchEvent &event)
{
    Fingers fingers;
    for (const QEventPoint &point : event.points()) {
        if (point.state() != QEventPoint::State::Released)
            fingers.push_back({point.id(), point.position()});
    }
    return fingers;
}

const TouchInput::Finger *TouchInput::fingerWithId(const Fingers &fingers, int id)
{
    const auto found =
        std::find_if(fingers.begin(), fingers.end(), [id](const Finger &finger) { return finger.id == id; });
    return found != fingers.end() ? &*found : nullptr;
}

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
    if (fingers.empty() || belongsToChild(fingers.front().at))
        return false; // becomes a mouse event for it
    m_view.m_glide.stop();
    if (fingers.size() > 1) {
        startPinch(fingers[0], fingers[1]);
    } else if (m_view.claimsTouch(m_view.viewPointAt(fingers.front().at))) {
        stop();
        m_mode = Mode::Drag;
        m_finger = fingers.front().id;
        m_last = fingers.front().at;
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
    if (m_mode == Mode::None || fingers.empty())
        return;
    if (m_mode == Mode::Drag || (m_mode == Mode::Scroll && fingers.size() == 1))
        moveOne(fingers, event);
    else if (fingers.size() > 1)
        pinch(fingers);
    else
        startScrolling(fingers.front(), static_cast<qint64>(event.timestamp())); // with the finger that stayed
}

void TouchInput::moveOne(const Fingers &fingers, const QTouchEvent &event)
{
    const auto milliseconds = static_cast<qint64>(event.timestamp());
    const Finger *finger = fingerWithId(fingers, m_finger);
    if (finger && finger->at == m_last)
        return; // another one moved
    if (finger)
        m_last = finger->at;
    if (m_mode == Mode::Drag && !finger) {
        m_mode = Mode::None; // the others do nothing until they are lifted, too
        sendMouse(QEvent::MouseButtonRelease, placeOfLifted(event));
    } else if (m_mode == Mode::Drag) {
        sendMouse(QEvent::MouseMove, m_last);
    } else if (finger) {
        scroller().handleInput(QScroller::InputMove, m_last, milliseconds);
        m_mayTap = m_mayTap && scroller().state() == QScroller::Pressed;
    } else {
        stop();
        m_mayTap = false;
        startScrolling(fingers.front(), milliseconds);
    }
}

QPointF TouchInput::placeOfLifted(const QTouchEvent &event) const
{
    const auto &points = event.points();
    const auto found =
        std::find_if(points.begin(), points.end(), [this](const QEventPoint &point) { return point.id() == m_finger; });
    return found != points.end() ? found->position() : m_last;
}

void TouchInput::lift(const QTouchEvent &event)
{
    const Mode mode = std::exchange(m_mode, Mode::None);
    const QPointF position = placeOfLifted(event);
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

void TouchInput::startScrolling(const Finger &finger, qint64 milliseconds)
{
    m_mode = Mode::Scroll;
    m_pinch.reset();
    m_finger = finger.id;
    m_last = finger.at;
    scroller().handleInput(QScroller::InputPress, finger.at, milliseconds);
}

void TouchInput::startPinch(const Finger &one, const Finger &other)
{
    stop();
    m_mode = Mode::Pinch;
    m_mayTap = false;
    m_pinch = Pinch{{one.id, other.id},
                    std::max(leastPinchDistance, distanceBetween(one.at, other.at)),
                    m_view.scaleFactor(),
                    m_view.placeAt((one.at + other.at) / 2)};
}

// With another pair of fingers it begins anew: the pages do not jump from one to the other.
void TouchInput::pinch(const Fingers &fingers)
{
    const Finger *one = m_pinch ? fingerWithId(fingers, m_pinch->fingers[0]) : nullptr;
    const Finger *other = m_pinch ? fingerWithId(fingers, m_pinch->fingers[1]) : nullptr;
    if (!one || !other) {
        startPinch(fingers[0], fingers[1]);
        return;
    }
    const double spread = std::max(leastPinchDistance, distanceBetween(one->at, other->at)) / m_pinch->distance;
    m_view.zoomKeeping(m_pinch->factor * spread, m_pinch->middle, (one->at + other->at) / 2);
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
