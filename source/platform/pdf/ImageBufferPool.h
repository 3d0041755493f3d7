#pragma once

#include "platform/core/SharedMemory.h"

#include <memory>

namespace inkory
{

/// Memory for page images that is used again: getting pages of memory from the system, zeroed, and giving them back
/// takes longer than drawing an ordinary page into them. For the helpers of one document only, as what a former image
/// left in the memory can be read in the next one's helper. May be used from any thread.
class ImageBufferPool
{
public:
    ImageBufferPool();

    /// At least that many bytes with any content. Comes back by itself when the last reference goes, also after this
    /// object.
    Result<std::shared_ptr<SharedMemory>> take(qint64 bytes);

private:
    struct Idle;
    std::shared_ptr<Idle> m_idle;
};

} // namespace inkory
