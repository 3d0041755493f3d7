#include "platform/core/DurableFile.h"

#include "support/FileSizeLimit.h"
#include "support/Tools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

using namespace inkory;

namespace
{

class DurableFileTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const { test::writeFile(m_folder.path(), name, bytes); }
    QByteArray read(const QString &name) const { return test::readFile(path(name)); }
    QStringList entries() const
    {
        return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_folder;
};

TEST_F(DurableFileTest, NewFilesHaveTheWantedModeLessTheUmaskOldOnesKeepTheirs)
{
    const mode_t before = ::umask(027);
    EXPECT_TRUE(replaceFileDurably(path(u"plain"_qs), "x"));
    EXPECT_TRUE(replaceFileDurably(path(u"private"_qs), "x", 0600));
    write(u"old"_qs, "old");
    EXPECT_TRUE(QFile::setPermissions(path(u"old"_qs), QFile::Permissions::fromInt(0x6664)));
    EXPECT_TRUE(replaceFileDurably(path(u"old"_qs), "new", 0600));
    ::umask(before);
    // The first digit repeats the owner's.
    EXPECT_EQ(QFile::permissions(path(u"plain"_qs)).toInt(), 0x6640);
    EXPECT_EQ(QFile::permissions(path(u"private"_qs)).toInt(), 0x6600);
    EXPECT_EQ(QFile::permissions(path(u"old"_qs)).toInt(), 0x6664);
}

TEST_F(DurableFileTest, LinksStayAndTheirTargetIsReplacedOrCreated)
{
    write(u"target"_qs, "old");
    ASSERT_TRUE(QFile::link(u"target"_qs, path(u"link"_qs)));
    ASSERT_TRUE(QFile::link(u"missing"_qs, path(u"dangling"_qs)));
    ASSERT_TRUE(replaceFileDurably(path(u"link"_qs), "new"));
    ASSERT_TRUE(replaceFileDurably(path(u"dangling"_qs), "made"));
    EXPECT_EQ(read(u"target"_qs), "new");
    EXPECT_EQ(read(u"missing"_qs), "made");
    EXPECT_TRUE(QFileInfo(path(u"link"_qs)).isSymLink());
    EXPECT_TRUE(QFileInfo(path(u"dangling"_qs)).isSymLink());
}

TEST_F(DurableFileTest, UnusableTargetsAreNamedInTheErrorAndNothingIsWritten)
{
    write(u"file"_qs, "old");
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"folder"_qs));
    ASSERT_TRUE(QFile::link(u"circle"_qs, path(u"circle"_qs)));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"pipe"_qs)).constData(), 0600), 0);
    const QStringList before = entries();

    const std::pair<QString, QString> cases[] = {
        {u"none/f"_qs, u"The folder “%1/none” does not exist."_qs},
        {u"file/f"_qs, u"“%1/file” is not a folder."_qs},
        {u"folder"_qs, u"“%1/folder” is a folder."_qs},
        {u"circle"_qs, u"The link “%1/circle” leads nowhere."_qs},
        {u"pipe"_qs, u"“%1/pipe” is not a regular file."_qs},
        {u"a\uFFFDb"_qs, u"The file name “%1/a\uFFFDb” cannot be written as it is."_qs},
    };
    for (const auto &[name, message] : cases) {
        const Result<void> result = replaceFileDurably(path(name), "new");
        ASSERT_FALSE(result) << name.toStdString();
        EXPECT_EQ(result.error().message, QString(message).replace(u"%1"_qs, m_folder.path()));
        EXPECT_EQ(entries(), before);
    }
    EXPECT_EQ(read(u"file"_qs), "old");
}

TEST_F(DurableFileTest, AFullDiskLeavesTheOldFileAndNoLitterAndWritingCanBeTriedAgain)
{
    // Below and above the size that is still buffered when the writing call returns.
    for (const int size : {1001, 100'000}) {
        write(u"f"_qs, "old");
        const QByteArray bytes(size, 'x');
        {
            const test::FileSizeLimit limit(1000);
            const Result<void> result = replaceFileDurably(path(u"f"_qs), bytes);
            ASSERT_FALSE(result);
            EXPECT_EQ(result.error().message, u"The file is larger than is allowed here."_qs);
        }
        EXPECT_EQ(read(u"f"_qs), "old");
        EXPECT_EQ(entries(), QStringList({u"f"_qs}));
        EXPECT_TRUE(replaceFileDurably(path(u"f"_qs), bytes));
        EXPECT_EQ(read(u"f"_qs), bytes);
    }
}

} // namespace
