#include "platform/widgets/WindowController.h"

#include "platform/widgets/Document.h"
#include "platform/widgets/InterfaceDescriptions.h"

#include <QKeyEvent>

#include <utility>

namespace inkory
{

WindowController::WindowController(QString interfaceName, QObject *parent)
    : QObject(parent), m_interfaceName(std::move(interfaceName))
{
}

WindowController::~WindowController()
{
    if (m_window)
        m_window->removeEventFilter(this);
}

QWidget *WindowController::window()
{
    if (m_window)
        return m_window.get();
    m_window = loadInterfaceDescription(m_interfaceName);
    if (!m_window)
        return nullptr;
    m_window->installEventFilter(this);
    awakeFromNib();
    windowDidLoad();
    if (m_document)
        m_document->synchronizeWindowTitles();
    return m_window.get();
}

void WindowController::showWindow()
{
    QWidget *shown = window();
    if (!shown)
        return;
    shown->setWindowState(shown->windowState() & ~Qt::WindowMinimized);
    shown->show();
    shown->raise();
    shown->activateWindow();
}

void WindowController::close()
{
    if (!m_window)
        return;
    windowWillClose();
    m_window->hide();
}

bool WindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (!m_window || watched != m_window.get())
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::Close)
        return handleClose(*event);
    if (event->type() == QEvent::KeyPress)
        return handleKeyPress(static_cast<QKeyEvent &>(*event));
    return false;
}

bool WindowController::handleClose(QEvent &event)
{
    if (!windowShouldClose()) {
        event.ignore();
        return true;
    }
    if (m_document) {
        event.ignore(); // the document may have to ask first, and hides the window itself
        m_document->close();
        return true;
    }
    windowWillClose();
    return false;
}

bool WindowController::handleKeyPress(QKeyEvent &event)
{
    QObject &receiver = *m_window;
    if (receiver.event(&event) && event.isAccepted())
        return true;
    event.setAccepted(keyDown(event));
    return true;
}

} // namespace inkory
