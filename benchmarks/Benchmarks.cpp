#include "Measure.h"

#include "V1/application/DocumentWindow.h"
#include "V1/application/PDFDocumentModel.h"
#include "V1/editing/KRPDFView.h"
#include "V1/stamps/KRPDFPage.h"
#include "platform/core/Image.h"

#include <poppler-qt6.h>

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QProcess>
#include <QTemporaryDir>

#include <fcntl.h>
#include <malloc.h>
#include <memory>
#include <optional>
#include <unistd.h>

using namespace inkory;
using namespace inkory::bench;

namespace
{

constexpr int manyPages = 10'000;

void runProgram(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(30'000) || process.exitCode() != 0)
        qFatal("%s failed", qPrintable(program));
}

// The drawing library alone: opens the file and draws the first page as the window shows it.
QImage drawBare(const QString &path, double scale)
{
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(path);
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    return document->page(0)->renderToImage(72 * scale, 72 * scale);
}

QImage handwriting()
{
    QImage image(600, 200, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(20, 30, 120), 6, Qt::SolidLine, Qt::RoundCap));
    QPainterPath path(QPointF(30, 150));
    path.cubicTo(150, -60, 200, 260, 300, 90);
    path.cubicTo(360, -20, 380, 240, 570, 60);
    painter.drawPath(path);
    return image;
}

void startToFirstPage(const QString &smallFile)
{
    const Pair pair = measureInTurn(
        21, [&] { runProgram(QStringLiteral(BENCH_START_INKORY), {smallFile}); },
        [&] { runProgram(QStringLiteral(BENCH_START_WINDOW), {smallFile}); });
    reportRatio(QStringLiteral("start to first page (floor: bare window, then engine)"), pair, 1.5);
}

void openManyPages(const QString &manyPagesFile)
{
    KRPDFView view;
    view.awakeFromNib();
    view.resize(900, 800);
    view.show();
    std::unique_ptr<KRPDFDocument> document;
    const auto open = [&] {
        document = std::make_unique<KRPDFDocument>();
        view.setDocument(document.get());
        document->initWithURL(manyPagesFile);
        runUntil([&] { return view.isContentComplete(); });
    };
    const auto close = [&] {
        view.setDocument(nullptr);
        document.reset();
    };
    const Pair pair = measureInTurn(
        15, open, [&] { drawBare(manyPagesFile, view.scaleFactor()); }, close);
    reportRatio(QStringLiteral("10,000 pages to first page (floor: engine alone)"), pair, 1.5);
}

void pageListMemory(const QString &manyPagesFile)
{
    KRPDFDocument document;
    KRPDFView view;
    view.awakeFromNib();
    document.initWithURL(manyPagesFile);
    runUntil([&] { return document.isGeometrySettled(); });
    const auto inUse = [] { return static_cast<double>(mallinfo2().uordblks); };
    const double before = inUse();
    view.setDocument(&document);
    std::vector<std::unique_ptr<KRPDFPage>> pages; // as many again as the document holds
    for (int i = 0; i < manyPages; ++i)
        pages.push_back(std::make_unique<KRPDFPage>(PageGeometry{}, i));
    reportNumber(QStringLiteral("memory of 10,000 pages in view and document"), (inUse() - before) / 1e6,
                 QStringLiteral("MB"), 10);
    view.setDocument(nullptr);
}

void saveSmallFile(const QTemporaryDir &folder, const QString &smallFile)
{
    const QString target = folder.filePath(QStringLiteral("saved.pdf"));
    const ImagePtr image = Image::fromPixels(handwriting());
    PDFDocumentModel model;
    (void)model.readFromURL(QUrl::fromLocalFile(smallFile), {});
    KRPDFView view;
    view.awakeFromNib();
    view.setUndoManager(&model.undoManager());
    view.resize(900, 800);
    view.setDocument(model.pdfDoc());
    runUntil([&] { return model.pdfDoc()->isGeometrySettled(); });
    view.setStampImage(image);
    view.addImageStampView({450, 400});
    const auto save = [&] {
        std::optional<bool> saved;
        model.saveToURL(QUrl::fromLocalFile(target), [&](const Result<void> &outcome) { saved = bool(outcome); });
        runUntil([&] { return saved.has_value(); });
        if (!*saved)
            qFatal("the save failed");
    };
    const auto copyAndSync = [&] {
        QFile source(smallFile);
        QFile copy(folder.filePath(QStringLiteral("copied.pdf")));
        if (!source.open(QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly))
            qFatal("cannot copy");
        copy.write(source.readAll());
        copy.flush();
        fsync(copy.handle());
    };
    const Pair pair = measureInTurn(15, save, copyAndSync);
    reportNumber(QStringLiteral("save with one stamp, small file"), pair.measured, QStringLiteral("ms"), 30);
    std::printf("%-58s %9.2f ms\n", "  (copying and syncing that file)", pair.floor);
    const double growth = static_cast<double>(QFile(target).size() - QFile(smallFile).size());
    const double png = static_cast<double>(image->pngBytes().value().size());
    reportNumber(QStringLiteral("growth by one stamp beyond the image's PNG"), (growth - png) / 1000,
                 QStringLiteral("kB"), 3);
    view.setDocument(nullptr);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    prepareEnvironment(folder.path());
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setQuitOnLastWindowClosed(false);

    const QString smallFile = writeFile(folder.filePath(QStringLiteral("small.pdf")), textPages(5));
    const QString manyPagesFile = writeFile(folder.filePath(QStringLiteral("many.pdf")), textPages(manyPages));
    startToFirstPage(smallFile);
    openManyPages(manyPagesFile);
    pageListMemory(manyPagesFile);
    saveSmallFile(folder, smallFile);
    return exitStatus();
}
