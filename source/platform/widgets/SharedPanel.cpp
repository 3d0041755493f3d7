#include "platform/widgets/SharedPanel.h"

#include "platform/widgets/ModalSession.h"

#include <QDialog>
#include <QEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace inkory
{

namespace
{

constexpr int gap = 16;
constexpr QSize windowFrame(4, 36); // about what the desktop puts around a dialog; known only once it is shown

QPoint placeBeside(const QRect &workedOn, const QSize &size, const QRect &screen)
{
    const int x = std::clamp(workedOn.left(), screen.left(), std::max(screen.left(), screen.right() - size.width()));
    const int y = std::clamp(workedOn.top(), screen.top(), std::max(screen.top(), screen.bottom() - size.height()));
    for (const QPoint &place : {QPoint(workedOn.right() + gap, y), QPoint(workedOn.left() - gap - size.width(), y),
                                QPoint(x, workedOn.bottom() + gap), QPoint(x, workedOn.top() - gap - size.height())}) {
        if (screen.contains(QRect(place, size)))
            return place;
    }
    return {std::max(screen.left(), screen.right() - size.width()), screen.top()};
}

} // namespace

SharedPanel::SharedPanel(std::unique_ptr<QDialog> dialog) : m_dialog(std::move(dialog))
{
    m_dialog->setModal(false);
    m_dialog->installEventFilter(this);
}

SharedPanel::~SharedPanel() = default;

void SharedPanel::orderFront(QWidget *widget, const QRect &workedOn)
{
    QWidget *window = widget->window();
    watch(m_window, window);
    watch(m_session, modalWindow() != window ? modalWindow() : nullptr);
    standOver(m_session ? m_session : m_window);
    if (!m_dialog->isVisible())
        place(workedOn.isEmpty() ? window->frameGeometry() : workedOn);
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void SharedPanel::close()
{
    m_dialog->hide();
}

bool SharedPanel::isVisible() const
{
    return m_dialog->isVisible();
}

bool SharedPanel::eventFilter(QObject *watched, QEvent *event)
{
    // Queued: Qt is just telling one window after the other what the modal one means to it.
    if (event->type() == QEvent::WindowBlocked && watched == m_dialog.get())
        QMetaObject::invokeMethod(this, &SharedPanel::joinSession, Qt::QueuedConnection);
    else if (event->type() == QEvent::Hide && !event->spontaneous() && watched == m_window)
        close();
    else if (event->type() == QEvent::Hide && watched == m_session)
        QMetaObject::invokeMethod(this, &SharedPanel::joinSession, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}

void SharedPanel::watch(QPointer<QWidget> &watched, QWidget *window)
{
    if (watched)
        watched->removeEventFilter(this);
    watched = window;
    if (watched)
        watched->installEventFilter(this);
}

void SharedPanel::joinSession()
{
    QWidget *session = modalWindow();
    watch(m_session, session && session->isVisible() && session != m_window ? session : nullptr);
    standOver(m_session ? m_session : m_window);
}

// Qt parents would take the dialog with them when they go, and would have to be changed while it is hidden.
void SharedPanel::standOver(QWidget *window)
{
    m_dialog->winId(); // makes the native window, which carries the parent
    m_dialog->windowHandle()->setTransientParent(window ? window->windowHandle() : nullptr);
}

void SharedPanel::place(const QRect &workedOn)
{
    if (!m_dialog->testAttribute(Qt::WA_Resized))
        m_dialog->adjustSize(); // as it would when it is shown
    const QScreen *screen = m_window->screen();
    m_dialog->move(placeBeside(workedOn, m_dialog->size() + windowFrame, screen->availableGeometry()));
}

} // namespace inkory
