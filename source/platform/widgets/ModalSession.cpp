#include "platform/widgets/ModalSession.h"

#include <QEventLoop>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <optional>
#include <vector>

namespace inkory
{

namespace
{

struct Session
{
    explicit Session(QWidget &sessionWindow) : window(&sessionWindow) {}

    QPointer<QWidget> window;
    QEventLoop loop;
    std::optional<int> code;

    void end(int endCode)
    {
        code = endCode;
        loop.exit();
    }
};

std::vector<Session *> &sessions()
{
    static std::vector<Session *> stack;
    return stack;
}

void setTransientParent(QWidget &window, const QWidget *parentWindow)
{
    window.winId(); // the native window, which carries the parent, is otherwise made only when the window is shown
    if (QWindow *handle = window.windowHandle())
        handle->setTransientParent(parentWindow ? parentWindow->window()->windowHandle() : nullptr);
}

} // namespace

int runModalForWindow(QWidget &window)
{
    return runModalForWindow(window, nullptr);
}

int runModalForWindow(QWidget &window, QWidget *parentWindow)
{
    Session session(window);
    sessions().push_back(&session);

    window.hide(); // a window that is visible already would not become modal
    window.setWindowModality(Qt::ApplicationModal);
    if (parentWindow)
        setTransientParent(window, parentWindow);
    const auto gone =
        QObject::connect(&window, &QObject::destroyed, &session.loop, [&session] { session.end(modalResponseAbort); });
    window.show();
    window.raise();
    window.activateWindow();
    if (!session.code) // showing the window may have stopped the session already
        session.loop.exec(QEventLoop::DialogExec);

    std::erase(sessions(), &session);
    if (session.window) {
        QObject::disconnect(gone);
        if (!session.code) // the program is quitting
            window.hide();
        // Qt takes a window out of its list of modal ones when it is hidden while it is modal, and only then.
        if (!window.isVisible())
            window.setWindowModality(Qt::NonModal);
        if (parentWindow)
            setTransientParent(window, nullptr);
    }
    return session.code.value_or(modalResponseAbort);
}

void stopModalWithCode(int code)
{
    const auto innermost =
        std::find_if(sessions().rbegin(), sessions().rend(), [](const Session *session) { return !session->code; });
    if (innermost != sessions().rend())
        (*innermost)->end(code);
}

void stopModal()
{
    stopModalWithCode(modalResponseStop);
}

void abortModal()
{
    stopModalWithCode(modalResponseAbort);
}

QWidget *modalWindow()
{
    return sessions().empty() ? nullptr : sessions().back()->window.data();
}

} // namespace inkory
