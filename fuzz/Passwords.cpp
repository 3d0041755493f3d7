#include "platform/engine/Passwords.h"
#include "Fuzzing.h"

#include <set>

using namespace inkory;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr qsizetype maxBytes = 127;
    const QByteArray password = fuzz::bytesFromFuzzer(data, size);
    const std::vector<QByteArray> candidates = passwordCandidates(password);
    fuzz::require(!candidates.empty() && candidates.size() <= 3, "there are one to three forms");
    fuzz::require(candidates.front() == password.left(maxBytes), "the first form is the one that was typed");
    for (const QByteArray &candidate : candidates)
        fuzz::require(candidate.size() <= maxBytes, "no form is longer than a library can take");
    fuzz::require(std::set(candidates.begin(), candidates.end()).size() == candidates.size(), "no form comes twice");
    return 0;
}
