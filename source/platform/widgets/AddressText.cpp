#include "platform/widgets/AddressText.h"

#include "platform/core/DisplayText.h"

namespace inkory
{

namespace
{

constexpr qsizetype longestUnbroken = 50;
constexpr char16_t mayBreak = 0x200B;

} // namespace

QString addressText(const QString &address)
{
    QString shown = displayable(address, address.size());
    for (qsizetype i = longestUnbroken; i < shown.size(); i += longestUnbroken + 1) {
        i += shown.at(i).isLowSurrogate() ? 1 : 0;
        shown.insert(i, QChar(mayBreak));
    }
    return shown;
}

} // namespace inkory
