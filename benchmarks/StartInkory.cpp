// Starts as the program does, with one file, and ends the moment its first page stands in the window.

#include "V1/application/AppDelegate.h"
#include "V1/editing/KRPDFView.h"
#include "platform/pdf/EngineProcess.h"

#include <QApplication>
#include <QTimer>
#include <QUrl>

#include <cstdlib>

namespace
{

// The view of a document window ends the process as soon as its pages are there.
class FirstPageWatcher : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Polish) {
            if (const auto *view = qobject_cast<KRPDFView *>(watched))
                QObject::connect(view, &KRPDFView::contentCompleted, [] { std::quick_exit(0); });
        }
        return false;
    }
};

} // namespace

int main(int argc, char **argv)
{
    inkory::EngineProcess::prepareSpare();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setQuitOnLastWindowClosed(false);
    FirstPageWatcher watcher;
    application.installEventFilter(&watcher);
    AppDelegate delegate;
    const QString file = QApplication::arguments().value(1);
    QTimer::singleShot(0, &delegate, [&] { delegate.launch({QUrl::fromLocalFile(file)}); });
    return QApplication::exec();
}
