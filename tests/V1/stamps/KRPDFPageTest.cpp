#include "V1/stamps/KRPDFDocument.h"
#include "V1/stamps/StampFixture.h"
#include "platform/core/PlatformVersion.h"
#include "support/Tools.h"

#include <QPainter>

#include <stdexcept>

using namespace inkory;

namespace
{

/// Draws like a screen or like a printer into an image of the shown page, one pixel for each point.
class ImageContext : public DrawingContext
{
public:
    ImageContext(const KRPDFPage &page, bool toScreen)
        : m_image(page.shownSize().toSize(), QImage::Format_RGB32), m_toScreen(toScreen)
    {
        m_image.fill(Qt::white);
        m_painter.begin(&m_image);
    }

    QPainter &painter() override { return m_painter; }
    bool isDrawingToScreen() const override { return m_toScreen; }
    QTransform transformForBox(const PDFPage &page, DisplayBox) const override { return page.shownTransform(); }
    void drawContent(const PDFPage &, DisplayBox) override { ++contentDrawn; }
    void drawImage(const QRectF &rect, const ImagePtr &image, double opacity) override
    {
        m_painter.setOpacity(opacity);
        m_painter.fillRect(rect, image->pixels().pixelColor(0, 0));
        m_painter.setOpacity(1);
    }

    int gray(int x, int y) const { return qGray(m_image.pixel(x, y)); }

    int contentDrawn = 0;

private:
    QImage m_image;
    QPainter m_painter;
    bool m_toScreen;
};

class FailingStamp : public KRStamp
{
public:
    static std::shared_ptr<FailingStamp> create(KRPDFPage &page)
    {
        std::shared_ptr<FailingStamp> stamp(new FailingStamp(page));
        stamp->setup();
        return stamp;
    }

