#include "platform/widgets/PrintDialog.h"

#include "platform/pdf/PDFDocument.h"
#include "platform/pdf/PrintOperation.h"
#include "platform/widgets/PDFView.h"
#include "platform/widgets/PrintPreview.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPrintDialog>
#include <QPrintEngine>
#include <QPrinter>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace inkory
{

namespace
{

constexpr int fileResolution = 300;
constexpr int highestResolution = 600;
// Where the print dialog leaves the choices that only the print system understands.
constexpr auto jobOptionsKey = static_cast<QPrintEngine::PrintEnginePropertyKey>(0xfe00);

std::function<bool(PrintOperation &)> &responder()
{
    static std::function<bool(PrintOperation &)> function;
    return function;
}

QPrinter::DuplexMode duplexOf(PrintSides sides)
{
    switch (sides) {
    case PrintSides::OneSided:
        return QPrinter::DuplexNone;
    case PrintSides::LongEdge:
        return QPrinter::DuplexLongSide;
    case PrintSides::ShortEdge:
        return QPrinter::DuplexShortSide;
    case PrintSides::AsPrinterSays:
        break;
    }
    return QPrinter::DuplexAuto;
}

void prepare(QPrinter &printer, const PrintInfo &info)
{
    if (!info.printerName.isEmpty())
        printer.setPrinterName(info.printerName);
    else if (info.isToFile)
        printer.setOutputFileName(info.outputFileName);
    printer.setPageLayout(info.pageLayout);
    printer.setCopyCount(info.copies);
    printer.setCollateCopies(info.isCollated);
    if (info.sides != PrintSides::AsPrinterSays)
        printer.setDuplex(duplexOf(info.sides));
    printer.setPageOrder(info.isReversed ? QPrinter::LastPageFirst : QPrinter::FirstPageFirst);
    printer.setColorMode(info.colors == PrintColors::Gray ? QPrinter::GrayScale : QPrinter::Color);
}

PrintSides sidesOf(const QPrinter &printer)
{
    switch (printer.duplex()) {
    case QPrinter::DuplexNone:
        return PrintSides::OneSided;
    case QPrinter::DuplexLongSide:
        return PrintSides::LongEdge;
    case QPrinter::DuplexShortSide:
        return PrintSides::ShortEdge;
    case QPrinter::DuplexAuto:
        break;
    }
    return PrintSides::AsPrinterSays;
}

QPageRanges chosenPages(const QPrinter &printer, int currentPage)
{
    QPageRanges pages;
    switch (printer.printRange()) {
    case QPrinter::PageRange:
        return printer.pageRanges();
    case QPrinter::CurrentPage:
        pages.addPage(currentPage);
        break;
    default:
        break;
    }
    return pages;
}

void takeOver(const QPrinter &printer, int currentPage, PrintInfo &info)
{
    const bool toFile = printer.outputFormat() == QPrinter::PdfFormat;
    info.printerName = toFile ? QString() : printer.printerName();
    if (toFile)
        info.outputFileName = printer.outputFileName();
    else
        info.sides = sidesOf(printer);
    info.pageLayout = printer.pageLayout();
    info.pages = chosenPages(printer, currentPage);
    info.copies = printer.copyCount();
    info.isCollated = printer.collateCopies();
    info.isReversed = printer.pageOrder() == QPrinter::LastPageFirst;
    info.colors = printer.colorMode() == QPrinter::GrayScale ? PrintColors::Gray : PrintColors::Color;
    info.resolution = toFile ? fileResolution : std::min(printer.resolution(), highestResolution);
    info.jobOptions = toFile ? QStringList() : printer.printEngine()->property(jobOptionsKey).toStringList();
}

/// The tab with what Qt's dialog does not ask.
class PagesTab : public QWidget
{
    Q_DECLARE_TR_FUNCTIONS(PrintDialog)

public:
    PagesTab(const PrintInfo &info, PrintPanelOptions options)
    {
        setWindowTitle(tr("Page Handling"));
        m_scaling->setObjectName(QStringLiteral("pageScaling"));
        m_scaling->addItem(tr("Shrink to printable area"), QVariant::fromValue(PageScaling::ShrinkToFit));
        m_scaling->addItem(tr("Fit to printable area"), QVariant::fromValue(PageScaling::FitToPage));
        m_scaling->addItem(tr("Actual size"), QVariant::fromValue(PageScaling::None));
        m_scaling->setCurrentIndex(m_scaling->findData(QVariant::fromValue(info.scaling)));
        m_scaling->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        m_autoRotate->setText(tr("&Turn the paper to fit each page"));
        m_autoRotate->setChecked(info.autoRotate == AutoRotate::Yes);
        auto *form = new QFormLayout(this);
        form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
        form->addRow(tr("Page &scaling:"), m_scaling);
        form->addRow(QString(), m_autoRotate);
        form->setRowVisible(m_scaling, options.testFlag(PrintPanelOption::ShowsScaling));
        form->setRowVisible(m_autoRotate, options.testFlag(PrintPanelOption::ShowsOrientation));
    }

    void takeOver(PrintInfo &info) const
    {
        info.scaling = m_scaling->currentData().value<PageScaling>();
        info.autoRotate = m_autoRotate->isChecked() ? AutoRotate::Yes : AutoRotate::No;
    }

private:
    QComboBox *m_scaling = new QComboBox(this);
    QCheckBox *m_autoRotate = new QCheckBox(this);
};

QPrintDialog::PrintDialogOptions dialogOptions(PrintPanelOptions options)
{
    QPrintDialog::PrintDialogOptions shown = QPrintDialog::PrintToFile;
    shown.setFlag(QPrintDialog::PrintCollateCopies, options.testFlag(PrintPanelOption::ShowsCopies));
    shown.setFlag(QPrintDialog::PrintPageRange, options.testFlag(PrintPanelOption::ShowsPageRange));
    shown.setFlag(QPrintDialog::PrintCurrentPage, options.testFlag(PrintPanelOption::ShowsPageRange));
    shown.setFlag(QPrintDialog::PrintShowPageSize, options.testFlag(PrintPanelOption::ShowsPaperSize));
    return shown;
}

// Qt's own suggestion is in the home folder. Where a file was chosen before, the dialog shows that.
void suggestFile(const QPrintDialog &dialog, const QPrinter &printer, const QString &file)
{
    auto *field = dialog.findChild<QLineEdit *>(QStringLiteral("filename"));
    if (field && printer.outputFileName().isEmpty())
        field->setText(file);
}

enum class Choice { Print, Preview, Nothing };

/// Qt's dialog with our tab and our button; it keeps what was chosen in the printer only when it is accepted.
Choice askOnce(QPrinter &printer, PrintOperation &operation, PDFView &view)
{
    const PrintPanelOptions options = operation.printPanel().options();
    // On the heap, because it is destroyed with its parent window if that goes first.
    const QPointer<QPrintDialog> dialog = new QPrintDialog(&printer, view.window());
    dialog->setWindowTitle(QCoreApplication::translate("PrintDialog", "Print"));
    dialog->setOptions(dialogOptions(options));
    const int pageCount = operation.document()->pageCount();
    dialog->setMinMax(1, pageCount);
    if (printer.fromPage() == 0)
        dialog->setFromTo(1, pageCount);
    suggestFile(*dialog, printer, operation.printInfo().outputFileName);
    PagesTab *tab = nullptr;
    if (options.testFlag(PrintPanelOption::ShowsPageSetupAccessory)) {
        tab = new PagesTab(operation.printInfo(), options);
        dialog->setOptionTabs({tab});
    }
    bool wantsPreview = false;
    auto *buttons = dialog->findChild<QDialogButtonBox *>();
    for (QAbstractButton *button : buttons ? buttons->buttons() : QList<QAbstractButton *>()) {
        const auto role = buttons->buttonRole(button);
        if (role != QDialogButtonBox::AcceptRole && role != QDialogButtonBox::RejectRole)
            button->click(); // it shows the range of pages, the copies and our tab
    }
    if (buttons && options.testFlag(PrintPanelOption::ShowsPreview)) {
        const QPushButton *preview =
            buttons->addButton(QCoreApplication::translate("PrintDialog", "Pre&view…"), QDialogButtonBox::ActionRole);
        QObject::connect(preview, &QPushButton::clicked, dialog, [&wantsPreview, dialog] {
            wantsPreview = true;
            dialog->accept();
            wantsPreview = dialog->result() == QDialog::Accepted;
        });
    }
    const int currentPage = view.currentPageIndex() + 1;
    const QPointer<PrintOperation> alive = &operation;
    const bool isAccepted = dialog->exec() == QDialog::Accepted && dialog && alive;
    if (isAccepted) {
        PrintInfo info = operation.printInfo();
        takeOver(printer, currentPage, info);
        if (tab)
            tab->takeOver(info);
        operation.setPrintInfo(info);
    }
    delete dialog.data();
    if (!isAccepted)
        return Choice::Nothing;
    return wantsPreview ? Choice::Preview : Choice::Print;
}

} // namespace

bool runPrintDialog(PrintOperation &operation, PDFView &view)
{
    if (responder())
        return responder()(operation);
    QPrinter printer(QPrinter::HighResolution);
    prepare(printer, operation.printInfo());
    const QPointer<PDFView> shown = &view;
    while (shown && operation.document()) {
        switch (askOnce(printer, operation, view)) {
        case Choice::Print:
            return true;
        case Choice::Nothing:
            return false;
        case Choice::Preview:
            break;
        }
        if (shown && operation.document() && runPrintPreview(operation, view))
            return true;
    }
    return false;
}

void setPrintDialogResponder(std::function<bool(PrintOperation &)> newResponder)
{
    responder() = std::move(newResponder);
}

} // namespace inkory
