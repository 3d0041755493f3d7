#include "V1/application/FileArguments.h"

#include <QDir>
#include <QFileInfo>

namespace inkory
{

QUrl urlFromArgument(const QString &argument)
{
    if (argument.isEmpty())
        return {};
    // Made absolute here and not by QFileInfo, which takes a leading colon for one of its own places.
    const QString path = argument.startsWith(u'/') ? argument : QDir::currentPath() + u'/' + argument;
    const QUrl url(argument);
    const bool isAddress = argument.contains(QStringLiteral("://")) && url.isValid() && !QFileInfo::exists(path);
    return isAddress ? url : QUrl::fromLocalFile(QDir::cleanPath(path));
}

} // namespace inkory
