#pragma once

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What every target shares. A target calls a parser with the fuzzer's bytes and says what has to hold of the outcome.

namespace inkory::fuzz
{

/// Ends the program where a promise was not kept, which the fuzzer takes for a finding.
inline void require(bool isKept, const char *promise)
{
    if (isKept)
        return;
    std::fprintf(stderr, "NOT KEPT: %s\n", promise);
    std::abort();
}

/// The fuzzer's bytes, not copied: a reader that goes past their end is caught.
inline QByteArray bytesFromFuzzer(const std::uint8_t *data, std::size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
}

} // namespace inkory::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
