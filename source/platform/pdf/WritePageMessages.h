#pragma once

#include "platform/pdf/EngineValues.h"

#include <optional>

struct sd_bus_message;

// How the pages to be written cross between the processes, as the first part of a WriteMessage. See EngineMessages.h.

namespace inkory
{

/// Appends seven arrays: "aiaiadaiaqaiad".
bool appendPages(sd_bus_message *message, const std::vector<WritePage> &pages);

/// Nothing for values that the types do not promise.
std::optional<std::vector<WritePage>> readPages(sd_bus_message *message);

} // namespace inkory
