#pragma once

#include <QStringList>

namespace inkory
{

/// Takes from the process, as far as the kernel can: all access to files but reading what is at and below the paths
/// (missing ones are skipped), TCP, abstract sockets and signals of others. What is open stays open. No newer interface
/// than the given version is made use of. Answers what the kernel could not do, one line each.
QStringList restrictByLandlock(const QStringList &readablePaths, int newestVersion);

} // namespace inkory
