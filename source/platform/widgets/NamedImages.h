#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace inkory
{

/// The icon of that name (resources/icons/NAME.svg), its lines drawn in the colour so that it is readable in light and
/// in dark themes, for ratios up to 3. Null, with a log line, for a name that does not exist.
QIcon iconNamed(const QString &name, const QColor &color);

/// The image of that name (resources/cursors/NAME.svg) in its own size times the ratio, which it carries. Null, with a
/// log line, for a name that does not exist.
QPixmap cursorImageNamed(const QString &name, double devicePixelRatio);

} // namespace inkory
