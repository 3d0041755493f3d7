#pragma once

#include "platform/core/ImageKind.h"

#include <QByteArray>
#include <QSizeF>

#include <optional>

namespace inkory
{

/// Whether the file reaches as far as its format says that it does; true for kinds that are not looked into (those
/// looked into are JPEG, PNG, GIF, as far as the end of its first picture, and BMP). Image readers show the missing
/// part in gray.
bool isWholeImageFile(const QByteArray &bytes, ImageKind kind);

/// The density that a PNG, JPEG or BMP file states, in dots per inch along its rows and its columns. Nothing where it
/// states none, or one outside 10 to 5000 dpi. Formats count in dots per metre, as whole numbers: what is within that
/// rounding of a whole number of dots per inch is that number.
std::optional<QSizeF> statedDensity(const QByteArray &bytes, ImageKind kind);

} // namespace inkory
