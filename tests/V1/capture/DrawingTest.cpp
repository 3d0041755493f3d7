#include "PadFixture.h"

#include <QSignalSpy>
#include <QTabletEvent>

#include <cmath>

namespace
{

using Drawing = PadFixture;

double inkOf(const QImage &image)
{
    double pixels = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            pixels += image.pixelColor(x, y).alphaF();
    }
    return pixels;
}

TEST_F(Drawing, APressLeavesARoundDotAndDraggingDrawsUntilTheRelease)
{
    m_pad.setThickness(20);
    QTest::mouseClick(handle(), Qt::LeftButton, {}, inWindow({50, 40}));
    EXPECT_NEAR(inkOf(m_pad.image()), 314, 3); // a disc of radius 10
    mouse(QEvent::MouseMove, {150, 40});
    QTest::mouseClick(handle(), Qt::RightButton, {}, inWindow({150, 40}));
    EXPECT_EQ(drawn(), QRect(40, 30, 20, 20));
    drag({{50, 40}, {150, 40}});
    EXPECT_EQ(drawn(), QRect(40, 30, 120, 20));
}

TEST_F(Drawing, LinesAreAsThickInPointsAtEveryDensityAlsoWhenThePadGrows)
{
    m_pad.setThickness(8);
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        m_pad.resize(200, 100);
        startEmpty(ratio);
        drag({{40, 40}, {120, 40}});
        const auto pixels = [&](double points) { return static_cast<int>(std::lround(points * ratio)); };
        const QRect line(pixels(36), pixels(36), pixels(88), pixels(8));
        EXPECT_EQ(drawn(), line) << ratio;
        EXPECT_EQ(m_pad.image().pixelColor(pixels(80), pixels(36)).alpha(), 255) << ratio; // a hard edge
        m_pad.resize(221, 111);
        EXPECT_EQ(m_pad.image().size(), QSizeF(std::ceil(221 * ratio), std::ceil(111 * ratio)).toSize());
        EXPECT_EQ(drawn(), line) << ratio;
        drag({{210, 100}});
        EXPECT_EQ(drawn().right(), pixels(214) - 1) << ratio;
        m_pad.undo();
        m_pad.undo();
        EXPECT_TRUE(drawn().isEmpty()) << ratio;
    }
}

TEST_F(Drawing, TheEraserClearsItsPathAndNothingElse)
{
    m_pad.setThickness(60);
    drag({{10, 50}, {190, 50}});
    const QImage before = m_pad.image();
    m_pad.setSelectedSignatureDrawTool(SignatureDrawToolEraser);
    m_pad.setThickness(20);
    drag({{60, 50}, {140, 50}});
    for (const QPoint erased : {QPoint(60, 50), QPoint(139, 41), QPoint(100, 59), QPoint(52, 50)})
        EXPECT_EQ(m_pad.image().pixelColor(erased).alpha(), 0);
    for (const QRect untouched : {QRect(0, 0, 200, 40), QRect(0, 60, 200, 40), QRect(0, 40, 50, 20)})
        EXPECT_EQ(m_pad.image().copy(untouched), before.copy(untouched));
}

TEST_F(Drawing, ClicksStartAndStopALineThatFollowsThePointer)
{
    m_pad.setSignatureDrawingMode(SignatureDrawingModeClick);
    drag({{20, 20}, {60, 20}}); // only the release counts: starts
    drag({{60, 20}, {90, 20}}); // and stops
    mouse(QEvent::MouseMove, {120, 20});
    EXPECT_EQ(drawn(), QRect(55, 15, 10, 10));
    drag({{60, 20}});
    mouse(QEvent::MouseMove, {110.25, 20});
    m_pad.setSignatureDrawingMode(SignatureDrawingModeClick); // stops, too
    mouse(QEvent::MouseMove, {150, 20});
    EXPECT_EQ(drawn(), QRect(55, 15, 61, 10)); // to 115.25
}

TEST_F(Drawing, ABurstOfFiveThousandEventsIsTheSamePictureAsItsPointsOneByOne)
{
    const auto binary = [](double value) { return std::round(value * 64) / 64; }; // no rounding on the way
    std::vector<QPointF> points;
    for (int i = 0; i < 5000; ++i)
        points.emplace_back(binary(100 + 90 * std::cos(i * 0.013)), binary(50 + 45 * std::sin(i * 0.031)));
    m_pad.setThickness(2);
    drag(points);
    const QImage burst = m_pad.image();
    startEmpty(1);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const QPointF from = points[i == 0 ? 0 : i - 1];
        m_pad.drawFromPoint({from.x(), 100 - from.y()}, {points[i].x(), 100 - points[i].y()});
    }
    EXPECT_EQ(m_pad.image(), burst);
    EXPECT_GT(inkOf(burst), 2000);
}

