#include "V1/application/AppDelegate.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>
#include <QTimer>

#include <csignal>

namespace
{

/// An argument is a path or a URL; there are no options.
QUrl urlFromArgument(const QString &argument)
{
    const QUrl url(argument);
    const bool isAddress = argument.contains(QStringLiteral("://")) && url.isValid() && !QFileInfo::exists(argument);
    return isAddress ? url : QUrl::fromLocalFile(QFileInfo(argument).absoluteFilePath());
}

} // namespace

int main(int argc, char **argv)
{
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit for file sizes shall fail, not end the program
    QApplication application(argc, argv);
    Q_INIT_RESOURCE(inkory);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setApplicationDisplayName(QStringLiteral("Inkory"));
    QApplication::setDesktopFileName(QStringLiteral("io.github.inkory.Inkory"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/io.github.inkory.Inkory.svg")));
    // The last window closes before the welcome window comes back.
    QApplication::setQuitOnLastWindowClosed(false);

    QList<QUrl> files;
    const QStringList arguments = QApplication::arguments().mid(1);
    for (const QString &argument : arguments)
        files.append(urlFromArgument(argument));

    AppDelegate delegate;
    // From inside the event loop: a modal session that runs before it would not notice that the program is to quit.
    QTimer::singleShot(0, &delegate, [&delegate, files] { delegate.launch(files); });
    return QApplication::exec();
}
