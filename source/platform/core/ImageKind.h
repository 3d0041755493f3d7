#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QStringList>

#include <optional>

namespace inkory
{

/// The kinds of image files that are read. All are made of pixels: what reads drawings and documents opens other files,
/// runs programs or never ends.
enum class ImageKind { Png, Jpeg, Gif, Bmp, Ico, Webp, Tiff, Pbm, Pgm, Ppm };

/// Those that a reader is installed for.
const QList<ImageKind> &readableImageKinds();

/// What a file is, going by how it begins; nothing for anything else than a readable kind.
std::optional<ImageKind> imageKindOf(QByteArrayView bytes);

/// What QImageReader calls the kind.
QByteArray imageReaderName(ImageKind kind);

/// The file name extensions that are usual for the kind, in lower case.
QStringList fileExtensionsOf(ImageKind kind);

} // namespace inkory
