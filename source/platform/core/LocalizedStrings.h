#pragma once

#include <QString>

namespace inkory
{

/// The text for the key in the user's language: looked up in the loaded translation under the context "Localizable";
/// the key itself where there is none.
QString localizedString(const char *key);

} // namespace inkory
