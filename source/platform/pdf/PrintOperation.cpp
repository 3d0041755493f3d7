#include "platform/pdf/PrintOperation.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PrintCanvas.h"
#include "platform/pdf/PrintDrawingContext.h"

#include <QCoreApplication>
#include <QPainter>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

constexpr double failureTextSize = 12; // points on paper

} // namespace

PrintOperation::PrintOperation(PDFDocument &document, const PrintInfo &info) : m_document(&document), m_info(info) {}

PrintOperation::~PrintOperation()
{
    PageSource *source = m_document ? m_document->pageSource() : nullptr;
    if (source)
        source->cancel(m_token);
}

void PrintOperation::start(std::shared_ptr<QFileDevice> output)
{
    m_canvas = std::make_shared<PrintCanvas>(std::move(output), m_title);
    if (!m_document) {
        finish(Ending::DocumentClosed);
        return;
    }
    connect(m_document, &QObject::destroyed, this, [this] { finish(Ending::DocumentClosed); });
    connect(m_document, &PDFDocument::stateChanged, this, [this] { finish(Ending::DocumentClosed); });
    if (m_document->isGeometrySettled())
        takePages();
    else
        connect(m_document, &PDFDocument::geometrySettled, this, &PrintOperation::takePages);
}

void PrintOperation::takePages()
{
    for (const int index : pagesToPrint(m_info, m_document->pageCount())) {
        PDFPage *page = m_document->pageAtIndex(index);
        m_sheets.push_back({page, index + 1, page->sourceIndex(), page->extraQuarterTurns(), page->shownSize(),
                            page->shownTransform()});
    }
    beginSheet();
}

void PrintOperation::beginSheet()
{
    if (m_sheet == m_sheets.size()) {
        finish(m_canvas->finish() ? Ending::Printed : Ending::NotWritten);
        return;
    }
    const Sheet &sheet = m_sheets[m_sheet];
    m_placement = placeOnSheet(sheet.shownSize, m_info);
    m_bands = bandsOfPage(sheet.shownSize, m_placement, m_info.resolution);
    m_band = 0;
    m_isUndrawable = false;
    if (!m_canvas->beginSheet(m_placement.sheet)) {
        finish(Ending::NotWritten);
        return;
    }
    Q_EMIT sheetBegan(static_cast<int>(m_sheet) + 1, static_cast<int>(m_sheets.size()), sheet.pageNumber);
    requestBand();
}

void PrintOperation::requestBand()
{
    if (m_band == m_bands.bands.size()) {
        nextSheet();
        return;
    }
    if (m_isUndrawable) {
        QImage blank(m_bands.bands[m_band].size(), QImage::Format_RGB32);
        blank.fill(Qt::white);
        printBand(blank);
        return;
    }
    const Sheet &sheet = m_sheets[m_sheet];
    const DrawRequest wanted{sheet.sourceIndex, sheet.extraQuarterTurns, m_bands.scale, m_bands.bands[m_band]};
    m_token = m_document->pageSource()->draw(wanted, DrawPriority::Ahead,
                                             [this](const Result<QImage> &image) { bandArrived(image); });
}

void PrintOperation::bandArrived(const Result<QImage> &image)
{
    m_token = 0;
    if (image) {
        printBand(*image);
        return;
    }
    beginUndrawablePage();
    if (m_info.colors == PrintColors::Gray)
        requestBand(); // what lies over the page becomes gray on bands only
    else
        nextSheet();
}

void PrintOperation::printBand(QImage band)
{
    const QRectF target = m_placement.toSheet.mapRect(onPage(m_bands.bands[m_band]));
    if (m_info.colors == PrintColors::Gray) {
        QPainter painter(&band);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        const QPointF corner = m_bands.bands[m_band].topLeft();
        drawOverPage(painter, QTransform::fromScale(m_bands.scale, m_bands.scale) *
                                  QTransform::fromTranslate(-corner.x(), -corner.y()));
    }
    QThreadPool::globalInstance()->start(
        [guard = QPointer<PrintOperation>(this), canvas = m_canvas, band, target, colors = m_info.colors]() mutable {
            canvas->paintBand(band, target, colors);
            canvas.reset();
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [guard] {
                    if (guard)
                        guard->bandPainted();
                },
                Qt::QueuedConnection);
        });
}

void PrintOperation::bandPainted()
{
    if (!m_canvas)
        return;
    ++m_band;
    requestBand();
}

void PrintOperation::beginUndrawablePage()
{
    m_isUndrawable = true;
    m_band = 0;
    const int number = m_sheets[m_sheet].pageNumber;
    if (std::find(m_outcome.undrawnPages.begin(), m_outcome.undrawnPages.end(), number) == m_outcome.undrawnPages.end())
        m_outcome.undrawnPages.push_back(number);
    // Over what may have come of it.
    m_canvas->painter().fillRect(QRectF(QPointF(0, 0), m_placement.paperSize), Qt::white);
}

void PrintOperation::drawFailure()
{
    QPainter &painter = m_canvas->painter();
    painter.save();
    QFont font = painter.font();
    font.setPointSizeF(failureTextSize);
    painter.setFont(font);
    painter.drawText(QRectF(QPointF(0, 0), m_placement.paperSize), Qt::AlignCenter, tr("This page cannot be drawn."));
    painter.restore();
}

// The page's content is there already.
void PrintOperation::drawOverPage(QPainter &painter, const QTransform &toSheet)
{
    const Sheet &sheet = m_sheets[m_sheet];
    PrintDrawingContext context(painter, sheet.shownTransform * toSheet);
    const DrawingContext::Scope scope(context);
    sheet.page->drawWithBox(DisplayBox::CropBox, context);
}

QRectF PrintOperation::onPage(const QRect &band) const
{
    return {QPointF(band.topLeft()) / m_bands.scale, QSizeF(band.size()) / m_bands.scale};
}

void PrintOperation::nextSheet()
{
    if (m_info.colors == PrintColors::Color)
        drawOverPage(m_canvas->painter(), m_placement.toSheet);
    if (m_isUndrawable)
        drawFailure();
    ++m_sheet;
    beginSheet();
}

void PrintOperation::finish(Ending ending)
{
    if (!m_canvas)
        return; // it ended before
    PageSource *source = m_document ? m_document->pageSource() : nullptr;
    if (source)
        source->cancel(m_token);
    m_canvas.reset();
    m_outcome.ending = ending;
    Q_EMIT finished(m_outcome); // last: this object may be destroyed by it
}

} // namespace inkory
