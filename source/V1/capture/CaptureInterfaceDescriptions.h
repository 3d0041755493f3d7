#pragma once

namespace inkory
{

/// Makes the interface description of the signature window known by its name.
void registerCaptureInterfaceDescriptions();

} // namespace inkory
