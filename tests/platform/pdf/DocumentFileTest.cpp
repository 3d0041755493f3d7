#include "platform/pdf/DocumentFile.h"
#include "support/Tools.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace inkory
{

namespace
{

using test::writeFile;

class DocumentFileTest : public testing::Test
{
protected:
    DocumentFileTest() { qputenv("XDG_STATE_HOME", (m_folder.path() + QStringLiteral("/state")).toLocal8Bit()); }

    QString path(const QString &name) const { return m_folder.path() + QLatin1Char('/') + name; }
    QStringList copies() const { return QDir(path(QStringLiteral("state/inkory/documents"))).entryList(QDir::Files); }
    static QString openingError(const QString &path)
    {
        const auto file = DocumentFile::open(path);
        return file ? QString() : file.error().message;
    }

    QTemporaryDir m_folder;
};

unsigned modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST_F(DocumentFileTest, SaysWhyAFileCannotBeOpened)
{
    EXPECT_EQ(openingError(path(QStringLiteral("no.pdf"))), QStringLiteral("\"no.pdf\" does not exist."));
    EXPECT_EQ(openingError(m_folder.path()),
              QStringLiteral("\"%1\" is a folder, not a document.").arg(QDir(m_folder.path()).dirName()));
    const QString pipe = path(QStringLiteral("pipe.pdf"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(openingError(pipe), QStringLiteral("\"pipe.pdf\" is not a file that can be opened."));
    const QString empty = writeFile(m_folder.path(), QStringLiteral("empty.pdf"), {});
    EXPECT_EQ(openingError(empty), QStringLiteral("\"empty.pdf\" is empty."));
    const QString huge = writeFile(m_folder.path(), QStringLiteral("huge.pdf"), "x");
    ASSERT_EQ(::truncate(QFile::encodeName(huge).constData(), 2147483648LL), 0);
    EXPECT_EQ(openingError(huge), QStringLiteral("\"huge.pdf\" is too large to be opened."));
    ASSERT_EQ(::truncate(QFile::encodeName(huge).constData(), 2147483647LL), 0);
    EXPECT_EQ(openingError(huge), QString());
}

TEST_F(DocumentFileTest, SaysThatAFileMayNotBeRead)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "nothing is forbidden to root";
    const QString secret = writeFile(m_folder.path(), QStringLiteral("secret.pdf"), "x");
    ASSERT_EQ(::chmod(QFile::encodeName(secret).constData(), 0), 0);
    EXPECT_EQ(openingError(secret), QStringLiteral("You are not allowed to read \"secret.pdf\"."));
}

TEST_F(DocumentFileTest, KeepsACopyThatNobodyElseCanReadOrChange)
{
    const QByteArray content = QByteArray("first version ").repeated(200'000);
    const QString source = writeFile(m_folder.path(), QStringLiteral("a.pdf"), content);
    {
        const auto file = DocumentFile::open(source);
        ASSERT_TRUE(file);
        EXPECT_EQ((*file)->size(), content.size());
        EXPECT_FALSE((*file)->hasPrivateCopy());
        ASSERT_TRUE((*file)->makePrivateCopy());
        ASSERT_TRUE((*file)->makePrivateCopy()) << "asked again";
        EXPECT_TRUE((*file)->hasPrivateCopy());
        ASSERT_EQ(copies().size(), 1);
        EXPECT_EQ(modeOf(path(QStringLiteral("state/inkory/documents/")) + copies().first()), 0600U);
        EXPECT_EQ(modeOf(path(QStringLiteral("state/inkory/documents"))), 0700U);
        QFile changed(source);
        ASSERT_TRUE(changed.open(QIODevice::WriteOnly | QIODevice::Truncate));
        changed.write("second");
        changed.close();
        EXPECT_EQ((*file)->bytes(), content);
    }
    EXPECT_TRUE(copies().isEmpty()) << "the copy is removed with the object";
}

TEST_F(DocumentFileTest, ReadsTheFileThatWasOpenedAfterItIsGone)
{
    const QString source = writeFile(m_folder.path(), QStringLiteral("a.pdf"), "the content");
    const auto file = DocumentFile::open(source);
    ASSERT_TRUE(file);
    ASSERT_TRUE(QFile::remove(source));
    writeFile(m_folder.path(), QStringLiteral("a.pdf"), "another file");
    EXPECT_EQ(test::readFile((*file)->descriptorPath()), "the content");
    ASSERT_TRUE((*file)->makePrivateCopy());
    EXPECT_EQ((*file)->bytes(), "the content");
}

TEST_F(DocumentFileTest, SaysWhyThereIsNoCopy)
{
    const QString source = writeFile(m_folder.path(), QStringLiteral("a.pdf"), "the content");
    writeFile(m_folder.path(), QStringLiteral("state"), "a file where the folder should be");
    const auto file = DocumentFile::open(source);
    ASSERT_TRUE(file);
    const Result<void> copied = (*file)->makePrivateCopy();
    ASSERT_FALSE(copied);
    EXPECT_TRUE(copied.error().message.startsWith(QStringLiteral("\"a.pdf\" could not be copied for reading: ")));
    EXPECT_FALSE((*file)->hasPrivateCopy());
}

TEST_F(DocumentFileTest, RefusesACopyOfAFileThatWasEmptiedMeanwhile)
{
    const QString source = writeFile(m_folder.path(), QStringLiteral("a.pdf"), "the content");
    const auto file = DocumentFile::open(source);
    ASSERT_TRUE(file);
    ASSERT_EQ(::truncate(QFile::encodeName(source).constData(), 0), 0);
    const Result<void> copied = (*file)->makePrivateCopy();
    ASSERT_FALSE(copied);
    EXPECT_EQ(copied.error().message, QStringLiteral("\"a.pdf\" is empty."));
    EXPECT_TRUE(copies().isEmpty());
}

} // namespace

} // namespace inkory
