#include "V1/application/AppDelegate.h"
#include "V1/application/FileArguments.h"
#include "platform/pdf/EngineProcess.h"
#include "platform/pdf/ImageHelper.h"

#include <QApplication>
#include <QIcon>
#include <QThreadPool>
#include <QTimer>

#include <csignal>
#include <cstdlib>

namespace
{

constexpr int workerPatienceMilliseconds = 500;

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGXFSZ, SIG_IGN);         // a write beyond the limit for file sizes shall fail, not end the program
    inkory::EngineProcess::prepareSpare(); // first, so that it gets ready while the windows do
    QApplication application(argc, argv);
    Q_INIT_RESOURCE(inkory);
    // A stroke is drawn through every point that the pointer came by. Now, as the platform has just set its own wish.
    QApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    QApplication::setAttribute(Qt::AA_CompressTabletEvents, false);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setApplicationVersion(QStringLiteral(INKORY_VERSION));
    QApplication::setApplicationDisplayName(QStringLiteral("Inkory"));
    QApplication::setDesktopFileName(QStringLiteral("io.github.inkory.Inkory"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/io.github.inkory.Inkory.svg")));
    // The last window closes before the welcome window comes back.
    QApplication::setQuitOnLastWindowClosed(false);

    QList<QUrl> files;
    const QStringList arguments = QApplication::arguments().mid(1);
    for (const QString &argument : arguments)
        files.append(inkory::urlFromArgument(argument));

    int status = 0;
    {
        AppDelegate delegate;
        // From inside the event loop: a modal session that runs before it would not notice that the program is to quit.
        QTimer::singleShot(0, &delegate, [&delegate, files] { delegate.launch(files); });
        status = QApplication::exec();
    }
    // All documents are closed now. What workers still do for them is of no use.
    const bool allDone = QThreadPool::globalInstance()->waitForDone(workerPatienceMilliseconds);
    inkory::EngineProcess::dropSpare();
    inkory::dropImageHelpers();
    if (!allDone)
        std::_Exit(status);
    return status;
}
