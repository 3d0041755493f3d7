#include "platform/engine/FoldedText.h"
#include "Fuzzing.h"

using namespace inkory;

// The first byte says how long the query is, which stands before the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QString all = QString::fromUtf8(fuzz::bytesFromFuzzer(data + 1, size - 1));
    const QString query = all.left(data[0] % 8);
    const QString text = all.mid(query.size());
    const FoldedText folded(text);
    const FoldedText foldedQuery(query);
    for (const auto divided : {FoldedText::DividedWord::WithHyphen, FoldedText::DividedWord::WithoutHyphen})
        for (const FoldedText::Range &range : FoldedText(text, divided).occurrencesOf(foldedQuery, 1))
            fuzz::require(range.begin >= 0 && range.begin < range.end && range.end <= text.size(),
                          "ranges are in the text, however words are divided");
    constexpr qsizetype most = 50;
    const auto found = folded.occurrencesOf(foldedQuery, most);
    fuzz::require(static_cast<qsizetype>(found.size()) <= most, "no more is found than is asked for");
    fuzz::require(found.empty() || !foldedQuery.isBlank(), "nothing blank is found");
    qsizetype least = 0;
    for (const FoldedText::Range &range : found) {
        fuzz::require(range.begin >= least && range.begin < range.end && range.end <= text.size(),
                      "ranges are in the text, and in their order");
        const FoldedText part(QStringView(text).sliced(range.begin, range.end - range.begin));
        fuzz::require(part.folded().contains(foldedQuery.folded().trimmed()), "what was found is there");
        least = range.end;
    }
    const bool isThere = folded.folded().contains(foldedQuery.folded()) && !foldedQuery.isBlank();
    fuzz::require(isThere == !found.empty(), "what is there is found");
    fuzz::require(FoldedText(folded.folded()).folded() == folded.folded(), "what is folded stays as it is");
    return 0;
}
