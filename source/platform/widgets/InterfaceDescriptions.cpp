#include "platform/widgets/InterfaceDescriptions.h"

#include <QHash>

#include <utility>

namespace inkory
{

namespace
{

using Builder = std::function<std::unique_ptr<QWidget>()>;

QHash<QString, Builder> &builders()
{
    static QHash<QString, Builder> table;
    return table;
}

} // namespace

void registerInterfaceDescription(const QString &name, std::function<std::unique_ptr<QWidget>()> builder)
{
    builders()[name] = std::move(builder);
}

std::unique_ptr<QWidget> loadInterfaceDescription(const QString &name)
{
    const Builder builder = builders().value(name);
    if (!builder) {
        logLine(QStringLiteral("interface description: none with the name \"%1\"").arg(name));
        return nullptr;
    }
    return builder();
}

} // namespace inkory
