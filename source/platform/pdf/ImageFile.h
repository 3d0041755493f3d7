#pragma once

#include "platform/core/Image.h"
#include "platform/core/Result.h"

#include <QString>

namespace inkory
{

struct ImageReply;

/// Reads an image file of any origin: decoded by a contained helper process. Blocks, also for the time it takes to
/// start the helper: for worker threads. Fails with a sentence for the person, on whatever is no image file of a known
/// kind (decided by its content), is cut off or damaged, is larger than 256 MB, or has too many pixels: 200 million,
/// 32,767 a side, or 64 million where the whole image must be held to read it (progressive JPEG, for example). Images
/// of more than 12.5 million pixels are scaled down, keeping their size in points, which is pixels × 72 / the density
/// that the file states, where that is sane (10 to 5000 dpi); otherwise one pixel is one point. EXIF orientation is
/// applied.
Result<ImagePtr> readImageFile(const QString &path);

/// What the person is told of a file that could not be decoded, and what to do about it; nothing without a problem.
QString sentenceFor(const ImageReply &reply);

} // namespace inkory
