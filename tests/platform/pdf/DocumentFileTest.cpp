#include "platform/pdf/DocumentFile.h"
#include "support/Tools.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

using namespace inkory;

namespace
{

struct DocumentFileTest : testing::Test
{
    DocumentFileTest() { qputenv("XDG_STATE_HOME", m_folder.filePath(QStringLiteral("state")).toLocal8Bit()); }

    QTemporaryDir m_folder;
    const QDir m_copies = QDir(m_folder.filePath(QStringLiteral("state/inkory/documents")));
};

QString openingError(const QString &path)
{
    const auto file = DocumentFile::open(path);
    return file ? QString() : file.error().message;
}

TEST_F(DocumentFileTest, SaysWhyAFileCannotBeOpened)
{
    EXPECT_EQ(openingError(m_folder.filePath(QStringLiteral("no.pdf"))), QStringLiteral("\"no.pdf\" does not exist."));
    EXPECT_EQ(openingError(m_folder.path()),
              QStringLiteral("\"%1\" is a folder, not a document.").arg(QDir(m_folder.path()).dirName()));
    const QString pipe = m_folder.filePath(QStringLiteral("pipe.pdf"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(openingError(pipe), QStringLiteral("\"pipe.pdf\" is not a file that can be opened."));
    const QString file = test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), {});
    EXPECT_EQ(openingError(file), QStringLiteral("This file is empty. Copy or download it again."));
    ASSERT_TRUE(QFile::resize(file, 2147483648LL));
    EXPECT_EQ(openingError(file),
              QStringLiteral("\"a.pdf\" is too large: files of up to 2 GB can be opened. Split it, and open a part."));
}

QByteArray contentOf(const DocumentFile &file)
{
    const auto [descriptor, size] = file.content();
    QByteArray bytes(size, '?');
    EXPECT_EQ(::pread(descriptor, bytes.data(), static_cast<std::size_t>(size), 0), size);
    return bytes;
}

TEST_F(DocumentFileTest, KeepsACopyThatNobodyElseCanReadOrChange)
{
    const QString source = test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), "first version");
    {
        const auto file = DocumentFile::open(source);
        ASSERT_TRUE(file);
        ASSERT_TRUE(QFile::rename(source, source + u'~'));
        test::writeFile(m_folder.path(), QStringLiteral("a.pdf"), "another file");
        EXPECT_EQ(contentOf(**file), "first version");
        ASSERT_TRUE((*file)->makePrivateCopy());
        ASSERT_TRUE((*file)->makePrivateCopy()) << "asked again";
        const QStringList copies = m_copies.entryList(QDir::Files);
        ASSERT_EQ(copies.size(), 1);
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        EXPECT_FALSE(QFile::permissions(m_copies.filePath(copies.first())) & others);
        EXPECT_FALSE(QFile::permissions(m_copies.path()) & others);
        test::writeFile(m_folder.path(), QStringLiteral("a.pdf~"), "second"); // into the file that was opened
        EXPECT_EQ(contentOf(**file), "first version");
    }
    EXPECT_TRUE(m_copies.isEmpty()) << "the copy is removed with the object";
}

} // namespace
