#pragma once

#include "platform/engine/QpdfStructure.h"

#include <QVariant>

#include <exception>
#include <functional>

// How the drawing library is called: it throws when it runs out of memory on a hostile page, for instance, and asks now
// and then whether to go on.

namespace inkory
{

/// What the function answers; `failed`, and a line in the log, where it throws.
template <class Value, class Function> Value guarded(const char *failure, Value failed, Function function)
{
    try {
        return function();
    } catch (const std::exception &exception) {
        logFailure(failure, exception);
        return failed;
    }
}

/// Whether a job is to be given up, and has been told so once.
struct Cancellation
{
    const std::function<bool()> &ask;
    bool isSeen = false;

    bool check() { return isSeen = isSeen || ask(); }
};

/// For the library, which carries the Cancellation as a pointer in the payload.
inline bool shouldAbort(const QVariant &payload)
{
    return payload.value<Cancellation *>()->check();
}

} // namespace inkory
