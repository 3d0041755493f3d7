#pragma once

#include "platform/core/Result.h"

#include <QByteArray>
#include <QString>

namespace inkory
{

/// Replaces the file (or creates it) with the bytes, all or nothing: they are written beside the target, checked,
/// synced to the disk and put in place in one step, and the folder is synced too. Mode, symbolic links and, where the
/// system allows, owner, group, access list and user attributes are kept; another hard link keeps the old bytes.
/// `modeIfNew`, a part of 0666, is the mode of a file that did not exist, less the umask.
///
/// When it answers success, the file survives a power cut (as far as its file system can promise that); when it fails,
/// the old file is unchanged and the error names the cause in words for the person. Only when the syncing of the folder
/// fails is the new file, whole, in place already. Refuses names that cannot be written as they are, folders, devices
/// and pipes.
Result<void> replaceFileDurably(const QString &path, const QByteArray &bytes, unsigned modeIfNew = 0666);

} // namespace inkory
