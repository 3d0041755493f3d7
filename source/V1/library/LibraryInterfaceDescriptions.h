#pragma once

namespace inkory
{

/// Makes the interface descriptions of the signature library known by name; called once before the first is asked for.
void registerLibraryInterfaceDescriptions();

} // namespace inkory
