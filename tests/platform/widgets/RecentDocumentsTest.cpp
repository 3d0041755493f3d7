#include "platform/widgets/RecentDocuments.h"

#include "platform/core/UserDefaults.h"
#include "platform/widgets/RecentDocumentsFormat.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace inkory
{

namespace
{

QDateTime at(int day, int hour = 0)
{
    return {QDate(2030, 1, day), QTime(hour, 0), Qt::UTC};
}

QString entryXml(const QString &address, const QString &type, const QString &modified, const QString &more = {})
{
    return QStringLiteral("  <bookmark href=\"%1\" added=\"2029-01-01T00:00:00Z\" modified=\"%3\" "
                          "visited=\"2029-01-01T00:00:00Z\">\n"
                          "    <title>A &amp; B</title><info><metadata owner=\"http://freedesktop.org\">"
                          "<mime:mime-type type=\"%2\"/>%4<bookmark:applications>"
                          "<bookmark:application name=\"Other\" exec=\"&apos;other %u&apos;\" modified=\"%3\" "
                          "count=\"3\"/></bookmark:applications></metadata></info></bookmark>\n")
        .arg(address, type, modified, more);
}

QByteArray listXml(const QString &entries)
{
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xbel version=\"1.0\" "
                          "xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\" "
                          "xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\">\n%1</xbel>\n")
        .arg(entries)
        .toUtf8();
}

class RecentDocumentsTest : public ::testing::Test
{
protected:
    RecentDocumentsTest() { UserDefaults::setStandardFilePath(folder.filePath(QStringLiteral("settings.json"))); }

    QTemporaryDir folder;
    QString listPath = folder.filePath(QStringLiteral("data/recently-used.xbel"));

    QUrl makeFile(const QString &name, const QByteArray &bytes = "%PDF-1.7\n1 0 obj\n")
    {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return QUrl::fromLocalFile(file.fileName());
    }
    void writeList(const QByteArray &bytes)
    {
        QDir().mkpath(folder.filePath(QStringLiteral("data")));
        QFile file(listPath);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray list() const
    {
        QFile file(listPath);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString encoded(const QUrl &url) { return QString::fromLatin1(url.toEncoded(QUrl::FullyEncoded)); }
};

} // namespace

TEST_F(RecentDocumentsTest, ListsPdfFilesThatExistMostRecentFirst)
{
    const QUrl older = makeFile(QStringLiteral("older.pdf"));
    const QUrl newer = makeFile(QStringLiteral("neuer ä.pdf"));
    const QUrl picture = makeFile(QStringLiteral("picture.png"));
    const QUrl secret = makeFile(QStringLiteral("secret.pdf"));
    const QString pdf = QStringLiteral("application/pdf");
    writeList(listXml(
        entryXml(encoded(older), pdf, QStringLiteral("2030-01-01T00:00:00.123456Z")) +
        entryXml(encoded(newer), pdf, QStringLiteral("2030-01-02T00:00:00Z")) +
        entryXml(encoded(picture), QStringLiteral("image/png"), QStringLiteral("2030-01-03T00:00:00Z")) +
        entryXml(encoded(secret), pdf, QStringLiteral("2030-01-04T00:00:00Z"), QStringLiteral("<bookmark:private/>")) +
        entryXml(QStringLiteral("file:///gone.pdf"), pdf, QStringLiteral("2030-01-05T00:00:00Z")) +
        entryXml(QStringLiteral("smb://host/x.pdf"), pdf, QStringLiteral("2030-01-06T00:00:00Z"))));
    EXPECT_EQ(RecentDocuments(listPath).urls(), QList<QUrl>({newer, older}));
}

TEST_F(RecentDocumentsTest, ShowsFifteenAtMost)
{
    QString entries;
    for (int i = 1; i <= 20; ++i)
        entries += entryXml(encoded(makeFile(QStringLiteral("%1.pdf").arg(i))), QStringLiteral("application/pdf"),
                            QStringLiteral("2030-01-%1T00:00:00Z").arg(i, 2, 10, QLatin1Char('0')));
    writeList(listXml(entries));
    const QList<QUrl> urls = RecentDocuments(listPath).urls();
    ASSERT_EQ(urls.size(), 15);
    EXPECT_EQ(urls.first().fileName(), QStringLiteral("20.pdf"));
    EXPECT_EQ(urls.last().fileName(), QStringLiteral("6.pdf"));
}

TEST_F(RecentDocumentsTest, MakesTheListForItsOwnerOnly)
{
    const QUrl url = makeFile(QStringLiteral("a b.pdf"));
    RecentDocuments recent(listPath);
    recent.add(url, at(1));
    recent.waitForWriting();
    EXPECT_EQ(recent.urls(), QList<QUrl>({url}));
    EXPECT_EQ(QFile::permissions(listPath) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_TRUE(list().contains("a%20b.pdf"));
    const QList<RecentEntry> entries = readRecentEntries(list());
    ASSERT_EQ(entries.size(), 1);
    EXPECT_TRUE(entries.first().isOnlyOwn);
    EXPECT_EQ(entries.first().time, at(1));
}

TEST_F(RecentDocumentsTest, UpdatesAnEntryAndKeepsWhatOthersWrote)
{
    const QUrl url = makeFile(QStringLiteral("a.pdf"));
    const QUrl picture = makeFile(QStringLiteral("picture.png"));
    writeList(listXml(
        QStringLiteral("<!-- kept -->") +
        entryXml(encoded(url), QStringLiteral("application/octet-stream"), QStringLiteral("2029-06-01T00:00:00Z")) +
        entryXml(encoded(picture), QStringLiteral("image/png"), QStringLiteral("2029-06-01T00:00:00Z"))));
    RecentDocuments recent(listPath);
    recent.add(url, at(1));
    recent.add(url, at(2));
    recent.waitForWriting();

    const QByteArray bytes = list();
    EXPECT_EQ(bytes.count("<bookmark "), 2);
    EXPECT_EQ(bytes.count("name=\"Inkory\""), 1);
    EXPECT_TRUE(bytes.contains("<!-- kept -->"));
    EXPECT_EQ(bytes.count("<title>A &amp; B</title>"), 2);
    EXPECT_EQ(bytes.count("'other %u'") + bytes.count("&apos;other %u&apos;"), 2);
    const QList<RecentEntry> entries = readRecentEntries(bytes);
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries.at(0).mimeType, QStringLiteral("application/pdf"));
    EXPECT_EQ(entries.at(0).time, at(2));
    EXPECT_TRUE(entries.at(0).isOwn);
    EXPECT_FALSE(entries.at(0).isOnlyOwn);
    EXPECT_EQ(entries.at(1).mimeType, QStringLiteral("image/png"));
    EXPECT_FALSE(entries.at(1).isOwn);
}

TEST_F(RecentDocumentsTest, NeverTakesAnythingButPdfDocuments)
{
    RecentDocuments recent(listPath);
    recent.add(makeFile(QStringLiteral("signature.png"), QByteArray("\x89PNG\r\n\x1a\n", 8)), at(1));
    recent.add(makeFile(QStringLiteral("signature.pdf"), QByteArray("\x89PNG\r\n\x1a\n", 8)), at(1));
    recent.add(QUrl::fromLocalFile(folder.path()), at(1));
    recent.waitForWriting();
    EXPECT_FALSE(QFile::exists(listPath));
}

TEST_F(RecentDocumentsTest, LeavesADamagedListAlone)
{
    const QUrl url = makeFile(QStringLiteral("a.pdf"));
    for (const QByteArray &damaged :
         {listXml(entryXml(encoded(url), QStringLiteral("application/pdf"), QStringLiteral("2030-01-01T00:00:00Z")))
              .chopped(12),
          QByteArray("no list"), QByteArray("<other/>")}) {
        writeList(damaged);
        RecentDocuments recent(listPath);
        recent.add(url, at(2));
        recent.waitForWriting();
        EXPECT_EQ(list(), damaged);
    }
}

TEST_F(RecentDocumentsTest, ClearForgetsOwnEntriesAndHidesTheOthers)
{
    const QUrl own = makeFile(QStringLiteral("own.pdf"));
    const QUrl shared = makeFile(QStringLiteral("shared.pdf"));
    writeList(
        listXml(entryXml(encoded(shared), QStringLiteral("application/pdf"), QStringLiteral("2029-06-01T00:00:00Z"))));
    RecentDocuments recent(listPath);
    recent.add(own, at(1));
    recent.add(shared, at(1));
    recent.clear(at(2));
    recent.waitForWriting();
    EXPECT_TRUE(recent.urls().isEmpty());
    EXPECT_EQ(list().count("Inkory"), 0);
    EXPECT_EQ(list().count("name=\"Other\""), 1);
    EXPECT_FALSE(list().contains("own.pdf"));

    recent.add(own, at(3));
    recent.waitForWriting();
    EXPECT_EQ(recent.urls(), QList<QUrl>({own}));
}

} // namespace inkory
