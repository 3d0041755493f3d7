#include "platform/widgets/WaitingPages.h"

#include <algorithm>

namespace inkory
{

namespace
{

constexpr qint64 patienceMilliseconds = 500;
// Pages that became overdue within this time are told of in one frame.
constexpr qint64 toleranceMilliseconds = 50;

} // namespace

WaitingPages::WaitingPages(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &WaitingPages::checkWaits);
}

bool WaitingPages::isOverdue(int pageIndex)
{
    const auto [found, isNew] = m_waits.try_emplace(pageIndex);
    Wait &wait = found->second;
    wait.isSeen = true;
    if (isNew) {
        wait.since.start();
        if (!m_timer.isActive())
            m_timer.start(static_cast<int>(patienceMilliseconds));
    }
    return wait.isOverdue;
}

void WaitingPages::endFrame()
{
    std::erase_if(m_waits, [](const auto &page) { return !page.second.isSeen; });
    for (auto &[index, wait] : m_waits)
        wait.isSeen = false;
}

void WaitingPages::checkWaits()
{
    bool hasMore = false;
    qint64 longest = -1; // of those that are not overdue
    for (auto &[index, wait] : m_waits) {
        if (wait.isOverdue)
            continue;
        const qint64 elapsed = wait.since.elapsed();
        wait.isOverdue = elapsed + toleranceMilliseconds >= patienceMilliseconds;
        hasMore = hasMore || wait.isOverdue;
        if (!wait.isOverdue)
            longest = std::max(longest, elapsed);
    }
    if (longest >= 0)
        m_timer.start(static_cast<int>(patienceMilliseconds - longest));
    if (hasMore)
        Q_EMIT becameOverdue();
}

} // namespace inkory
