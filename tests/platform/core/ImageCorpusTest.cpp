#include "platform/core/Image.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace inkory
{
namespace
{

struct CorpusFile
{
    QString path;
    QString imageClass;
    QString expected;
};

/// The corpus's images, by its manifest: a table with a heading, columns parted by tabs.
QList<CorpusFile> corpusImages(const QString &folder)
{
    QFile manifest(folder + u"/MANIFEST.tsv"_qs);
    if (!manifest.open(QIODevice::ReadOnly))
        return {};
    const QStringList lines = QString::fromUtf8(manifest.readAll()).split(u'\n', Qt::SkipEmptyParts);
    const qsizetype expectedColumn = lines.front().split(u'\t').indexOf(u"expected"_qs);
    QList<CorpusFile> files;
    for (const QString &line : lines.sliced(1)) {
        const QStringList cells = line.split(u'\t');
        if (cells[1] == u"images-ok"_qs || cells[1] == u"images-bad"_qs)
            files << CorpusFile{folder + u'/' + cells[0], cells[1], cells[expectedColumn]};
    }
    return files;
}

long peakMegabytes()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST(ImageCorpus, GoodImagesLoadAndBadOnesAreRefusedWithinTheMemoryLimit)
{
    if (!qEnvironmentVariableIsSet("INKORY_CORPUS"))
        GTEST_SKIP() << "INKORY_CORPUS does not name the corpus's folder";
    const QList<CorpusFile> files = corpusImages(qEnvironmentVariable("INKORY_CORPUS"));
    ASSERT_FALSE(files.isEmpty());
    const long megabytesBefore = peakMegabytes();
    for (const CorpusFile &file : files) {
        const Result<ImagePtr> image = Image::fromFile(file.path);
        const bool dependsOnPlugins =
            file.expected.contains(u"plug-in"_qs) || file.expected.contains(u"or clear error"_qs);
        SCOPED_TRACE(file.path.toStdString() + (image ? "" : ": " + image.error().message.toStdString()));
        const bool mustLoad = file.imageClass == u"images-ok"_qs && !dependsOnPlugins;
        const bool mustFail = file.imageClass == u"images-bad"_qs && file.expected.startsWith(u"clear error; "_qs);
        EXPECT_TRUE(image || !mustLoad);
        EXPECT_TRUE(!image || !mustFail);
        EXPECT_TRUE(image ? !(*image)->pixels().isNull() && !(*image)->size().isEmpty()
                          : image.error().message.endsWith(u'.'));
    }
    EXPECT_LT(peakMegabytes() - megabytesBefore, 400);
}

} // namespace
} // namespace inkory
