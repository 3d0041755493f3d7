#include "platform/engine/ContentBalance.h"
#include "Fuzzing.h"

#include <qpdf/QPDFObjectHandle.hh>

using namespace inkory;

// Content without its unmatched restores leaves the same behind as before, but for those.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string content(reinterpret_cast<const char *>(data), size);
    const ContentBalance balance = contentBalance(content);
    fuzz::require(balance.unmatchedRestores >= 0 && balance.openSaves >= 0, "counts are not negative");
    const auto names = namesInContent(content);
    for (const std::string &name : names)
        fuzz::require(name.starts_with('/'), "names begin with a slash");

    const std::string cleaned = withoutUnmatchedRestores(content);
    if (!balance.isSound)
        return 0; // such content is never put between a save and a restore
    const ContentBalance after = contentBalance(cleaned);
    fuzz::require(after.isSound, "sound content stays sound");
    fuzz::require(after.unmatchedRestores == 0, "no unmatched restore is left");
    fuzz::require(after.openSaves == balance.openSaves && after.isTextOpen == balance.isTextOpen,
                  "what is left open stays the same");
    fuzz::require(namesInContent(cleaned) == names, "names stay");
    fuzz::require(withoutUnmatchedRestores(cleaned) == cleaned, "nothing is left to take out");
    return 0;
}
