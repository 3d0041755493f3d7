#pragma once

#include "platform/core/Image.h"
#include "platform/core/Result.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <vector>

namespace inkory
{

/// An image that was copied into the library's folder, and the key it has in the library.
struct CopiedSignature
{
    QString key;
    ImagePtr image;
};

/// The library's key for a file: its fully percent-encoded URL.
QString signatureKey(const QUrl &url);
/// A new name in the folder, which has no slash at its end.
QString newSignaturePath(const QString &folder, const QString &extension);

/// The images of these files in the same order; none, with a log line, for what cannot be read as one.
///
/// Both functions are called on the main thread and answer when all is done. The work is done on other threads while an
/// event loop keeps the windows painted: input waits, but everything else may be called meanwhile.
std::vector<ImagePtr> readSignatures(const QList<QUrl> &urls);
/// Copies the files into the folder under new names, for the owner only, and reads them; for each of them, in the same
/// order, what was added or why it could not be. What fails leaves no file.
std::vector<Result<CopiedSignature>> copySignatures(const QList<QUrl> &urls, const QString &folder);

} // namespace inkory
