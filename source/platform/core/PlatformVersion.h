#pragma once

namespace inkory
{

/// The desktop platform's version number, for code that behaves differently on early releases. Above every release that
/// the code asks about unless a test sets another.
double platformVersion();
void setPlatformVersion(double version);

} // namespace inkory
