#pragma once

#include <QString>

namespace inkory
{

/// The address of a link as a person is shown it: displayable, all of it, and with places that are not seen where its
/// lines may end. Labels and tool tips would be as wide as the address otherwise.
QString addressText(const QString &address);

} // namespace inkory
