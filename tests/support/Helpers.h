#pragma once

#include <vector>

#include <sys/types.h>

namespace inkory::test
{

/// The helper processes that this process has started and that are still alive, the oldest first.
std::vector<pid_t> helperProcesses();

/// Sends each of them the signal.
void signalHelpers(int signal);

} // namespace inkory::test
