#include "V1/application/WebAddress.h"

#include "platform/core/DisplayText.h"
#include "platform/core/Log.h"
#include "platform/widgets/AddressText.h"
#include "platform/widgets/Alert.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QStringList>
#include <QUrlQuery>
#include <QWidget>

#include <utility>

namespace inkory
{

namespace
{

constexpr int questionWidth = 420; // at least: addresses are read best in few lines

std::function<bool(const QUrl &)> &addressOpener()
{
    static std::function<bool(const QUrl &)> function;
    return function;
}

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(WebAddress)
};

// A letter and whom it goes to; what else an address can ask of a mail program, such as files to send, is left out.
QUrl harmlessMail(QUrl url)
{
    static const QStringList kept = {QStringLiteral("to"), QStringLiteral("cc"), QStringLiteral("bcc"),
                                     QStringLiteral("subject"), QStringLiteral("body")};
    QUrlQuery harmless;
    for (const auto &[name, value] : QUrlQuery(url).queryItems(QUrl::FullyEncoded)) {
        if (kept.contains(QUrl::fromPercentEncoding(name.toLatin1()), Qt::CaseInsensitive))
            harmless.addQueryItem(name, value);
    }
    url.setQuery(harmless.isEmpty() ? QString() : harmless.toString(QUrl::FullyEncoded));
    url.setFragment(QString());
    return url;
}

// Nothing for what is not to be opened.
QUrl openableUrl(const QString &address)
{
    const QUrl url(address);
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    if (isWeb && !url.host().isEmpty())
        return url;
    const bool isMail = url.scheme() == QLatin1String("mailto") && !url.path().isEmpty();
    return isMail ? harmlessMail(url) : QUrl();
}

// As it goes out: letters of other scripts that look like Latin ones show up in it.
QString sentencesAbout(const QUrl &url)
{
    const QString address = addressText(QString::fromLatin1(url.toEncoded()));
    if (url.host().isEmpty())
        return address;
    QStringList lines(Text::tr("It leads to: %1").arg(addressText(url.host(QUrl::FullyEncoded))));
    if (!url.userInfo().isEmpty())
        lines += Text::tr("What stands before “@” is only a user name: %1")
                     .arg(addressText(url.userName(QUrl::FullyEncoded)));
    return lines.join(u'\n') + QStringLiteral("\n\n") + address;
}

std::unique_ptr<QWidget> spaceForTheAddress()
{
    auto space = std::make_unique<QWidget>();
    space->setMinimumWidth(questionWidth);
    return space;
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
    question.messageText = Text::tr("Open this address?");
    question.informativeText = sentencesAbout(url);
    question.accessoryView = spaceForTheAddress;
    question.buttons = {Text::tr("Open"), Text::tr("Cancel")};
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
