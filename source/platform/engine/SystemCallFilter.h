#pragma once

#include "platform/core/Result.h"

namespace inkory
{

/// From now on the process may do only what drawing, writing and answering takes: work with the memory and the
/// descriptors that it has, open files for reading, and start threads. Every other system call fails with EPERM; calls
/// of another architecture kill the process. There is no way back.
Result<void> filterSystemCalls();

} // namespace inkory
