#pragma once

#include <QFlags>
#include <QPageLayout>
#include <QPageRanges>
#include <QString>
#include <QStringList>

namespace inkory
{

/// How large a page becomes on its paper.
enum class PageScaling {
    None,        ///< 1 point of the page is 1/72 inch on paper; what lies beyond the paper is cut off.
    ShrinkToFit, ///< The same, but pages larger than the printable area are reduced to it.
    FitToPage    ///< As large as the printable area allows.
};

/// Whether the paper is turned to each page's orientation.
enum class AutoRotate { No, Yes };

enum class PrintColors { Color, Gray };
enum class PrintSides { OneSided, LongEdge, ShortEdge, AsPrinterSays };

/// What the print panel lets a person choose.
enum class PrintPanelOption : quint32 {
    ShowsCopies = 0x1,
    ShowsPageRange = 0x2,
    ShowsPaperSize = 0x4,
    ShowsOrientation = 0x8,
    ShowsScaling = 0x10,
    ShowsPageSetupAccessory = 0x100,
    ShowsPreview = 0x20000,
};
Q_DECLARE_FLAGS(PrintPanelOptions, PrintPanelOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(PrintPanelOptions)

/// The choices that a print operation's panel will offer.
class PrintPanel
{
public:
    PrintPanelOptions options() const { return m_options; }
    void setOptions(PrintPanelOptions options) { m_options = options; }

private:
    PrintPanelOptions m_options =
        PrintPanelOption::ShowsCopies | PrintPanelOption::ShowsPageRange | PrintPanelOption::ShowsPreview;
};

/// How to print: what a person chooses in the print panel. A value that knows no printer, so that it outlives one.
struct PrintInfo
{
    PrintInfo();

    /// Paper, its orientation, and the margins around the printable area.
    QPageLayout pageLayout;
    PageScaling scaling = PageScaling::ShrinkToFit;
    AutoRotate autoRotate = AutoRotate::Yes;
    /// Page numbers from 1; empty for all pages. Numbers outside the document count for nothing.
    QPageRanges pages;
    int copies = 1;
    /// Whether a whole copy comes after the other, instead of all copies of a page.
    bool isCollated = true;
    bool isReversed = false;
    PrintColors colors = PrintColors::Color;
    PrintSides sides = PrintSides::AsPrinterSays;
    /// Dots per inch at which the pages' own content is drawn.
    int resolution = 300;

    /// The print system's name for the printer; empty when printing to a file.
    QString printerName;
    /// Where no printer is named; what the panel suggests otherwise.
    QString outputFileName;
    /// The panel offers the file first.
    bool isToFile = false;
    /// Further options for the print system: a name, its value, and so on.
    QStringList jobOptions;
};

/// What the program's windows print with, remembered as long as the program runs. Main thread only.
PrintInfo &sharedPrintInfo();

} // namespace inkory
