#include "platform/core/LocalizedStrings.h"

#include <QCoreApplication>

namespace inkory
{

QString localizedString(const char *key)
{
    return QCoreApplication::translate("Localizable", key);
}

} // namespace inkory
