#pragma once

#include <QString>
#include <QUrl>

#include <functional>

class QWidget;

namespace inkory
{

enum class AddressOutcome { Opened, Declined, Failed };

/// Shows the person an address that stands in a document and where it leads, and opens it in the program that is
/// responsible only when they agree. Other addresses than of http, https and mailto fail without a question; a mailto
/// address keeps only recipients, subject and text.
AddressOutcome openAddressIfAgreed(const QString &address, QWidget *window);

/// For tests: opens addresses in the desktop's place while it is set.
void setAddressOpener(std::function<bool(const QUrl &)> opener);

} // namespace inkory
