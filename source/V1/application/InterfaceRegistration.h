#pragma once

namespace inkory
{

/// Makes the interface descriptions of all windows known by name; called once before the first is asked for.
void registerApplicationInterfaceDescriptions();

} // namespace inkory
