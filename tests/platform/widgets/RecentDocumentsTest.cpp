#include "platform/widgets/RecentDocuments.h"

#include "platform/core/UserDefaults.h"
#include "platform/widgets/RecentDocumentsFormat.h"
#include "support/Tools.h"

#include <QFile>

namespace inkory
{

static constexpr auto pdf = "application/pdf";

static const auto at = [](int day) { return QDateTime(QDate(2030, 1, day), QTime(0, 0), Qt::UTC); };

/// What another program wrote.
static QString entryXml(const QUrl &url, const char *type, int day, const char *more = "")
{
    static const QString format = QStringLiteral(
        R"(<bookmark href="%1" modified="%3"><title>A &amp; B</title><info><metadata owner="http://freedesktop.org">
        <mime:mime-type type="%2"/>%4<bookmark:applications>
        <bookmark:application name="Other" exec="'other %u'" modified="%3" count="3"/>
        </bookmark:applications></metadata></info></bookmark>)");
    return format.arg(QString::fromLatin1(url.toEncoded(QUrl::FullyEncoded)), QLatin1String(type),
                      at(day).toString(Qt::ISODate), QLatin1String(more));
}

static QByteArray listXml(const QStringList &entries)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<xbel version="1.0" xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
      xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">)" +
           entries.join(u'\n').toUtf8() + "</xbel>\n";
}

class RecentDocumentsTest : public ::testing::Test
{
protected:
    RecentDocumentsTest() { UserDefaults::setStandardFilePath(folder.filePath(QStringLiteral("settings.json"))); }

    QUrl makeFile(const char *name, const QByteArray &bytes = "%PDF-1.7\n1 0 obj\n")
    {
        return QUrl::fromLocalFile(test::writeFile(folder.path(), QString::fromUtf8(name), bytes));
    }
    void writeList(const QByteArray &bytes) { test::writeFile(folder.path(), QStringLiteral("list.xbel"), bytes); }
    /// The list's bytes once everything is written.
    QByteArray list()
    {
        recent.waitForWriting();
        return test::readFile(listPath);
    }

    QTemporaryDir folder;
    QString listPath = folder.filePath(QStringLiteral("list.xbel"));
    RecentDocuments recent{listPath};
};

TEST_F(RecentDocumentsTest, ListsPdfFilesThatExistMostRecentFirst)
{
    const QUrl older = makeFile("older.pdf");
    const QUrl newer = makeFile("neuer ä.pdf");
    writeList(
        listXml({entryXml(older, pdf, 1), entryXml(newer, pdf, 2), entryXml(makeFile("picture.png"), "image/png", 3),
                 entryXml(makeFile("secret.pdf"), pdf, 4, "<bookmark:private/>"),
                 entryXml(QUrl(QStringLiteral("file:///gone.pdf")), pdf, 5),
                 entryXml(QUrl(QStringLiteral("smb://host/x.pdf")), pdf, 6)}));
    EXPECT_EQ(RecentDocuments(listPath).urls(), QList<QUrl>({newer, older}));
}

TEST_F(RecentDocumentsTest, NeverTakesImagesAndMakesTheListForItsOwnerOnly)
{
    const QByteArray image("\x89PNG\r\n\x1a\n", 8);
    recent.add(makeFile("signature.png", image), at(1));
    recent.add(makeFile("signature.pdf", image), at(1));
    recent.waitForWriting();
    EXPECT_FALSE(QFile::exists(listPath));

    recent.add(makeFile("a b.pdf"), at(1));
    EXPECT_TRUE(list().contains("a%20b.pdf"));
    EXPECT_FALSE(QFile::permissions(listPath) & (QFile::ReadGroup | QFile::ReadOther));
}

TEST_F(RecentDocumentsTest, UpdatesAnEntryAndKeepsWhatOthersWroteAlsoWhenCleared)
{
    const QUrl url = makeFile("a.pdf");
    writeList(listXml({QStringLiteral("<!-- kept -->"), entryXml(url, "application/octet-stream", 1),
                       entryXml(makeFile("picture.png"), "image/png", 1)}));
    recent.add(url, at(2));
    recent.add(url, at(3));
    EXPECT_EQ(list().count("name=\"Inkory\""), 1);
    EXPECT_TRUE(list().contains("<!-- kept -->"));
    EXPECT_EQ(list().count("<title>A &amp; B</title>"), 2);
    EXPECT_EQ(list().count("name=\"Other\""), 2);
    const QList<RecentEntry> entries = readRecentEntries(list());
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries.at(0).mimeType, QLatin1String(pdf));
    EXPECT_EQ(entries.at(0).time, at(3));
    EXPECT_TRUE(entries.at(0).isOwn);
    EXPECT_FALSE(entries.at(1).isOwn);

    const QUrl own = makeFile("own.pdf");
    recent.add(own, at(3));
    writeList(list().replace("</xbel>", entryXml(own, pdf, 3).toUtf8() + "</xbel>")); // and another program anew
    recent.clear(at(4));
    EXPECT_EQ(list().count("Inkory"), 0);
    EXPECT_EQ(list().count("own.pdf"), 1);
    EXPECT_EQ(list().count("name=\"Other\""), 3);
    EXPECT_TRUE(recent.urls().isEmpty());
}

TEST_F(RecentDocumentsTest, AddsWhatAnEntryLacksAndLeavesAloneWhatItCannotKeep)
{
    const QUrl url = makeFile("a.pdf");
    const QString address = QString::fromLatin1(url.toEncoded(QUrl::FullyEncoded));
    writeList(listXml({QStringLiteral("<bookmark href=\"%1\"><info><metadata/></info></bookmark>").arg(address)}));
    recent.add(url, at(2));
    (void)list();
    EXPECT_EQ(recent.urls(), QList<QUrl>{url});

    const QByteArray nested = listXml({QStringLiteral("<bookmark href=\"x\"><bookmark href=\"y\"/></bookmark>")});
    QByteArray unwritable = "<xbel xmlns:_=\"http://www.freedesktop.org/standards/desktop-bookmarks\"></xbel>";
    unwritable.replace('_', '\0'); // a name to the reader, but not where it is used
    const QByteArray shadowed = listXml({QStringLiteral("<bookmark href=\"%1\" xmlns:mime=\"x\"/>").arg(address)});
    for (const QByteArray &odd : {nested, unwritable, shadowed}) {
        writeList(odd);
        recent.add(url, at(2));
        EXPECT_EQ(list(), odd);
    }
}

} // namespace inkory
