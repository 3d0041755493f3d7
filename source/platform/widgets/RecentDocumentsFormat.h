#pragma once

#include "platform/core/Result.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>

namespace inkory
{

/// One entry of the list of recent files that all programs of a desktop share.
struct RecentEntry
{
    QUrl url;
    QString mimeType;
    /// The latest time that the entry tells.
    QDateTime time;
    /// Meant only for the programs that have registered it.
    bool isPrivate = false;
    /// Whether this program has registered it, and whether it is the only one.
    bool isOwn = false;
    bool isOnlyOwn = false;

    bool operator==(const RecentEntry &) const = default;
};

/// What the bytes of the list ("recently-used.xbel") say, in their order. Bytes that are damaged give the entries
/// before the damage.
QList<RecentEntry> readRecentEntries(const QByteArray &bytes);

/// The list with a file registered for this program as a PDF document, added or brought up to date; all else stays.
/// Empty bytes are an empty list. Fails, so that nothing is lost, for a list that is damaged.
Result<QByteArray> recentListWithDocument(const QByteArray &bytes, const QUrl &url, const QDateTime &time);

/// The list without what this program has registered. Fails for a list that is damaged.
Result<QByteArray> recentListWithoutOwnDocuments(const QByteArray &bytes);

} // namespace inkory
