#include "platform/pdf/DocumentFile.h"
#include "platform/pdf/DocumentWriter.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/WriterTestFiles.h"
#include "support/Tools.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <optional>

namespace inkory
{

namespace
{

/// What became of one file of the corpus.
struct Tried
{
    QString message;
    int drawnPages = 0;
    bool firstPageDrawn = false;
    FileStructure structure;
    bool sizesAgree = false;
};

Tried tryFile(const QString &path, const QByteArray &password)
{
    Tried tried;
    const auto file = DocumentFile::open(path);
    if (!file) {
        tried.message = file.error().message;
        return tried;
    }
    EXPECT_TRUE((*file)->makePrivateCopy());
    const auto source = makePageSource();
    std::optional<OpenOutcome> outcome;
    source->open(*file, password, [&](const OpenOutcome &answer) { outcome = answer; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return outcome.has_value(); }, 20'000));
    tried.structure = makeDocumentWriter()->readStructure((*file)->bytes(), password);
    tried.message = outcome ? outcome->message : QString();
    if (!outcome || outcome->state != OpenOutcome::State::Open)
        return tried;
    tried.drawnPages = outcome->pageCount;
    std::optional<bool> drawn;
    source->draw({0, 0, 1, {0, 0, 200, 200}}, DrawPriority::Visible, [&](const auto &image) { drawn = bool(image); });
    std::optional<std::vector<QSizeF>> sizes;
    source->measureAllPages([&](const auto &answer) { sizes = answer; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return drawn && sizes; }, 20'000));
    tried.firstPageDrawn = drawn.value_or(false);
    tried.sizesAgree = sizes && sizes->size() == tried.structure.pages.size();
    for (std::size_t i = 0; tried.sizesAgree && i < sizes->size(); ++i) {
        const PageGeometry &page = tried.structure.pages[i];
        const QSizeF difference = shownSize(page.cropBox, page.rotation) - (*sizes)[i];
        tried.sizesAgree = std::abs(difference.width()) <= 1 && std::abs(difference.height()) <= 1;
    }
    return tried;
}

// Whether a stamp on the first page can be written; the rest of the writer's promises is its own check.
bool canBeStamped(const QString &path, const FileStructure &structure, const QByteArray &password)
{
    if (!structure.cannotWriteReason.isEmpty() || structure.pages.empty())
        return false;
    const PageRect box = structure.pages[0].cropBox;
    const WriteRequest request =
        test::stampRequest(test::readFile(path), 0, {box.x, box.y, box.width / 10, box.height / 10}, password);
    const auto written = makeDocumentWriter()->write(request);
    EXPECT_TRUE(written) << path.toStdString();
    return bool(written);
}

/// The files of one class in a folder of PDF files to be tried, named by the environment variable INKORY_CORPUS: each
/// is a line with tabs in MANIFEST.tsv (file, class, ..., password in the ninth column).
std::vector<std::pair<QString, QByteArray>> filesOfClass(const QString &corpus, const QByteArray &wanted)
{
    std::vector<std::pair<QString, QByteArray>> files;
    QFile manifest(corpus + QStringLiteral("/MANIFEST.tsv"));
    EXPECT_TRUE(manifest.open(QIODevice::ReadOnly));
    while (!manifest.atEnd()) {
        const QByteArrayList columns = manifest.readLine().chopped(1).split('\t');
        const QString path = corpus + QLatin1Char('/') + QString::fromUtf8(columns[0]);
        if (columns.size() > 8 && columns[1] == wanted && QFile::exists(path))
            files.emplace_back(path, columns[8]);
    }
    return files;
}

class EngineCorpus : public testing::TestWithParam<const char *>
{
};

// No crash and no hang for any file; a table of what was found, for the person who looks.
TEST_P(EngineCorpus, IsReadDrawnAndWritten)
{
    const QString corpus = qEnvironmentVariable("INKORY_CORPUS");
    if (corpus.isEmpty())
        GTEST_SKIP() << "INKORY_CORPUS names no folder";
    int opened = 0;
    int drawn = 0;
    int agreeing = 0;
    int stamped = 0;
    const auto files = filesOfClass(corpus, GetParam());
    for (const auto &[path, password] : files) {
        const Tried tried = tryFile(path, password);
        const bool canStamp = tried.sizesAgree && canBeStamped(path, tried.structure, password);
        opened += tried.drawnPages > 0;
        drawn += tried.firstPageDrawn;
        agreeing += tried.sizesAgree;
        stamped += canStamp;
        if (!canStamp) {
            std::printf("  %s: %d pages, drawn %d, agree %d; %s; %s\n", qPrintable(QDir(corpus).relativeFilePath(path)),
                        tried.drawnPages, tried.firstPageDrawn, tried.sizesAgree, qPrintable(tried.message),
                        qPrintable(tried.structure.cannotWriteReason));
        }
    }
    std::printf("%s: %zu files, opened %d, first page drawn %d, libraries agree %d, stamped %d\n", GetParam(),
                files.size(), opened, drawn, agreeing, stamped);
    EXPECT_FALSE(files.empty());
}

INSTANTIATE_TEST_SUITE_P(Classes, EngineCorpus,
                         testing::Values("valid", "structure", "geometry", "content", "damaged", "encrypted",
                                         "pagetree", "forms", "features", "signed", "pdfa", "notpdf"));

} // namespace

} // namespace inkory
