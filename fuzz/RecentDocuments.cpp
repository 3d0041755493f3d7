#include "Fuzzing.h"
#include "platform/widgets/RecentDocumentsFormat.h"

#include <algorithm>

using namespace inkory;

namespace
{

template <class Predicate> QList<RecentEntry> entriesThat(const QList<RecentEntry> &entries, Predicate predicate)
{
    QList<RecentEntry> kept;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(kept), predicate);
    return kept;
}

void checkClearing(const QByteArray &list)
{
    const Result<QByteArray> cleared = recentListWithoutOwnDocuments(list);
    if (!cleared)
        return; // nothing is lost that way
    const auto before = readRecentEntries(list);
    const auto after = readRecentEntries(*cleared);
    const auto isForeign = [](const RecentEntry &entry) { return !entry.isOwn; };
    fuzz::require(std::all_of(after.begin(), after.end(), isForeign), "clearing takes out what the program registered");
    const auto isAlsoForeign = [](const RecentEntry &entry) { return !entry.isOnlyOwn; };
    fuzz::require(after.size() == entriesThat(before, isAlsoForeign).size(), "clearing keeps what others registered");
}

} // namespace

// A document that is registered is in the list, once; the entries of other programs stay as they are.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QUrl url(QStringLiteral("file:///a%20b.pdf"));
    static const QDateTime time(QDate(2500, 1, 2), QTime(3, 4, 5, 6), Qt::UTC);
    const QByteArray list = fuzz::bytesFromFuzzer(data, size);
    const auto before = readRecentEntries(list);
    for (const RecentEntry &entry : before)
        fuzz::require(entry.isOwn || !entry.isOnlyOwn, "what is only ours is ours");

    const Result<QByteArray> added = recentListWithDocument(list, url, time);
    if (!added)
        return 0;
    const auto after = readRecentEntries(*added);
    const auto isOurs = [](const RecentEntry &entry) { return entry.url == url; };
    const auto isOther = [](const RecentEntry &entry) { return entry.url != url; };
    const auto ours = std::find_if(after.begin(), after.end(), isOurs);
    fuzz::require(ours != after.end(), "a document that was registered is in the list");
    fuzz::require(ours->isOwn && ours->mimeType == QStringLiteral("application/pdf") && ours->time >= time,
                  "a document that was registered is ours, a PDF document, and used now");
    fuzz::require(entriesThat(before, isOther) == entriesThat(after, isOther), "other entries stay");

    const Result<QByteArray> addedAgain = recentListWithDocument(*added, url, time);
    fuzz::require(addedAgain && readRecentEntries(*addedAgain) == after, "registering twice adds nothing");
    checkClearing(*added);
    return 0;
}
