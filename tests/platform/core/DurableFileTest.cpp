#include "platform/core/DurableFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace inkory
{
namespace
{

class DurableFileTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    unsigned mode(const QString &name) const
    {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(path(name)).constData(), &status), 0);
        return status.st_mode & 07777;
    }
    QStringList entries() const
    {
        return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_folder;
};

TEST_F(DurableFileTest, CreatesAndReplacesAndLeavesNothingElse)
{
    const QByteArray large(3'000'000, 'x');
    ASSERT_TRUE(replaceFileDurably(path(u"f"_qs), large));
    EXPECT_EQ(read(u"f"_qs), large);
    ASSERT_TRUE(replaceFileDurably(path(u"f"_qs), "short"));
    EXPECT_EQ(read(u"f"_qs), "short");
    ASSERT_TRUE(replaceFileDurably(path(u"f"_qs), {}));
    EXPECT_EQ(read(u"f"_qs), "");
    EXPECT_EQ(entries(), QStringList({u"f"_qs}));
}

TEST_F(DurableFileTest, NewFilesHaveTheWantedModeLessTheUmaskOldOnesKeepTheirs)
{
    const mode_t before = ::umask(027);
    EXPECT_TRUE(replaceFileDurably(path(u"plain"_qs), "x"));
    EXPECT_TRUE(replaceFileDurably(path(u"private"_qs), "x", 0600));
    write(u"old"_qs, "old");
    EXPECT_EQ(::chmod(QFile::encodeName(path(u"old"_qs)).constData(), 0664), 0);
    EXPECT_TRUE(replaceFileDurably(path(u"old"_qs), "new", 0600));
    ::umask(before);
    EXPECT_EQ(mode(u"plain"_qs), 0640U);
    EXPECT_EQ(mode(u"private"_qs), 0600U);
    EXPECT_EQ(mode(u"old"_qs), 0664U);
}

TEST_F(DurableFileTest, LinksStayAndTheirTargetIsReplacedOrCreated)
{
    write(u"target"_qs, "old");
    ASSERT_TRUE(QFile::link(u"target"_qs, path(u"inner"_qs)));
    ASSERT_TRUE(QFile::link(u"inner"_qs, path(u"outer"_qs)));
    ASSERT_TRUE(QFile::link(u"missing"_qs, path(u"dangling"_qs)));
    ASSERT_TRUE(replaceFileDurably(path(u"outer"_qs), "new"));
    ASSERT_TRUE(replaceFileDurably(path(u"dangling"_qs), "made"));
    EXPECT_EQ(read(u"target"_qs), "new");
    EXPECT_EQ(read(u"missing"_qs), "made");
    for (const QString &name : {u"inner"_qs, u"outer"_qs, u"dangling"_qs})
        EXPECT_TRUE(QFileInfo(path(name)).isSymLink()) << name.toStdString();
}

TEST_F(DurableFileTest, UserAttributesStay)
{
    write(u"f"_qs, "old");
    const QByteArray name = QFile::encodeName(path(u"f"_qs));
    if (::setxattr(name.constData(), "user.label", "red", 3, 0) != 0)
        GTEST_SKIP() << "the file system has no user attributes";
    ASSERT_TRUE(replaceFileDurably(path(u"f"_qs), "new"));
    char value[4] = {};
    EXPECT_EQ(::getxattr(name.constData(), "user.label", value, sizeof(value)), 3);
    EXPECT_STREQ(value, "red");
}

struct RefusedName
{
    const char *what;
    QString name;
    QString expected; // %1 is the test's folder
};

class RefusedTarget : public DurableFileTest, public ::testing::WithParamInterface<RefusedName>
{
};

TEST_P(RefusedTarget, IsNamedInTheErrorAndNothingIsWritten)
{
    write(u"file"_qs, "old");
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"folder"_qs));
    ASSERT_TRUE(QFile::link(u"circle"_qs, path(u"circle"_qs)));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(u"pipe"_qs)).constData(), 0600), 0);
    const QStringList before = entries();

    const Result<void> result = replaceFileDurably(path(GetParam().name), "new");
    ASSERT_FALSE(result);
    QString expected = GetParam().expected;
    EXPECT_EQ(result.error().message, expected.replace(u"%1"_qs, m_folder.path()));
    EXPECT_EQ(entries(), before);
    EXPECT_EQ(read(u"file"_qs), "old");
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedTarget,
    ::testing::Values(
        RefusedName{"InMissingFolder", u"none/f"_qs, u"The folder “%1/none” does not exist."_qs},
        RefusedName{"BelowFile", u"file/f"_qs, u"“%1/file” is not a folder."_qs},
        RefusedName{"Folder", u"folder"_qs, u"“%1/folder” is a folder."_qs},
        RefusedName{"Circle", u"circle"_qs, u"The link “%1/circle” leads nowhere."_qs},
        RefusedName{"Pipe", u"pipe"_qs, u"“%1/pipe” is not a regular file."_qs},
        RefusedName{"LongName", QString(256, u'n'), u"The file name “"_qs + QString(256, u'n') + u"” is too long."_qs},
        RefusedName{"BrokenEncoding", u"a\uFFFDb"_qs, u"The file name “%1/a\uFFFDb” cannot be written as it is."_qs},
        RefusedName{"LoneSurrogate", QString(QChar(0xD800)),
                    u"The file name “%1/\xD800” cannot be written as it is."_qs}),
    [](const auto &each) { return each.param.what; });

/// Stops files of this process from growing beyond a size while it lives.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limited{bytes, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }

private:
    rlimit m_old = {};
    void (*m_oldHandler)(int);
};

class FailingWrite : public DurableFileTest, public ::testing::WithParamInterface<int>
{
};

TEST_P(FailingWrite, LeavesTheOldFileAndNoLitterAndCanBeTriedAgain)
{
    write(u"f"_qs, "old");
    const QByteArray bytes(GetParam(), 'x');
    {
        const FileSizeLimit limit(1000);
        const Result<void> result = replaceFileDurably(path(u"f"_qs), bytes);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().message, u"The file is larger than is allowed here."_qs);
    }
    EXPECT_EQ(read(u"f"_qs), "old");
    EXPECT_EQ(entries(), QStringList({u"f"_qs}));
    EXPECT_TRUE(replaceFileDurably(path(u"f"_qs), bytes));
    EXPECT_EQ(read(u"f"_qs), bytes);
}

// Below and above the size that is still buffered when the writing call returns.
INSTANTIATE_TEST_SUITE_P(Sizes, FailingWrite, ::testing::Values(1001, 100'000));

} // namespace
} // namespace inkory
