#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QThreadPool>
#include <QUrl>

namespace inkory
{

/// The PDF documents of the list of recent files that all programs of the desktop share ("recently-used.xbel" in the
/// user's data folder). Never holds anything but PDF documents: what a person signs with is nobody else's business.
/// Reading is done at once; changes are written by a worker, durably and in order. Main thread only.
class RecentDocuments
{
public:
    static constexpr int maximumCount = 15;

    /// The list in this file; by default the desktop's.
    explicit RecentDocuments(QString filePath = standardFilePath());
    /// Waits until all changes are written.
    ~RecentDocuments();

    static QString standardFilePath();

    /// Most recent first, at most maximumCount, only local files that exist.
    QList<QUrl> urls() const;

    /// Registers the file as used now. Nothing happens (but a log line) if it is no PDF document by its content.
    void add(const QUrl &url, const QDateTime &time = QDateTime::currentDateTimeUtc());

    /// Empties the list as this program shows it, and takes what this program registered out of the shared one; the
    /// entries of other programs stay in the file.
    void clear(const QDateTime &time = QDateTime::currentDateTimeUtc());

    /// Blocks until all changes are written; for tests.
    void waitForWriting();

private:
    QString m_filePath;
    QThreadPool m_writer;
};

} // namespace inkory
