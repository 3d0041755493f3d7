#include "platform/pdf/RenderQueue.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <optional>

using namespace inkory;

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
            m_done.set_value(run.cancelled);
        };
    }

    void release() { m_release = true; }
    /// Answers the worker; nothing if the job does not start.
    std::optional<int> waitUntilStarted() { return outcome(m_started); }
    /// Answers whether it ended because it was cancelled; nothing if it does not end.
    std::optional<bool> waitUntilDone() { return outcome(m_done); }

private:
    template <typename Value> static std::optional<Value> outcome(std::promise<Value> &promise)
    {
        std::future<Value> future = promise.get_future();
        return future.wait_for(5s) == std::future_status::ready ? std::optional(future.get()) : std::nullopt;
    }

    std::promise<int> m_started;
    std::promise<bool> m_done;
    std::atomic<bool> m_release = false;
};

/// A job that adds the number to those that ran. To be used with one worker only.
RenderQueue::Job noting(int number, std::vector<int> &numbers)
{
    return [number, &numbers](const RenderQueue::Run &) { numbers.push_back(number); };
}

TEST(RenderQueue, RunsUrgentJobsFirstOldOnesBeforeNewOnesAndWithdrawnOnesNever)
{
    HeldJob first, last;
    std::vector<int> numbers;
    RenderQueue queue({{0, 9}});
    queue.add(0, first.job());
    ASSERT_EQ(first.waitUntilStarted(), 0);
    queue.add(2, noting(4, numbers));
    queue.add(1, noting(3, numbers));
    const auto unwanted = queue.add(0, noting(0, numbers));
    queue.add(0, noting(1, numbers));
    queue.add(0, noting(2, numbers));
    queue.add(9, last.job());
    queue.cancel(unwanted);
    queue.cancel(12345);
    first.release();
    last.release();
    ASSERT_EQ(last.waitUntilDone(), false);
    EXPECT_THAT(numbers, ElementsAre(1, 2, 3, 4));
}

TEST(RenderQueue, KeepsAWorkerFreeForUrgentJobs)
{
    HeldJob slow, alsoSlow, urgent;
    RenderQueue queue({{0, 2}, {0, 0}});
    queue.add(2, slow.job());
    EXPECT_EQ(slow.waitUntilStarted(), 0);
    queue.add(2, alsoSlow.job());
    queue.add(0, urgent.job());
    EXPECT_EQ(urgent.waitUntilStarted(), 1);
    urgent.release();
    slow.release();
    EXPECT_EQ(alsoSlow.waitUntilStarted(), 0);
}

} // namespace
