#pragma once

#include "platform/core/Result.h"

#include <QLatin1String>
#include <QString>

namespace inkory
{

/// Kinds of standard folders that can be searched for.
enum class SearchPathDirectory : int { ApplicationSupport = 14 };
/// Whose standard folders are searched.
enum class SearchPathDomain : int { User = 1 };

/// The name of the program's own folder inside the standard folders.
inline constexpr QLatin1String executableName("inkory");

/// The first standard folder of the kind in the domain, with the component (if any) appended; created, with the folders
/// above it, when it is missing. Fails for kinds and domains without a folder and when it cannot be created.
Result<QString> findOrCreateDirectory(SearchPathDirectory directory, SearchPathDomain domainMask,
                                      const QString &pathComponent = {});

/// The program's own folder for what belongs to the person and is not a setting; created when it is missing. A failure
/// is logged.
Result<QString> applicationSupportDirectory();

/// Makes the folder and those above it, for this person only (mode 0700). A folder that exists keeps its mode.
Result<void> createPrivateDirectory(const QString &path);

} // namespace inkory
