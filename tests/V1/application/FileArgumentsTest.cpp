#include "V1/application/FileArguments.h"

#include "support/Tools.h"

#include <QDir>

namespace inkory
{

TEST(FileArguments, ArePathsOfThisFolderOrAddresses)
{
    const QString here = QDir::currentPath();
    EXPECT_EQ(urlFromArgument(u"/a/b c#1%20?.pdf"_qs).toLocalFile(), u"/a/b c#1%20?.pdf"_qs);
    EXPECT_EQ(urlFromArgument(u"x/./b.pdf"_qs).toLocalFile(), here + u"/x/b.pdf"_qs);
    EXPECT_EQ(urlFromArgument(u":b.pdf"_qs).toLocalFile(), here + u"/:b.pdf"_qs);
    EXPECT_EQ(urlFromArgument(u"file:///a%20b.pdf"_qs).toLocalFile(), u"/a b.pdf"_qs);
    EXPECT_TRUE(urlFromArgument({}).isEmpty());

    const QTemporaryDir folder; // a file that exists is no address
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"a:"_qs));
    test::writeFile(folder.path() + u"/a:"_qs, u"b.pdf"_qs, "%PDF");
    const QString path = folder.path() + u"/a:"_qs;
    EXPECT_EQ(urlFromArgument(path + u"//b.pdf"_qs).toLocalFile(), path + u"/b.pdf"_qs);
}

} // namespace inkory
