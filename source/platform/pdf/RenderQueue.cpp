#include "platform/pdf/RenderQueue.h"

#include <algorithm>

namespace inkory
{

RenderQueue::RenderQueue(const std::vector<Worker> &workers)
{
    m_threads.reserve(workers.size());
    for (const Worker &worker : workers) {
        const int index = static_cast<int>(m_threads.size());
        m_threads.emplace_back([this, index, worker] { work(index, worker); });
    }
}

RenderQueue::~RenderQueue()
{
    std::map<Key, std::shared_ptr<Entry>> dropped; // what the jobs hold is let go outside the lock
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        dropped.swap(m_waiting);
        for (const auto &[id, entry] : m_running)
            entry->cancelled = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
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

std::map<RenderQueue::Key, std::shared_ptr<RenderQueue::Entry>>::iterator RenderQueue::nextFor(Worker worker)
{
    const auto next = m_waiting.lower_bound(Key(worker.firstPriority, 0));
    return next != m_waiting.end() && next->first.first <= worker.lastPriority ? next : m_waiting.end();
}

void RenderQueue::work(int index, Worker worker)
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return m_stopping || nextFor(worker) != m_waiting.end(); });
        if (m_stopping)
            return;
        const auto next = nextFor(worker);
        const JobId id = next->first.second;
        std::shared_ptr<Entry> entry = std::move(next->second);
        m_waiting.erase(next);
        m_running.emplace(id, entry);
        lock.unlock();
        entry->job(Run{id, index, entry->cancelled});
        lock.lock();
        m_running.erase(id);
        lock.unlock();
        entry.reset(); // what the job holds may take time to let go, or use the queue
        lock.lock();
    }
}

} // namespace inkory
