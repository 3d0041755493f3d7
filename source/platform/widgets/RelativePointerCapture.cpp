#include "platform/widgets/RelativePointerCapture.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>

#include <algorithm>

namespace inkory
{

RelativePointerCapture::~RelativePointerCapture()
{
    endCapture();
}

bool RelativePointerCapture::isOffered()
{
    return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

bool RelativePointerCapture::isPointerThere() const
{
    return m_surface && m_surface->rect().contains(m_surface->mapFromGlobal(QCursor::pos()));
}

bool RelativePointerCapture::beginCapture(TouchReceiver &receiver)
{
    if (isCaptured() || !isOffered() || !m_surface || !m_surface->isVisible())
        return false;
    m_receiver = &receiver;
    m_isDown = false;
    m_position = m_surface->mapFromGlobal(QPointF(QCursor::pos()));
    m_surface->installEventFilter(this);
    m_surface->grabMouse(Qt::CrossCursor); // the widget may hide its own meanwhile
    return true;
}

void RelativePointerCapture::endCapture()
{
    m_receiver = nullptr;
    if (!m_surface)
        return;
    m_surface->removeEventFilter(this);
    m_surface->releaseMouse();
}

bool RelativePointerCapture::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        press(static_cast<QMouseEvent &>(*event));
        return true;
    case QEvent::MouseMove:
        move(static_cast<QMouseEvent &>(*event));
        return true;
    case QEvent::MouseButtonRelease:
        release();
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

void RelativePointerCapture::press(const QMouseEvent &event)
{
    move(event);
    m_endsWithRelease = m_isDown;
    if (m_isDown)
        return;
    m_isDown = true;
    m_pressed = m_position;
    ++m_identity;
    tell(TouchPhase::Began);
}

void RelativePointerCapture::move(const QMouseEvent &event)
{
    const QPointF wanted = m_surface->mapFromGlobal(event.globalPosition()); // not in whole points
    const QPointF kept(std::clamp(wanted.x(), 0.0, static_cast<double>(m_surface->width())),
                       std::clamp(wanted.y(), 0.0, static_cast<double>(m_surface->height())));
    if (kept != wanted)
        QCursor::setPos(m_surface->mapToGlobal(kept.toPoint()));
    if (kept == m_position)
        return;
    m_position = kept;
    if ((m_position - m_pressed).manhattanLength() >= QGuiApplication::styleHints()->startDragDistance())
        m_endsWithRelease = m_endsWithRelease || (event.buttons() != Qt::NoButton && m_isDown);
    if (m_isDown)
        tell(TouchPhase::Moved);
}

void RelativePointerCapture::release()
{
    if (!m_isDown || !m_endsWithRelease)
        return;
    m_isDown = false;
    tell(TouchPhase::Ended);
}

void RelativePointerCapture::tell(TouchPhase phase)
{
    const QPointF position(m_position.x() / m_surface->width(), 1 - m_position.y() / m_surface->height());
    m_receiver->touchesChanged({{m_identity, phase, position}});
}

} // namespace inkory
