#include "platform/pdf/ImageBufferPool.h"

#include <algorithm>
#include <list>
#include <mutex>

namespace inkory
{

namespace
{

// What may lie idle: about what a window shows.
constexpr qint64 mostIdleBytes = 48LL << 20;
// Sizes are rounded up to this, so that a page of nearly the same size fits.
constexpr qint64 sizeStep = 256LL << 10;

} // namespace

struct ImageBufferPool::Idle
{
    std::mutex mutex;
    std::list<std::shared_ptr<SharedMemory>> blocks; // the one used last first
    qint64 bytes = 0;

    std::shared_ptr<SharedMemory> takeFitting(qint64 wanted)
    {
        const std::lock_guard lock(mutex);
        const auto fitting = std::find_if(blocks.begin(), blocks.end(), [wanted](const auto &block) {
            return block->size() >= wanted && block->size() <= 2 * wanted;
        });
        if (fitting == blocks.end())
            return nullptr;
        std::shared_ptr<SharedMemory> block = std::move(*fitting);
        blocks.erase(fitting);
        bytes -= block->size();
        return block;
    }

    void giveBack(std::shared_ptr<SharedMemory> block)
    {
        const std::lock_guard lock(mutex);
        bytes += block->size();
        blocks.push_front(std::move(block));
        while (bytes > mostIdleBytes) {
            bytes -= blocks.back()->size();
            blocks.pop_back();
        }
    }
};

ImageBufferPool::ImageBufferPool() : m_idle(std::make_shared<Idle>()) {}

Result<std::shared_ptr<SharedMemory>> ImageBufferPool::take(qint64 bytes)
{
    const qint64 rounded = (bytes + sizeStep - 1) / sizeStep * sizeStep;
    std::shared_ptr<SharedMemory> block = m_idle->takeFitting(rounded);
    if (!block) {
        auto created = SharedMemory::create(rounded);
        if (!created)
            return created.error();
        block = *created;
    }
    SharedMemory *memory = block.get();
    const auto giveBack = [block, idle = std::weak_ptr<Idle>(m_idle)](SharedMemory *) mutable {
        if (const auto pool = idle.lock())
            pool->giveBack(std::move(block));
        block.reset();
    };
    return std::shared_ptr<SharedMemory>(memory, giveBack);
}

} // namespace inkory
