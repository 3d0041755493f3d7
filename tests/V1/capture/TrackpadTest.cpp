#include "PadFixture.h"

#include "V1/capture/BrushCursor.h"
#include "support/Tools.h"

namespace
{

class RecordedSource : public TouchSource
{
public:
    bool startsWithClickOf(QInputDevice::DeviceType) const override { return true; }
    bool beginCapture(TouchReceiver &) override { return m_isCapturing = m_isThere; }
    void endCapture() override { m_isCapturing = false; }

    bool m_isThere = true;
    bool m_isCapturing = false;
};

class Trackpad : public PadFixture
{
protected:
    Trackpad() { m_pad.setSignatureDrawingMode(SignatureDrawingModeTrackpad); }
    ~Trackpad() override { m_pad.setTouchSource(nullptr); }

    void click() { QTest::mouseClick(handle(), Qt::LeftButton, {}, inWindow({50, 50})); }
    void capture()
    {
        m_pad.setTouchSource(&m_source);
        click();
        ASSERT_TRUE(m_pad.isTouchDrawing());
    }
    /// What the pad shows on black, at a density of 1.
    QImage shown()
    {
        QImage image(m_pad.size(), QImage::Format_RGB32);
        image.fill(Qt::black);
        m_pad.render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }

    RecordedSource m_source;
};

TEST_F(Trackpad, AClickOfTheTrackpadCapturesAndEscapeGivesBack)
{
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    m_pad.setFocus();
    QCoreApplication::sendEvent(&m_pad, &escape);
    EXPECT_FALSE(escape.isAccepted()); // goes on to the window
    click();                           // of the mouse
    m_source.m_isThere = false;
    m_pad.setTouchSource(&m_source);
    click();
    m_pad.touchesChanged({{1, TouchPhase::Began, {0.5, 0.5}}});
    EXPECT_FALSE(m_pad.isTouchDrawing() || !drawn().isEmpty());
    EXPECT_EQ(m_pad.QWidget::cursor().shape(), Qt::ArrowCursor);
    m_source.m_isThere = true;
    for (const auto &end : {std::function<void()>([&] { QTest::keyClick(handle(), Qt::Key_Escape); }),
                            {[&] { m_pad.hide(); }},
                            {[&] { m_pad.touchSourceLost(); }}}) {
        m_pad.setSignatureDrawingMode(SignatureDrawingModeTrackpad);
        m_pad.show();
        capture();
        EXPECT_EQ(m_pad.QWidget::cursor().shape(), Qt::BlankCursor);
        m_pad.setSignatureDrawingMode(SignatureDrawingModeDrag);
        EXPECT_TRUE(m_pad.isTouchDrawing() && m_source.m_isCapturing);
        end();
        EXPECT_FALSE(m_pad.isTouchDrawing() || m_source.m_isCapturing);
        EXPECT_EQ(QCursor::pos(), m_pad.mapToGlobal(QPoint(100, 50))); // since Escape
    }
}

TEST_F(Trackpad, TheWholeSurfaceIsTheWholePadAndTouchesInOddOrdersGetTheirAnswers)
{
    capture();
    const auto expect = [this](const Touches &touches, const QRect &expected) {
        startEmpty(1);
        m_pad.touchesChanged(touches);
        EXPECT_EQ(drawn(), expected) << touches.front().normalizedPosition.x();
    };
    expect({{9, TouchPhase::Ended, {0.51, 0.5}}}, {}); // never began
    expect({{7, TouchPhase::Began, {1, 1}}}, {195, 0, 5, 5});
    expect({{7, TouchPhase::Moved, {0.5, 1}}}, {95, 0, 105, 5});
    expect({{7, TouchPhase::Ended, {0.5, 0.5}}}, {95, 0, 10, 55});
    expect({{1, TouchPhase::Began, {0.1, 0.5}}}, {15, 45, 10, 10});
    expect({{1, TouchPhase::Moved, {0.2, 0.5}}, {2, TouchPhase::Began, {0.8, 0.5}}}, {15, 45, 30, 10});
    expect({{1, TouchPhase::Stationary, {0.25, 0.5}}, {2, TouchPhase::Ended, {0.9, 0.5}}}, {});
    expect({{1, TouchPhase::Cancelled, {0.6, 0.5}}}, {});
    expect({{3, TouchPhase::Moved, {0.4, 0.5}}}, {35, 45, 50, 10}); // whichever finger moves
    expect({{1, TouchPhase::Ended, {0.5, 0.5}}}, {75, 45, 30, 10});
    expect({{1, TouchPhase::Began, {0.9, 0.5}}}, {175, 45, 10, 10}); // the number is used again
    m_pad.touchesChanged({{1, TouchPhase::Ended, {0.8, 0.5}}});
    m_pad.touchesChanged({{1, TouchPhase::Began, {0.1, 0.5}}}); // another step to undo
    m_pad.undo();
    EXPECT_EQ(drawn(), QRect(155, 45, 30, 10));
}

TEST_F(Trackpad, ATapOnTheScreenStartsAndFingersThenDrawWhereTheyAre)
{
    fingers().press(0, inWindow({20, 20}));
    EXPECT_FALSE(m_pad.isTouchDrawing());
    fingers().release(0, inWindow({20, 20}));
    EXPECT_TRUE(m_pad.isTouchDrawing() && drawn().isEmpty());
    fingers().press(0, inWindow({50, 20}));
    fingers().move(0, inWindow({100, 20}));
    QTest::keyClick(handle(), Qt::Key_Escape);
    fingers().release(0, inWindow({150, 20})); // does not start again
    EXPECT_EQ(drawn(), QRect(45, 15, 60, 10));
    EXPECT_FALSE(m_pad.isTouchDrawing());
}

TEST_F(Trackpad, HintsSayHowToStartAndHowToStopAndTheBrushFollows)
{
    m_window.resize(700, 300);
    m_pad.resize(601, 201);
    const QRect start = test::findInkBounds(shown(), Qt::white, 20);
    EXPECT_GT(start.height(), 50); // three lines of 24 points
    EXPECT_LE((start.center() - QPoint(300, 100)).manhattanLength(), 12);
    EXPECT_EQ(m_pad.accessibleDescription(),
              u"Trackpad Mode.\nClick with trackpad to start drawing. \nPress 'ESC' to stop drawing."_qs);
    capture();
    const QRect stop = test::findInkBounds(shown(), Qt::white, 20);
    EXPECT_LT(stop.height(), 25);
    EXPECT_NEAR(stop.bottom(), 186, 5); // 10 above the edge, and what letters need below the line
    EXPECT_EQ(m_pad.accessibleDescription(), u"Press 'ESC' to stop drawing"_qs);

    m_pad.setCursor(brushCursor(40, 1));
    const auto brush = [this] { return shown().pixelColor(79, 100).red(); }; // where its circle is to be
    EXPECT_EQ(brush(), 0);
    m_pad.moveCursorToPoint({100, 101});
    EXPECT_NEAR(brush(), 27, 3); // 0.3 × 0.7, half of the line in this pixel
    m_pad.hideCursor();
    EXPECT_EQ(brush(), 0);
}

TEST(BrushCursor, IsACrossBelowFourAndACircleFromThere)
{
    const auto check = [](double thickness, double ratio, int side, int hotSpot) {
        const QCursor cursor = brushCursor(thickness, ratio);
        EXPECT_EQ(cursor.pixmap().size(), QSize(side, side)) << thickness;
        EXPECT_EQ(cursor.hotSpot(), QPoint(hotSpot, hotSpot)) << thickness;
        return cursor.pixmap().toImage();
    };
    EXPECT_GT(check(3.9, 1, 9, 4).pixelColor(4, 0).alpha(), 150);
    check(4, 1, 6, 3);
    const QImage circle = check(20, 2, 44, 11);
    EXPECT_EQ(circle.pixelColor(22, 22).alpha(), 0);
    EXPECT_NEAR(circle.pixelColor(2, 22).alpha(), 178, 5); // the line's middle is 1 point from the edge
}

} // namespace
