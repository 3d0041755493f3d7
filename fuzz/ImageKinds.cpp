#include "Fuzzing.h"
#include "platform/core/ImageKind.h"

using namespace inkory;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr qsizetype decisive = 18; // no kind looks further
    const QByteArray file = fuzz::bytesFromFuzzer(data, size);
    const auto kind = imageKindOf(file);
    fuzz::require(imageKindOf(file.left(decisive)) == kind, "the beginning decides");
    if (!kind)
        return 0;
    fuzz::require(readableImageKinds().contains(*kind), "a kind is one that can be read");
    fuzz::require(!fileExtensionsOf(*kind).isEmpty() && !imageReaderName(*kind).isEmpty(), "a kind has names");
    for (const char *other : {"%PDF", "%!PS", "<?xml", "<svg", "#!", "PK", "\x1f\x8b"})
        fuzz::require(!file.startsWith(other), "what is no picture is none");
    return 0;
}
