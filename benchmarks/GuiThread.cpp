// bench_gui_thread FILE...: opens every file in a document window, scrolls, zooms, stamps and saves, and prints the
// longest time that one event kept the GUI thread, and for which file.

#include "Measure.h"

#include "V1/application/InterfaceRegistration.h"
#include "V1/application/PDFDocumentModel.h"
#include "V1/application/PDFWindowController.h"
#include "V1/editing/KRPDFView.h"
#include "V1/stamps/KRPDFPage.h"
#include "tools/EventTimer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QScrollBar>
#include <QTemporaryDir>

#include <cstdio>

using namespace inkory;
using namespace inkory::bench;

namespace
{

constexpr double limitMilliseconds = 100;
constexpr qint64 patienceMilliseconds = 8'000;

void pass(qint64 milliseconds, const std::function<bool()> &done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

void stampAndSave(PDFDocumentModel &model, KRPDFView &view, const QString &folder)
{
    QImage ink(400, 150, QImage::Format_ARGB32);
    ink.fill(QColor(0, 0, 80, 120));
    bool isSaved = false;
    QMetaObject::invokeMethod(
        &view,
        [&] {
            view.setStampImage(Image::fromPixels(ink));
            view.goToPage(0);
            const PageRect box = view.document()->pageAtIndex(0)->boundsForBox(DisplayBox::CropBox);
            view.addImageStampView(view.convertPointFromPage({box.x + box.width / 2, box.y + box.height / 2},
                                                             view.document()->pageAtIndex(0)));
            model.saveToURL(QUrl::fromLocalFile(folder + QStringLiteral("/saved.pdf")),
                            [&isSaved](const Result<void> &) { isSaved = true; });
        },
        Qt::QueuedConnection);
    pass(patienceMilliseconds * 10, [&] { return isSaved; });
}

void useDocument(const QString &path, const QString &folder)
{
    PDFDocumentModel model;
    const double reading = millisecondsOf([&] { (void)model.readFromURL(QUrl::fromLocalFile(path), {}); });
    static_cast<EventTimer &>(*QCoreApplication::instance()).note(reading, [] { return QStringLiteral("reading"); });
    model.makeWindowControllers();
    model.showWindows();
    KRPDFDocument &document = *model.pdfDoc();
    KRPDFView &view = *model.pdfWindowController()->pdfView();
    pass(patienceMilliseconds, [&] {
        return document.state() == PDFDocument::State::Failed || document.state() == PDFDocument::State::Locked ||
               (document.isGeometrySettled() && view.isContentComplete());
    });
    for (const double factor : {3.0, 0.2, 1.0}) {
        QMetaObject::invokeMethod(
            &view, [&view, factor] { view.setScaleFactor(factor); }, Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            &view, [&view] { view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 2); },
            Qt::QueuedConnection);
        pass(patienceMilliseconds / 4, [&] { return view.isContentComplete(); });
    }
    QMetaObject::invokeMethod(
        &view, [&view] { view.flipDocument(); }, Qt::QueuedConnection);
    pass(200, [] { return false; });
    if (document.canSave())
        stampAndSave(model, view, folder);
}

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    prepareEnvironment(folder.path());
    EventTimer application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("inkory"));
    QApplication::setQuitOnLastWindowClosed(false);
    registerApplicationInterfaceDescriptions();

    double worst = 0;
    const QStringList files = QApplication::arguments().mid(1);
    for (const QString &file : files) {
        application.reset();
        useDocument(file, folder.path());
        worst = std::max(worst, application.longestMilliseconds());
        if (application.longestMilliseconds() > limitMilliseconds / 2)
            std::printf("%8.1f ms  %s  (%s)\n", application.longestMilliseconds(),
                        qPrintable(QFileInfo(file).fileName()), qPrintable(application.longestWas()));
    }
    reportNumber(QStringLiteral("longest event on the GUI thread, %1 files").arg(files.size()), worst,
                 QStringLiteral("ms"), limitMilliseconds);
    return exitStatus();
}
