#include "platform/widgets/RecentDocuments.h"

#include "platform/core/DisplayText.h"
#include "platform/core/DurableFile.h"
#include "platform/core/Log.h"
#include "platform/core/UserDefaults.h"
#include "platform/widgets/RecentDocumentsFormat.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStandardPaths>

#include <algorithm>
#include <functional>
#include <utility>

namespace inkory
{

namespace
{

const QString pdfType = QStringLiteral("application/pdf");
const QString clearedKey = QStringLiteral("RECENT_DOCUMENTS_CLEARED");
/// A list of this size holds some 50,000 entries; what is larger is no such list.
constexpr qint64 maximumListBytes = 32LL * 1024 * 1024;
/// The list tells what a person reads.
constexpr unsigned listMode = 0600;

Result<QByteArray> readList(const QString &filePath)
{
    QFile file(filePath);
    if (!file.exists())
        return QByteArray();
    if (!file.open(QIODevice::ReadOnly) || file.size() > maximumListBytes)
        return Error{QStringLiteral("%1 cannot be read").arg(displayable(filePath))};
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return Error{QStringLiteral("%1 cannot be read: %2").arg(displayable(filePath), file.errorString())};
    return bytes;
}

Result<void> changeList(const QString &filePath, const std::function<Result<QByteArray>(const QByteArray &)> &change)
{
    const Result<QByteArray> bytes = readList(filePath);
    if (!bytes)
        return bytes.error();
    const Result<QByteArray> changed = change(*bytes);
    if (!changed)
        return changed.error();
    QDir().mkpath(QFileInfo(filePath).path());
    return replaceFileDurably(filePath, *changed, listMode);
}

void changeListLoggingFailure(const QString &filePath,
                              const std::function<Result<QByteArray>(const QByteArray &)> &change)
{
    if (const Result<void> outcome = changeList(filePath, change); !outcome)
        logLine(QStringLiteral("recent documents: %1").arg(outcome.error().message));
}

bool isPdfFile(const QUrl &url)
{
    return url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile() &&
           QMimeDatabase().mimeTypeForFile(url.toLocalFile(), QMimeDatabase::MatchContent).name() == pdfType;
}

} // namespace

RecentDocuments::RecentDocuments(QString filePath) : m_filePath(std::move(filePath))
{
    m_writer.setMaxThreadCount(1); // in order
}

RecentDocuments::~RecentDocuments()
{
    waitForWriting();
}

QString RecentDocuments::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/recently-used.xbel");
}

QList<QUrl> RecentDocuments::urls() const
{
    const Result<QByteArray> bytes = readList(m_filePath);
    if (!bytes) {
        logLine(QStringLiteral("recent documents: %1").arg(bytes.error().message));
        return {};
    }
    const auto cleared =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(UserDefaults::standard().number(clearedKey)));
    QList<RecentEntry> entries = readRecentEntries(*bytes);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const RecentEntry &a, const RecentEntry &b) { return a.time > b.time; });

    QList<QUrl> urls;
    for (const RecentEntry &entry : std::as_const(entries)) {
        if (urls.size() == maximumCount)
            break;
        const bool isForUs = entry.mimeType == pdfType && (!entry.isPrivate || entry.isOwn) && entry.time > cleared;
        if (isForUs && entry.url.isLocalFile() && !urls.contains(entry.url) &&
            QFileInfo(entry.url.toLocalFile()).isFile())
            urls.append(entry.url);
    }
    return urls;
}

void RecentDocuments::add(const QUrl &url, const QDateTime &time)
{
    m_writer.start([filePath = m_filePath, url, time] {
        if (!isPdfFile(url))
            return logLine(
                QStringLiteral("recent documents: %1 is no PDF document").arg(displayable(url.toDisplayString())));
        changeListLoggingFailure(filePath,
                                 [&](const QByteArray &bytes) { return recentListWithDocument(bytes, url, time); });
    });
}

void RecentDocuments::clear(const QDateTime &time)
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setNumber(clearedKey, static_cast<double>(time.toMSecsSinceEpoch()));
    if (const Result<void> stored = defaults.synchronize(); !stored)
        logLine(QStringLiteral("recent documents: %1").arg(stored.error().message));
    m_writer.start([filePath = m_filePath] {
        if (QFileInfo::exists(filePath))
            changeListLoggingFailure(filePath, recentListWithoutOwnDocuments);
    });
}

void RecentDocuments::waitForWriting()
{
    m_writer.waitForDone();
}

} // namespace inkory
