#include "platform/pdf/PrintPlacement.h"
#include "support/Tools.h"

using namespace inkory;

namespace
{

PrintInfo letter(PageScaling scaling, AutoRotate autoRotate = AutoRotate::Yes)
{
    PrintInfo info;
    info.pageLayout = QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, QMarginsF());
    info.scaling = scaling;
    info.autoRotate = autoRotate;
    return info;
}

PrintInfo withMargins(PageScaling scaling)
{
    PrintInfo info = letter(scaling);
    info.pageLayout.setUnits(QPageLayout::Point);
    info.pageLayout.setMargins(QMarginsF(12, 20, 0, 32)); // 600 x 740 are left, their middle at (312, 390)
    return info;
}

PrintInfo ledger()
{
    PrintInfo info = letter(PageScaling::FitToPage);
    info.pageLayout.setPageSize(QPageSize(QPageSize::Ledger)); // 17 by 11 inches
    return info;
}

TEST(PrintPlacement, CentresThePageUprightOnThePaper)
{
    const QSizeF portrait(612, 792);
    const QSizeF landscape(792, 612);
    struct
    {
        PrintInfo info;
        QSizeF page, paper;
        QRectF onPaper;
    } const cases[] = {{letter(PageScaling::None), {600, 800}, portrait, {6, -4, 600, 800}},
                       {letter(PageScaling::ShrinkToFit), {600, 800}, portrait, {9, 0, 594, 792}},
                       {letter(PageScaling::ShrinkToFit), {300, 400}, portrait, {156, 196, 300, 400}},
                       {letter(PageScaling::FitToPage), {306, 360}, portrait, {0, 36, 612, 720}},
                       {letter(PageScaling::FitToPage), {360, 306}, landscape, {36, 0, 720, 612}},
                       {letter(PageScaling::FitToPage, AutoRotate::No), {306, 102}, portrait, {0, 294, 612, 204}},
                       {ledger(), {612, 396}, {1224, 792}, {0, 0, 1224, 792}},
                       {ledger(), {306, 612}, {792, 1224}, {90, 0, 612, 1224}},
                       {withMargins(PageScaling::FitToPage), {300, 300}, portrait, {12, 90, 600, 600}},
                       {withMargins(PageScaling::None), {612, 792}, portrait, {0, 0, 612, 792}}};
    for (const auto &[info, page, paper, onPaper] : cases) {
        const SheetPlacement placed = placeOnSheet(page, info);
        EXPECT_EQ(placed.paperSize, paper);
        test::expectNear(placed.toSheet.mapRect(QRectF(QPointF(0, 0), page)), onPaper, 1e-6);
    }
}

TEST(PrintPlacement, BandsCoverWhatLiesOnThePaperWithoutSeams)
{
    const PrintInfo info = letter(PageScaling::None);
    const SheetPlacement placed = placeOnSheet({792, 1224}, info); // 90 and 216 points beyond the paper on each side
    const PageBands bands = bandsOfPage({792, 1224}, placed, 600);
    EXPECT_NEAR(bands.scale, 8.333333, 1e-5);
    EXPECT_EQ(bands.bands.front().topLeft(), QPoint(750, 1800));
    EXPECT_EQ(bands.bands.back().bottomRight(), QPoint(750 + 5100 - 1, 1800 + 6600 - 1));
    ASSERT_EQ(bands.bands.size(), 5U); // 1568 rows at most, two of them shared
    for (std::size_t i = 1; i < bands.bands.size(); ++i)
        EXPECT_EQ(bands.bands[i].top(), bands.bands[i - 1].bottom() - 1);
    EXPECT_LE(bands.bands.front().width() * bands.bands.front().height(), 8'000'000);
}

TEST(PrintPlacement, PagesComeInTheOrderAskedFor)
{
    PrintInfo info;
    EXPECT_EQ(pagesToPrint(info, 3), (std::vector<int>{0, 1, 2}));
    info.pages = QPageRanges::fromString(QStringLiteral("2-3,9"));
    info.isReversed = true;
    info.copies = 2;
    EXPECT_EQ(pagesToPrint(info, 4), (std::vector<int>{2, 1, 2, 1}));
    info.isCollated = false;
    EXPECT_EQ(pagesToPrint(info, 4), (std::vector<int>{2, 2, 1, 1}));
    info.printerName = QStringLiteral("office");
    EXPECT_EQ(pagesToPrint(info, 4), (std::vector<int>{2, 1})) << "printers copy themselves";
}

} // namespace
