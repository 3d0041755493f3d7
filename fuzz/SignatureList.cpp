#include "Fuzzing.h"
#include "V1/library/SignatureListStore.h"

using namespace inkory;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto copy = SignatureListStore::copyFromBytes(fuzz::bytesFromFuzzer(data, size));
    if (!copy)
        return 0;
    fuzz::require(!copy->contents.urls.contains(QString()), "what names no file is no entry");
    const auto again = SignatureListStore::copyFromBytes(SignatureListStore::bytesOfCopy(*copy));
    fuzz::require(again == copy, "the list survives being written");
    return 0;
}
