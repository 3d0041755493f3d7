#include "Fuzzing.h"
#include "platform/core/SettingsFormat.h"

#include <cmath>

using namespace inkory;

// Settings that were read can be written, and read the same again; none is left in a form that its readers do not know.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto values = settingsFromBytes(fuzz::bytesFromFuzzer(data, size));
    if (!values)
        return 0;
    for (const QVariant &value : *values) {
        fuzz::require(value.typeId() != QMetaType::LongLong && value.typeId() != QMetaType::Int,
                      "numbers have one form");
        fuzz::require(value.typeId() != QMetaType::Double || std::isfinite(value.toDouble()), "numbers are finite");
    }
    const auto again = settingsFromBytes(settingsToBytes(*values));
    fuzz::require(again.has_value(), "what was written can be read");
    fuzz::require(*again == *values, "settings survive a restart");
    return 0;
}
