#pragma once

#include <QString>

namespace inkory
{

/// Text that comes from outside (a file's name, a path, an address) as it may be put into a sentence, a title, a list
/// or a log line: one line that cannot reorder what stands around it, without invisible characters. Line breaks and
/// tabs become spaces; other control, directional and invisible characters and broken ones become U+FFFD, so that they
/// are seen. What is longer than `maxLength` code points is cut in the middle. For showing only: the result is no
/// longer a path.
QString displayable(const QString &foreign, qsizetype maxLength = 200);

/// The same for menu items and buttons, where an ampersand would mark the next letter as the item's key.
QString displayableInMenu(const QString &foreign);

} // namespace inkory