    StampType stampType() const override { return StampTypeImage; }
    void draw() override { throw std::runtime_error("no ink"); }

private:
    explicit FailingStamp(KRPDFPage &page) : KRStamp({0, 0, 10, 10}, nullptr, &page) {}
};

TEST_F(StampFixture, OpacityShowsTheModeOnScreenOnly)
{
    struct Case
    {
        StampMode mode;
        int grayOnScreen;
    };
    // Black at opacity 0.8 over white is 51, at 0.5 it is 127 or 128.
    for (const auto &[mode, grayOnScreen] :
         {Case{StampModeNormal, 0}, Case{StampModeSelected, 51}, Case{StampModeDragging, 127}}) {
        const auto page = letterPage(0);
        const auto stamp = stampOn(*page); // frame (250, 380, 100, 40), shown at y 372 to 412
        stamp->setStampMode(mode);
        ImageContext screen(*page, true);
        page->drawWithBox(DisplayBox::CropBox, screen);
        EXPECT_NEAR(screen.gray(300, 400), grayOnScreen, 1);
        ImageContext printer(*page, false);
        page->drawWithBox(DisplayBox::CropBox, printer);
        EXPECT_EQ(printer.gray(300, 400), 0);
    }
}

// Frame (100, 100, 200, 50) asked for: shown 200 wide and 50 high whatever the page's rotation, where the page space
// says.
TEST_F(StampFixture, StampsTurnWithTheirPageAndCoverTheirFrame)
{
    for (const int rotation : {0, 90, 180, 270}) {
        const auto page = letterPage(rotation);
        const auto stamp = stampOn(*page);
        ImageContext context(*page, false);
        page->drawWithBox(DisplayBox::CropBox, context);
        const QRectF shown = page->shownTransform().mapRect(toQRectF(stamp->frame()));
        EXPECT_EQ(shown.size(), QSizeF(100, 40)) << rotation;
        const QRect inside = shown.toRect();
        EXPECT_EQ(context.gray(inside.left() + 1, inside.top() + 1), 0) << rotation;
        EXPECT_EQ(context.gray(inside.right() - 1, inside.bottom() - 1), 0) << rotation;
        EXPECT_EQ(context.gray(inside.left() - 2, inside.center().y()), 255) << rotation;
        EXPECT_EQ(context.gray(inside.center().x(), inside.bottom() + 2), 255) << rotation;
    }
}

TEST_F(StampFixture, ATurnedStampCoversItsFrame)
{
    const auto page = letterPage(0);
    const auto stamp = stampOn(*page);
    stamp->setFrame({100, 100, 50, 200});
    stamp->setStampRotation(1);
    ImageContext context(*page, false);
    page->drawWithBox(DisplayBox::CropBox, context);
    // Shown from y = 792 - 300 = 492 to 692.
    EXPECT_EQ(context.gray(101, 493), 0);
    EXPECT_EQ(context.gray(148, 690), 0);
    EXPECT_EQ(context.gray(98, 590), 255);
    EXPECT_EQ(context.gray(152, 590), 255);
    EXPECT_EQ(context.gray(125, 489), 255);
}

TEST_F(StampFixture, NoStampPaintsOutsideTheBox)
{
    PageGeometry geometry;
    geometry.cropBox = {100, 100, 200, 200};
    KRPDFPage page(geometry, 0);
    const auto stamp = stampOn(page);
    stamp->setFrame({50, 150, 100, 40}); // half of it left of the crop box
    PageGeometry wide = geometry;
    wide.cropBox = wide.mediaBox;
    const KRPDFPage paper(wide, 0); // a larger sheet to paint on, so that an escape would show
    class WideContext : public ImageContext
    {
    public:
        explicit WideContext(const KRPDFPage &sheet) : ImageContext(sheet, false), m_sheet(sheet) {}
        QTransform transformForBox(const PDFPage &, DisplayBox) const override { return m_sheet.shownTransform(); }

    private:
        const KRPDFPage &m_sheet;
    } context(paper);
    page.drawWithBox(DisplayBox::CropBox, context);
    const int row = 792 - 170;
    EXPECT_EQ(context.gray(99, row), 255);
    EXPECT_EQ(context.gray(101, row), 0);
}

TEST_F(StampFixture, AFailingStampIsLoggedAndTheStampsBeforeItAreShown)
{
    const auto page = letterPage(0);
    const auto stamp = stampOn(*page);
    const auto failing = FailingStamp::create(*page);
    const test::LogCatcher log;
    ImageContext context(*page, false);
    {
        const DrawingContext::Scope scope(context);
        page->drawWithBox(DisplayBox::CropBox);
    }
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines()[0].startsWith(QStringLiteral("internalDrawPageWithBox exception: ")));
    EXPECT_TRUE(log.lines()[0].endsWith(QStringLiteral(" . Reason: no ink")));
    EXPECT_EQ(context.gray(300, 400), 0);
    EXPECT_EQ(context.contentDrawn, 1);
    EXPECT_TRUE(context.painter().transform().isIdentity()) << "the state is restored";
}

TEST_F(StampFixture, EarlyPlatformsDrawNoStampsIntoGivenContexts)
{
    const auto page = letterPage(0);
    const auto stamp = stampOn(*page);
    setPlatformVersion(1503.9);
    ImageContext early(*page, false);
    page->drawWithBox(DisplayBox::CropBox, early);
    setPlatformVersion(1504.0);
    ImageContext late(*page, false);
    page->drawWithBox(DisplayBox::CropBox, late);
    setPlatformVersion(2000);
    EXPECT_EQ(early.gray(300, 400), 255);
    EXPECT_EQ(late.gray(300, 400), 0);
}

TEST(KRPDFDocumentTest, APlainPageBecomesAStampedOneOnTheWayIn)
{
    KRPDFDocument document;
    PageGeometry geometry;
    geometry.cropBox = {10, 20, 300, 400};
    auto plain = std::make_unique<PDFPage>(geometry, 7);
    plain->setRotation(-90);
    document.insertPage(std::move(plain), 5);
    ASSERT_EQ(document.pageCount(), 1);
    auto *page = dynamic_cast<KRPDFPage *>(document.pageAtIndex(0));
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->rotation(), 270);
    EXPECT_EQ(page->sourceIndex(), 7);
    EXPECT_EQ(page->boundsForBox(DisplayBox::CropBox), geometry.cropBox);
    EXPECT_TRUE(page->stamps().empty());
}

} // namespace