TEST_F(Drawing, FingersAndPensDrawByDragging)
{
    fingers().press(3, inWindow({20, 20}));
    fingers().stationary(3).press(4, inWindow({20, 80})); // the palm
    fingers().move(3, inWindow({60, 20})).move(4, inWindow({60, 80}));
    fingers().release(3, inWindow({70, 20})).stationary(4);
    fingers().release(4, inWindow({60, 80}));
    EXPECT_EQ(drawn(), QRect(15, 15, 60, 10));

    startEmpty(1); // a finger that is lifted in another mode
    fingers().press(5, inWindow({20, 20}));
    m_pad.setSignatureDrawingMode(SignatureDrawingModeClick);
    fingers().release(5, inWindow({20, 20}));
    m_pad.setSignatureDrawingMode(SignatureDrawingModeDrag);
    startEmpty(1);
    fingers().press(6, inWindow({20, 60}));
    fingers().release(6, inWindow({60, 60}));
    EXPECT_EQ(drawn(), QRect(15, 55, 50, 10));

    const QPointingDevice pen(u"pen"_qs, 1, QInputDevice::DeviceType::Stylus, QPointingDevice::PointerType::Pen,
                              QInputDevice::Capability::All, 1, 2);
    startEmpty(1);
    const auto tablet = [&](QEvent::Type type, QPointF position, Qt::MouseButton button, Qt::MouseButtons held) {
        const QPointF at = position + QPointF(m_pad.pos());
        QTabletEvent event(type, &pen, at, m_window.mapToGlobal(at), 0.5, 0, 0, 0, 0, 0, Qt::NoModifier, button, held);
        QCoreApplication::sendEvent(handle(), &event);
    };
    tablet(QEvent::TabletPress, {20, 60.5}, Qt::LeftButton, Qt::LeftButton);
    tablet(QEvent::TabletMove, {60.5, 60.5}, Qt::NoButton, Qt::LeftButton);
    tablet(QEvent::TabletRelease, {60.5, 60.5}, Qt::LeftButton, Qt::NoButton);
    tablet(QEvent::TabletMove, {120, 60}, Qt::NoButton, Qt::NoButton);
    EXPECT_EQ(drawn(), QRect(15, 55, 51, 11)); // 15 to 65.5, 55.5 to 65.5
}

TEST_F(Drawing, UndoAndRedoGiveBackTheExactPixels)
{
    QSignalSpy changes(&m_pad, &SignaturePadView::undoStateChanged);
    std::vector<QImage> pictures{m_pad.image()};
    const auto remember = [&] { pictures.push_back(m_pad.image()); };
    m_pad.clear(); // nothing to undo
    EXPECT_FALSE(m_pad.canUndo());
    drag({{10, 10}, {190, 90}, {20, 70}});
    remember();
    m_pad.setSelectedSignatureDrawTool(SignatureDrawToolEraser);
    drag({{100, 0}, {100, 99}});
    remember();
    m_pad.clear();
    remember();
    EXPECT_EQ(pictures.back(), pictures.front());
    EXPECT_EQ(changes.size(), 1);
    for (std::size_t step = 3; step-- > 0;) {
        m_pad.undo();
        EXPECT_EQ(m_pad.image(), pictures[step]) << step;
    }
    EXPECT_FALSE(m_pad.canUndo());
    for (std::size_t step = 1; step <= 3; ++step) {
        m_pad.redo();
        EXPECT_EQ(m_pad.image(), pictures[step]) << step;
    }
    m_pad.undo();
    drag({{20, 12}});
    EXPECT_FALSE(m_pad.canRedo());
}

TEST(StrokeHistory, DropsTheOldestStepsForItsLimit)
{
    StrokeHistory history(2 * 64 * 64 * 4); // two squares
    QImage image = emptyPadImage(QSizeF(256, 64), 1);
    for (int step = 1; step <= 3; ++step) {
        history.willPaint(image, QRect(10, 10, 5, 5));
        image.fill(QColor(0, 0, 0, step));
        history.endStep();
    }
    history.undo(image);
    EXPECT_EQ(history.undo(image), QRect(0, 0, 64, 64));
    EXPECT_EQ(image.pixelColor(12, 12).alpha(), 1);
    EXPECT_FALSE(history.canUndo());
    history.willPaint(image, image.rect()); // four squares: the one in progress is kept
    EXPECT_EQ(history.undo(image), image.rect());
}

} // namespace
