#include "platform/core/PlatformVersion.h"

namespace inkory
{

namespace
{

double currentVersion = 2000;

} // namespace

double platformVersion()
{
    return currentVersion;
}

void setPlatformVersion(double version)
{
    currentVersion = version;
}

} // namespace inkory
