#include "platform/pdf/RenderQueue.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>

namespace inkory
{

namespace
{

using testing::ElementsAre;
using namespace std::chrono_literals;

/// A job that says when it runs and ends when it is told to.
class HeldJob
{
public:
    RenderQueue::Job job()
    {
        return [this](const RenderQueue::Run &run) {
            m_started.set_value(run.worker);
            while (!m_release && !run.cancelled)
                std::this_thread::sleep_for(1ms);
            m_wasCancelled = run.cancelled.load();
            m_done.set_value();
        };
    }

    /// Answers the worker, or -1 if the job does not start.
    int waitUntilStarted()
    {
        std::future<int> started = m_started.get_future();
        return started.wait_for(5s) == std::future_status::ready ? started.get() : -1;
    }
    void release() { m_release = true; }
    bool waitUntilDone() { return m_done.get_future().wait_for(5s) == std::future_status::ready; }
    bool wasCancelled() const { return m_wasCancelled; }

private:
    std::promise<int> m_started;
    std::promise<void> m_done;
    std::atomic<bool> m_release = false;
    std::atomic<bool> m_wasCancelled = false;
};

/// Remembers in which order jobs ran.
class Journal
{
public:
    RenderQueue::Job job(int number)
    {
        return [this, number](const RenderQueue::Run &) {
            const std::lock_guard lock(m_mutex);
            m_numbers.push_back(number);
        };
    }
    std::vector<int> numbers()
    {
        const std::lock_guard lock(m_mutex);
        return m_numbers;
    }

private:
    std::mutex m_mutex;
    std::vector<int> m_numbers;
};

TEST(RenderQueue, RunsUrgentJobsFirstAndOldOnesBeforeNewOnes)
{
    HeldJob first;
    HeldJob last;
    Journal journal;
    RenderQueue queue({{0, 9}});
    queue.add(0, first.job());
    ASSERT_EQ(first.waitUntilStarted(), 0);
    queue.add(2, journal.job(4));
    queue.add(1, journal.job(3));
    queue.add(0, journal.job(1));
    queue.add(0, journal.job(2));
    queue.add(9, last.job());
    first.release();
    last.release();
    ASSERT_TRUE(last.waitUntilDone());
    EXPECT_THAT(journal.numbers(), ElementsAre(1, 2, 3, 4));
}

TEST(RenderQueue, KeepsAWorkerFreeForUrgentJobs)
{
    HeldJob slow;
    HeldJob alsoSlow;
    HeldJob urgent;
    RenderQueue queue({{0, 2}, {0, 0}});
    queue.add(2, slow.job());
    EXPECT_EQ(slow.waitUntilStarted(), 0);
    queue.add(2, alsoSlow.job());
    queue.add(0, urgent.job());
    EXPECT_EQ(urgent.waitUntilStarted(), 1);
    urgent.release();
    slow.release();
    EXPECT_EQ(alsoSlow.waitUntilStarted(), 0);
    alsoSlow.release();
    EXPECT_TRUE(alsoSlow.waitUntilDone());
}

TEST(RenderQueue, NeverRunsAJobThatWasCancelledWhileItWaited)
{
    HeldJob running;
    HeldJob last;
    Journal journal;
    RenderQueue queue({{0, 9}});
    queue.add(0, running.job());
    ASSERT_EQ(running.waitUntilStarted(), 0);
    const auto unwanted = queue.add(1, journal.job(1));
    queue.add(1, journal.job(2));
    queue.add(2, last.job());
    queue.cancel(unwanted);
    queue.cancel(12345);
    running.release();
    last.release();
    ASSERT_TRUE(last.waitUntilDone());
    EXPECT_THAT(journal.numbers(), ElementsAre(2));
}

TEST(RenderQueue, TellsARunningJobThatItIsCancelled)
{
    HeldJob job;
    HeldJob other;
    RenderQueue queue({{0, 0}, {0, 0}});
    const auto id = queue.add(0, job.job());
    ASSERT_NE(job.waitUntilStarted(), -1);
    queue.add(0, other.job());
    ASSERT_NE(other.waitUntilStarted(), -1);
    queue.cancel(id);
    ASSERT_TRUE(job.waitUntilDone());
    EXPECT_TRUE(job.wasCancelled());
    other.release();
    ASSERT_TRUE(other.waitUntilDone());
    EXPECT_FALSE(other.wasCancelled());
}

TEST(RenderQueue, EndsItsJobsWhenItIsDestroyed)
{
    HeldJob running;
    Journal journal;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> waitingJobHolds = held;
    {
        RenderQueue queue({{0, 0}});
        queue.add(0, running.job());
        ASSERT_EQ(running.waitUntilStarted(), 0);
        queue.add(0, [job = journal.job(1), held = std::move(held)](const RenderQueue::Run &run) { job(run); });
    }
    EXPECT_TRUE(running.wasCancelled());
    EXPECT_TRUE(journal.numbers().empty());
    EXPECT_TRUE(waitingJobHolds.expired());
}

TEST(RenderQueue, SurvivesManyThreadsThatAddAndCancel)
{
    std::atomic<int> runs = 0;
    std::atomic<int> kept = 0;
    {
        RenderQueue queue({{0, 2}, {0, 0}, {2, 3}});
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < 500; ++i) {
                    const auto id = queue.add(i % 3, [&runs](const RenderQueue::Run &) { ++runs; });
                    if (i % 2 == 0)
                        queue.cancel(id);
                    else
                        ++kept;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        HeldJob last;
        queue.add(2, last.job());
        last.release();
        ASSERT_TRUE(last.waitUntilDone());
        HeldJob lastUrgent;
        queue.add(1, lastUrgent.job());
        lastUrgent.release();
        ASSERT_TRUE(lastUrgent.waitUntilDone());
    }
    EXPECT_GE(runs, kept - 2); // what another worker was just running when the last job ended
    EXPECT_LE(runs, 2000);
}

} // namespace

} // namespace inkory
