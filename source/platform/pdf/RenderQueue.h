#pragma once

#include <QtGlobal>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace inkory
{

/// Runs jobs on worker threads of its own, the most urgent first and among equally urgent ones the oldest first. Unlike
/// with a QThreadPool, a worker can be kept free for urgent jobs, waiting jobs can be withdrawn and running ones be
/// asked to stop. Of the idle workers that could take a job the first one does, so that what a worker holds from its
/// former jobs is used again. May be used from any thread.
class RenderQueue
{
public:
    using JobId = quint64;

    /// What a running job knows about itself.
    struct Run
    {
        JobId id = 0;
        /// Which worker runs it, from 0. A worker runs one job at a time, so that what belongs to it needs no lock.
        int worker = 0;
        /// Becomes true when the job's result is no longer wanted.
        const std::atomic<bool> &cancelled;
    };
    /// Must not throw.
    using Job = std::function<void(const Run &)>;

    /// The priorities that one worker serves, both ends included; 0 is the most urgent.
    struct Worker
    {
        int firstPriority = 0;
        int lastPriority = 0;
    };

    explicit RenderQueue(const std::vector<Worker> &workers);
    RenderQueue(const RenderQueue &) = delete;
    RenderQueue &operator=(const RenderQueue &) = delete;
    /// Drops all waiting jobs, cancels the running ones and waits for them.
    ~RenderQueue();

    /// Drops all waiting jobs and tells the running ones that nobody wants their results, without waiting for them.
    void stop();
    /// Whether a job is being run.
    bool isBusy();

    /// A job whose priority no worker serves is never run. Answers the job's id, which is never 0 and never used again.
    JobId add(int priority, Job job);

    /// Withdraws a waiting job, which is then never run, or tells a running one through its flag. Done or unknown jobs
    /// are ignored.
    void cancel(JobId id);

private:
    struct Entry
    {
        Job job;
        std::atomic<bool> cancelled = false;
    };
    using Key = std::pair<int, JobId>;

    using Waiting = std::map<Key, std::shared_ptr<Entry>>;

    void work(int index);
    Waiting::iterator nextFor(int index);
    bool isForEarlierIdleWorker(int index, int priority) const;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Waiting m_waiting;
    std::map<JobId, std::shared_ptr<Entry>> m_running;
    JobId m_lastId = 0;
    bool m_stopping = false;
    std::vector<Worker> m_workers;
    std::vector<bool> m_isIdle;
    std::vector<std::thread> m_threads;
};

} // namespace inkory
