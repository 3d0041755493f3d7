#include "platform/pdf/PrintPlacement.h"

#include <gtest/gtest.h>

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

struct Placing
{
    PrintInfo info;
    QSizeF page;
    QSizeF paper;
    QRectF onPaper;
};

class Placement : public ::testing::TestWithParam<Placing>
{
};

TEST_P(Placement, CentresThePageUprightOnThePaper)
{
    const SheetPlacement placed = placeOnSheet(GetParam().page, GetParam().info);
    const QRectF expected = GetParam().onPaper;
    const QRectF found = placed.toSheet.mapRect(QRectF(QPointF(0, 0), GetParam().page));
    EXPECT_EQ(placed.paperSize, GetParam().paper);
    EXPECT_NEAR(found.x(), expected.x(), 1e-6);
    EXPECT_NEAR(found.y(), expected.y(), 1e-6);
    EXPECT_NEAR(found.width(), expected.width(), 1e-6);
    EXPECT_NEAR(found.height(), expected.height(), 1e-6);
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

const QSizeF portrait(612, 792);
const QSizeF landscape(792, 612);

INSTANTIATE_TEST_SUITE_P(
    Pages, Placement,
    ::testing::Values(Placing{letter(PageScaling::None), {600, 800}, portrait, {6, -4, 600, 800}},
                      Placing{letter(PageScaling::ShrinkToFit), {600, 800}, portrait, {9, 0, 594, 792}},
                      Placing{letter(PageScaling::ShrinkToFit), {300, 400}, portrait, {156, 196, 300, 400}},
                      Placing{letter(PageScaling::FitToPage), {306, 360}, portrait, {0, 36, 612, 720}},
                      Placing{letter(PageScaling::FitToPage), {360, 306}, landscape, {36, 0, 720, 612}},
                      Placing{letter(PageScaling::FitToPage, AutoRotate::No), {306, 102}, portrait, {0, 294, 612, 204}},
                      Placing{ledger(), {612, 396}, {1224, 792}, {0, 0, 1224, 792}},
                      Placing{ledger(), {306, 612}, {792, 1224}, {90, 0, 612, 1224}},
                      Placing{withMargins(PageScaling::FitToPage), {300, 300}, portrait, {12, 90, 600, 600}},
                      Placing{withMargins(PageScaling::None), {612, 792}, portrait, {0, 0, 612, 792}}));

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
