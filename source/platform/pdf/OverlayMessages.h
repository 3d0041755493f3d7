#pragma once

#include "platform/pdf/EngineValues.h"

#include <span>

struct sd_bus_message;

// How the pieces that lie over pages cross between the processes, as a part of a WriteMessage. See EngineMessages.h.

namespace inkory
{

/// Appends four arrays: "aiaqaiad".
bool appendPieces(sd_bus_message *message, const std::vector<WritePage> &pages);

/// Reads the pieces, as many for each page as `counts` says, into the pages; there is one count for each. False for
/// values that the types do not promise.
bool readPieces(sd_bus_message *message, std::span<const qint32> counts, std::vector<WritePage> &pages);

} // namespace inkory
