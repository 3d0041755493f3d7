#pragma once

#include <QString>
#include <QUrl>

namespace inkory
{

/// The file that an argument of the command line means. An argument is a path, as seen from the current folder, or a
/// URL; there are no options. What exists as a file is a path, whatever it looks like. Empty for an empty argument.
QUrl urlFromArgument(const QString &argument);

} // namespace inkory
