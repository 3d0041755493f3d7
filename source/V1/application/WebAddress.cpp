#include "V1/application/WebAddress.h"

#include "platform/core/DisplayText.h"
#include "platform/core/Log.h"
#include "platform/widgets/Alert.h"

#include <QCoreApplication>
#include <QDesktopServices>

#include <utility>

namespace inkory
{

namespace
{

constexpr int longestUnbroken = 50; // characters

std::function<bool(const QUrl &)> &addressOpener()
{
    static std::function<bool(const QUrl &)> function;
    return function;
}

QUrl openableUrl(const QString &address)
{
    const QUrl url(address);
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    const bool isMail = url.scheme() == QLatin1String("mailto");
    return (isWeb && !url.host().isEmpty()) || (isMail && !url.path().isEmpty()) ? url : QUrl();
}

// A label breaks its lines between words only, and would be as wide as the address. Breaks are offered where they are
// not seen.
QString breakable(const QString &address)
{
    QString lines;
    for (qsizetype i = 0; i < address.size(); i += longestUnbroken)
        lines += (i > 0 ? QStringLiteral("\u200b") : QString()) + address.mid(i, longestUnbroken);
    return lines;
}

} // namespace

AddressOutcome openAddressIfAgreed(const QString &address, QWidget *window)
{
    const QUrl url = openableUrl(address);
    if (url.isEmpty()) {
        logLine(QStringLiteral("not an address to open: %1").arg(displayable(address)));
        return AddressOutcome::Failed;
    }
    Alert question;
    question.style = Alert::Style::Informational;
    question.messageText = QCoreApplication::translate("WebAddress", "Open this address?");
    // As it goes out: letters of other scripts that look like Latin ones show up in it.
    question.informativeText = breakable(QString::fromLatin1(url.toEncoded()));
    question.buttons = {QCoreApplication::translate("WebAddress", "Open"),
                        QCoreApplication::translate("WebAddress", "Cancel")};
    question.defaultButton = 1;
    if (question.runModal(window) != 1)
        return AddressOutcome::Declined;
    const bool isOpened = addressOpener() ? addressOpener()(url) : QDesktopServices::openUrl(url);
    return isOpened ? AddressOutcome::Opened : AddressOutcome::Failed;
}

void setAddressOpener(std::function<bool(const QUrl &)> opener)
{
    addressOpener() = std::move(opener);
}

} // namespace inkory
