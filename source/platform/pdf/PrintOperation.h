#pragma once

#include "platform/core/Result.h"
#include "platform/pdf/PageSource.h"
#include "platform/pdf/PrintInfo.h"
#include "platform/pdf/PrintPlacement.h"

#include <QFileDevice>
#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

namespace inkory
{

class PDFDocument;
class PDFPage;
class PrintCanvas;

/// Prints a document's pages into a PDF file, which whoever started it keeps or sends to a printer. Page contents are
/// drawn by the document's helper, after everything that is wanted on the screen, band by band, and compressed on a
/// worker thread; what lies over them is drawn by the pages themselves. Order and rotation are those of the moment when
/// it starts. Ends by itself when the document goes or is read again. Main thread only.
class PrintOperation : public QObject
{
    Q_OBJECT

public:
    enum class Ending { Printed, DocumentClosed, NotWritten };
    struct Outcome
    {
        Ending ending = Ending::Printed;
        /// Numbers (from 1) of the pages that could not be drawn, and say so on their sheets; each once.
        std::vector<int> undrawnPages;
    };

    /// The document is not owned.
    PrintOperation(PDFDocument &document, const PrintInfo &info);
    /// Gives up what is being printed.
    ~PrintOperation() override;

    PrintPanel &printPanel() { return m_panel; }
    const PrintInfo &printInfo() const { return m_info; }
    /// Before it starts.
    void setPrintInfo(const PrintInfo &info) { m_info = info; }
    /// None once it is gone.
    PDFDocument *document() const { return m_document; }
    QString title() const { return m_title; }
    void setTitle(const QString &title) { m_title = title; }

    /// Starts, once, as soon as the sizes of all pages are known. The file is open for writing, and is not to be
    /// touched before finished(); where the operation goes before that, a worker thread may hold on to it for a moment.
    void start(std::shared_ptr<QFileDevice> output);

Q_SIGNALS:
    /// The sheet's number (from 1), how many there are, and the number of the page on it.
    void sheetBegan(int sheet, int sheetCount, int page);
    /// Once, at the end, unless the operation is destroyed before.
    void finished(const inkory::PrintOperation::Outcome &outcome);

private:
    /// A page as it was when printing started. The page itself lives as long as the document is open.
    struct Sheet
    {
        PDFPage *page;
        int pageNumber;
        int sourceIndex;
        int extraQuarterTurns;
        QSizeF shownSize;
        QTransform shownTransform;
    };

    void takePages();
    void beginSheet();
    void requestBand();
    void bandArrived(const Result<QImage> &image);
    void printBand(QImage band);
    void bandPainted();
    void beginUndrawablePage();
    void drawFailure();
    void drawOverPage(QPainter &painter, const QTransform &toSheet);
    QRectF onPage(const QRect &band) const;
    void nextSheet();
    void finish(Ending ending);

    QPointer<PDFDocument> m_document;
    PrintInfo m_info;
    PrintPanel m_panel;
    QString m_title;
    std::shared_ptr<PrintCanvas> m_canvas; // none before the start and after the end
    std::vector<Sheet> m_sheets;
    std::size_t m_sheet = 0;
    SheetPlacement m_placement; // of the present sheet
    PageBands m_bands;
    std::size_t m_band = 0;
    bool m_isUndrawable = false; // the present sheet's page
    DrawToken m_token = 0;
    Outcome m_outcome;
};

} // namespace inkory
