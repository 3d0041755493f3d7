#include "tools/ProbeDocument.h"

#include "V1/editing/KRPDFView.h"
#include "V1/editing/TextStampEditor.h"
#include "V1/stamps/KRPDFPage.h"
#include "V1/stamps/KRStamp.h"
#include "platform/widgets/FontManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>

#include <optional>

using namespace inkory;

bool waitUntil(const std::function<bool()> &condition, qint64 patienceMilliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < patienceMilliseconds)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 50);
    return condition();
}

void openAndSettle(PDFDocumentModel &model, const QString &path, const QString &password)
{
    (void)model.readFromURL(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()),
                            {}); // the state says what is wrong
    KRPDFDocument &document = *model.pdfDoc();
    const auto isDecided = [&] {
        return document.state() == PDFDocument::State::Failed || document.state() == PDFDocument::State::Locked ||
               (document.state() == PDFDocument::State::Open && document.isGeometrySettled());
    };
    waitUntil(isDecided);
    if (document.state() == PDFDocument::State::Locked && !password.isEmpty()) {
        document.unlock(password);
        waitUntil(isDecided);
    }
}

namespace
{

Result<void> save(PDFDocumentModel &model, const QString &path)
{
    std::optional<Result<void>> outcome;
    model.saveToURL(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()),
                    [&](const Result<void> &saved) { outcome = saved; });
    waitUntil([&] { return outcome.has_value(); }, 400'000);
    return outcome.value_or(Error{QStringLiteral("the save did not end")});
}

// Lets `place` put one stamp onto the page in an editing view that shows it, and saves.
Result<void> placeAndSave(PDFDocumentModel &model, int pageIndex, const QString &path,
                          const std::function<void(KRPDFView &, const PDFPage &)> &place)
{
    KRPDFDocument &document = *model.pdfDoc();
    if (!document.canSave())
        return Error{document.readOnlyReason() + document.message()};
    const PDFPage *page = document.pageAtIndex(pageIndex);
    if (!page)
        return Error{QStringLiteral("no page %1").arg(pageIndex + 1)};
    KRPDFView view;
    view.awakeFromNib();
    view.setUndoManager(&model.undoManager());
    view.resize(800, 600);
    view.setDocument(&document);
    view.goToPage(pageIndex);
    place(view, *page);
    if (view.stampViews().size() != 1 || view.stampViews()[0]->pdfPage() != page)
        return Error{QStringLiteral("the stamp did not come to stand on the page")};
    const Result<void> saved = save(model, path);
    view.setDocument(nullptr);
    return saved;
}

} // namespace

Result<void> stampAndSave(PDFDocumentModel &model, const ImagePtr &image, int pageIndex, QPointF centre,
                          const QString &path)
{
    return placeAndSave(model, pageIndex, path, [&](KRPDFView &view, const PDFPage &page) {
        view.setStampImage(image);
        view.addImageStampView(view.convertPointFromPage({centre.x(), centre.y()}, &page));
    });
}

Result<void> writeAndSave(PDFDocumentModel &model, const ProbeText &text, int pageIndex, QPointF baselineStart,
                          const QString &path)
{
    if (!(text.pointSize > 0) || (!text.family.isEmpty() && !QFontDatabase::hasFamily(text.family)))
        return Error{QStringLiteral("no such font")};
    QFont font = text.family.isEmpty() ? QGuiApplication::font() : QFont(text.family);
    font.setPointSizeF(text.pointSize);
    sharedFontManager().setSelectedFont(font);
    sharedFontManager().setSelectedColor(Qt::black);
    return placeAndSave(model, pageIndex, path, [&](KRPDFView &view, const PDFPage &page) {
        const ViewPoint start = view.convertPointFromPage({baselineStart.x(), baselineStart.y()}, &page);
        view.addTextStampView(view.textPlacementPoint(start));
        view.textEditor()->insertPlainText(text.text);
        view.endTextEditing();
    });
}
