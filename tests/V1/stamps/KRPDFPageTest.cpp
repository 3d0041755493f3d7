#include "V1/stamps/StampFixture.h"

#include <QPainter>

#include <stdexcept>

using namespace inkory;

namespace
{

/// Draws like a screen or like a printer into an image of the shown page, one pixel for each point.
class ImageContext : public DrawingContext
{
public:
    explicit ImageContext(const KRPDFPage &sheet, bool toScreen = false)
        : m_sheet(sheet), m_image(sheet.shownSize().toSize(), QImage::Format_RGB32), m_toScreen(toScreen)
    {
        m_image.fill(Qt::white);
        m_painter.begin(&m_image);
    }

    QPainter &painter() override { return m_painter; }
    bool isDrawingToScreen() const override { return m_toScreen; }
    QTransform transformForBox(const PDFPage &, DisplayBox) const override { return m_sheet.shownTransform(); }
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
    const KRPDFPage &m_sheet;
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
    // Black at opacity 0.8 over white is 51, at 0.5 it is 127 or 128.
    for (const auto &[mode, grayOnScreen] :
         {std::pair(StampModeNormal, 0), {StampModeSelected, 51}, {StampModeDragging, 127}}) {
        const auto page = letterPage(0);
        const auto stamp = stampOn(*page); // frame (250, 380, 100, 40), shown at y 372 to 412
        stamp->setStampMode(mode);
        ImageContext screen(*page, true);
        page->drawWithBox(DisplayBox::CropBox, screen);
        EXPECT_NEAR(screen.gray(300, 400), grayOnScreen, 1);
        ImageContext printer(*page);
        page->drawWithBox(DisplayBox::CropBox, printer);
        EXPECT_EQ(printer.gray(300, 400), 0);
    }
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
    ImageContext context(paper);
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
    ImageContext context(*page);
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

} // namespace
