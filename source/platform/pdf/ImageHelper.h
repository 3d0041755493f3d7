#pragma once

#include "platform/core/Image.h"
#include "platform/core/Result.h"

#include <QtGlobal>

namespace inkory
{

/// Decodes an open image file of that many bytes in a helper process, which is kept for a moment in case there are more
/// of them. Blocks: for worker threads.
Result<ImagePtr> decodeInHelper(int descriptor, qint64 size);

/// Ends helpers that wait for another image: before this process ends.
void dropImageHelpers();

} // namespace inkory
