#pragma once

#include "platform/core/Log.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

namespace inkory
{

/// Interface descriptions by name: each is a form compiled from resources/*.ui, so that a mistake in one is found at
/// compile time. The builder makes the window; registering a name again replaces its builder.
void registerInterfaceDescription(const QString &name, std::function<std::unique_ptr<QWidget>()> builder);

/// A new window from the description; none (and a log line) for a name that nobody registered.
std::unique_ptr<QWidget> loadInterfaceDescription(const QString &name);

/// The object of that name and kind inside the window; none (and a log line) where the description has none.
template <class T> T *outlet(const QWidget &root, const QString &name)
{
    auto *found = root.findChild<T *>(name);
    if (!found)
        logLine(QStringLiteral("interface description: no outlet \"%1\" in \"%2\"").arg(name, root.objectName()));
    return found;
}

} // namespace inkory
