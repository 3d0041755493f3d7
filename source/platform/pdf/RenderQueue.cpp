#include "platform/pdf/RenderQueue.h"

#include <algorithm>

namespace inkory
{

RenderQueue::RenderQueue(const std::vector<Worker> &workers) : m_workers(workers), m_isIdle(workers.size(), true)
{
    m_threads.reserve(workers.size());
    for (int index = 0; index < static_cast<int>(workers.size()); ++index)
        m_threads.emplace_back([this, index] { work(index); });
}

RenderQueue::~RenderQueue()
{
    stop();
    for (std::thread &thread : m_threads)
        thread.join();
}

void RenderQueue::stop()
{
    Waiting dropped; // what the jobs hold is let go outside the lock
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        dropped.swap(m_waiting);
        for (const auto &[id, entry] : m_running)
            entry->cancelled = true;
    }
    m_changed.notify_all();
}

bool RenderQueue::isBusy()
{
    const std::lock_guard lock(m_mutex);
    return !m_running.empty();
}

RenderQueue::JobId RenderQueue::add(int priority, Job job)
{
    auto entry = std::make_shared<Entry>();
    entry->job = std::move(job);
    JobId id = 0;
    {
        const std::lock_guard lock(m_mutex);
        id = ++m_lastId;
        m_waiting.emplace(Key(priority, id), std::move(entry));
    }
    m_changed.notify_all(); // whoever is woken may serve other priorities, so one is not enough
    return id;
}

void RenderQueue::cancel(JobId id)
{
    std::shared_ptr<Entry> dropped;
    const std::lock_guard lock(m_mutex);
    const auto waiting =
        std::find_if(m_waiting.begin(), m_waiting.end(), [id](const auto &entry) { return entry.first.second == id; });
    if (waiting != m_waiting.end()) {
        dropped = std::move(waiting->second);
        m_waiting.erase(waiting);
    } else if (const auto running = m_running.find(id); running != m_running.end()) {
        running->second->cancelled = true;
    }
}

bool RenderQueue::isForEarlierIdleWorker(int index, int priority) const
{
    for (std::size_t i = 0; i < static_cast<std::size_t>(index); ++i) {
        if (m_isIdle[i] && priority >= m_workers[i].firstPriority && priority <= m_workers[i].lastPriority)
            return true;
    }
    return false;
}

RenderQueue::Waiting::iterator RenderQueue::nextFor(int index)
{
    const Worker &worker = m_workers[static_cast<std::size_t>(index)];
    const auto next = m_waiting.lower_bound(Key(worker.firstPriority, 0));
    const bool takes = next != m_waiting.end() && next->first.first <= worker.lastPriority &&
                       !isForEarlierIdleWorker(index, next->first.first);
    return takes ? next : m_waiting.end();
}

void RenderQueue::work(int index)
{
    const auto self = static_cast<std::size_t>(index);
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return m_stopping || nextFor(index) != m_waiting.end(); });
        if (m_stopping)
            return;
        const auto next = nextFor(index);
        const JobId id = next->first.second;
        std::shared_ptr<Entry> entry = std::move(next->second);
        m_waiting.erase(next);
        m_running.emplace(id, entry);
        m_isIdle[self] = false;
        lock.unlock();
        m_changed.notify_all(); // what is left may be for the workers after this one now
        entry->job(Run{id, index, entry->cancelled});
        lock.lock();
        m_running.erase(id);
        lock.unlock();
        entry.reset(); // what the job holds may take time to let go, or use the queue
        lock.lock();
        m_isIdle[self] = true;
    }
}

} // namespace inkory
