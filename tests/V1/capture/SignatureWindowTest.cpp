#include "V1/capture/CaptureDevices.h"
#include "V1/capture/CaptureInterfaceDescriptions.h"
#include "V1/capture/ColorSelectButtonCell.h"
#include "V1/capture/SignaturePadBackgroundView.h"
#include "V1/capture/SignaturePadView.h"
#include "V1/capture/SignatureTrimming.h"
#include "V1/capture/SignatureWindowController.h"
#include "V1/library/LibraryFixture.h"
#include "platform/widgets/ColorPanel.h"
#include "platform/widgets/FontManager.h"
#include "platform/widgets/ModalSession.h"
#include "platform/widgets/SegmentedControl.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QSlider>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace
{

using inkory::CaptureDevices;
using inkory::Touchpad;

class Receiver : public inkory::ImageStampReceiver
{
public:
    QWidget *imageStampWindow() override { return &m_window; }
    void setImageStampViewImage(const inkory::ImagePtr &image) override { m_images.append(image); }

    QWidget m_window;
    QList<inkory::ImagePtr> m_images;
};

/// The window over an empty library, on a machine with a touchpad that may not be read.
class SignatureWindowTest : public LibraryFixture
{
protected:
    SignatureWindowTest()
    {
        CaptureDevices::setTouchpadOpener([] { return Touchpad{Touchpad::State::NotAllowed, nullptr, {}}; });
        inkory::registerCaptureInterfaceDescriptions();
        m_receiver.m_window.show();
    }
    ~SignatureWindowTest() override
    {
        SignatureWindowController::releaseShared();
        CaptureDevices::setTouchpadOpener({});
    }

    static SignatureWindowController &controller() { return SignatureWindowController::sharedController(); }
    static QWidget &window() { return *controller().window(); }
    template <class T> static T &part(const char *name) { return *window().findChild<T *>(QLatin1String(name)); }
    static SignaturePadView &pad() { return part<SignaturePadView>("signaturePadView"); }
    static ColorSelectButtonCell &swatch(int tag)
    {
        return *part<QWidget>("colorButtonsView").findChildren<ColorSelectButtonCell *>().at(tag);
    }
    static void choose(const char *control, int segment)
    {
        part<inkory::SegmentedControl>(control).button(segment)->click();
    }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window().windowHandle(), key, modifiers);
    }
    static void click(const char *button) { part<QAbstractButton>(button).click(); }
    static QPoint onPad(QPoint at) { return pad().mapTo(&window(), at); }
    static void drag(QPoint from, QPoint to)
    {
        QTest::mousePress(window().windowHandle(), Qt::LeftButton, {}, onPad(from));
        QTest::mouseMove(window().windowHandle(), onPad(to));
        QTest::mouseRelease(window().windowHandle(), Qt::LeftButton, {}, onPad(to));
    }
    static bool isEmpty() { return inkory::drawnPixels(pad().image()).isEmpty(); }

    /// Shows the window and acts in it; one that stays open is closed, and reported as a failure.
    bool run(const std::function<void()> &action)
    {
        QTimer closing;
        closing.callOnTimeout([] {
            ADD_FAILURE() << "the window stayed open";
            controller().closePanel();
        });
        QTimer::singleShot(0, &m_receiver.m_window, [&] {
            EXPECT_TRUE(QTest::qWaitForWindowActive(&window()));
            action();
            closing.start(2000);
        });
        return controller().showModal(m_receiver);
    }

    Receiver m_receiver;
};

TEST_F(SignatureWindowTest, KeepsItsSettingsAndForgetsTheDrawing)
{
    EXPECT_FALSE(run([] {
        drag({60, 40}, {100, 40});
        EXPECT_FALSE(isEmpty());
        part<QSlider>("thicknessSlider").setValue(12);
        EXPECT_TRUE(part<QLabel>("thicknessLabel").isVisible());
        EXPECT_EQ(part<QLabel>("thicknessLabel").text(), u"12"_qs);
        EXPECT_TRUE(QTest::qWaitFor([] { return !part<QLabel>("thicknessLabel").isVisible(); }));
        swatch(9).click();
        choose("drawMethodMatrix", 1);
        part<QComboBox>("backgroundStyleSelector").setCurrentIndex(4);
        choose("drawToolControl", 1);
        EXPECT_FALSE(swatch(0).isEnabled() || part<QAbstractButton>("colorWell").isEnabled());
        click("cancelButton");
    }));
    EXPECT_FALSE(run([] {
        EXPECT_EQ(pad().thickness(), 12U);
        EXPECT_EQ(pad().color(), QColor::fromRgbF(1, 0.5F, 0));
        EXPECT_EQ(pad().signatureDrawingMode(), SignatureDrawingModeClick);
        EXPECT_EQ(pad().selectedSignatureDrawTool(), SignatureDrawToolEraser);
        auto &paper = part<SignaturePadBackgroundView>("backgroundView");
        EXPECT_EQ(paper.signaturePadBackgroundStyle(), SignaturePadBackgroundStylePlain);
        EXPECT_EQ(pad().cursor().hotSpot(), QPoint(7, 7)); // half of the brush, and its edge
        EXPECT_TRUE(isEmpty());
        choose("drawToolControl", 0);
        EXPECT_TRUE(swatch(13).isEnabled());
        window().close();
    }));
    EXPECT_TRUE(m_receiver.m_images.isEmpty());
}

TEST_F(SignatureWindowTest, StoresWhatIsDrawnAndHandsItOver)
{
    EXPECT_FALSE(run([] { press(Qt::Key_Return); })); // nothing is drawn
    EXPECT_TRUE(filesInLibrary().isEmpty());
    EXPECT_TRUE(run([] {
        drag({60, 40}, {100, 40});
        drag({60, 60}, {100, 90});
        press(Qt::Key_Z, Qt::ControlModifier);
        press(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_TRUE(isEmpty());
        press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        press(Qt::Key_Return);
    }));
    ASSERT_EQ(m_receiver.m_images.size(), 1);
    EXPECT_EQ(m_receiver.m_images.first(), ImageStampCollection::stampImageAtIndex(0));
    ASSERT_EQ(filesInLibrary().size(), 1);
    const QImage stored(signaturesFolder() + u'/' + filesInLibrary().first());
    const double ratio = pad().image().devicePixelRatio();
    // A line of 5 points that is 40 long, and almost twice the margin of 10 pixels.
    EXPECT_NEAR(stored.width(), 45 * ratio + 20, 2);
    EXPECT_NEAR(stored.height(), 5 * ratio + 20, 2);
    EXPECT_EQ(stored.pixelColor(stored.rect().center()), QColor(Qt::black));
}

TEST_F(SignatureWindowTest, StoresAtTheNextAttemptWhatCouldNotBeStored)
{
    const QString inTheWay = makeFile(u"data/inkory/signatures"_qs, "in the way of the folder");
    int alerts = 0;
    inkory::Alert::setResponder([&](const inkory::Alert &alert) {
        EXPECT_TRUE(alert.informativeText.contains(ImageStampCollection::problems().value(0)));
        EXPECT_TRUE(window().isVisible() && !isEmpty());
        if (++alerts == 3)
            QFile::remove(inTheWay);
        return alerts == 1 ? 0 : 1; // close first; in the second window try again, and again
    });
    const auto draw = [] {
        drag({60, 40}, {100, 40});
        click("doneButton");
    };
    EXPECT_FALSE(run(draw));
    EXPECT_TRUE(m_receiver.m_images.isEmpty());
    EXPECT_TRUE(run(draw));
    EXPECT_EQ(alerts, 3);
    EXPECT_EQ(m_receiver.m_images.size(), 1);
}

TEST_F(SignatureWindowTest, EscapeThrowsADrawingAwayOnlyAfterAWord)
{
    EXPECT_FALSE(run([] {
        drag({60, 40}, {100, 40});
        press(Qt::Key_Escape);
        EXPECT_FALSE(part<QLabel>("adviceLabel").text().isEmpty());
        choose("drawMethodMatrix", 1); // the words are gone
        choose("drawMethodMatrix", 0);
        press(Qt::Key_Escape);
        EXPECT_TRUE(window().isVisible());
        press(Qt::Key_Escape);
        EXPECT_FALSE(window().isVisible());
    }));
}

TEST_F(SignatureWindowTest, ButtonsDoTheirOwnThingAndOnce)
{
    EXPECT_FALSE(run([] {
        drag({60, 40}, {100, 40});
        part<QAbstractButton>("cancelButton").setFocus();
        press(Qt::Key_Return);
        controller().done(); // waited in the queue
    }));
    EXPECT_TRUE(m_receiver.m_images.isEmpty());
    EXPECT_TRUE(filesInLibrary().isEmpty());
}

TEST_F(SignatureWindowTest, ALineFromClickToClickEndsWithTheWindow)
{
    run([] {
        choose("drawMethodMatrix", 1);
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({60, 40}));
        press(Qt::Key_Return);
    });
    run([] {
        QTest::mouseMove(window().windowHandle(), onPad({120, 90}));
        EXPECT_TRUE(isEmpty());
        controller().closePanel();
    });
}

TEST_F(SignatureWindowTest, ThePanelsColorIsNotThatOfTexts)
{
    inkory::sharedFontManager().setSelectedColor(Qt::green);
    run([] {
        click("colorWell");
        inkory::ColorPanel &panel = inkory::ColorPanel::sharedColorPanel();
        EXPECT_TRUE(panel.isVisible());
        Q_EMIT panel.colorChanged(Qt::cyan);
        EXPECT_EQ(pad().color(), QColor(Qt::cyan));
        choose("drawToolControl", 1);
        EXPECT_FALSE(panel.isVisible()) << "an eraser has no colour";
        choose("drawToolControl", 0);
        controller().closePanel();
    });
    EXPECT_EQ(inkory::sharedFontManager().selectedColor(), QColor(Qt::green));
}

TEST_F(SignatureWindowTest, GivesThePointerBackWhicheverWayItIsLeft)
{
    const auto isFree = [] { return !QWidget::mouseGrabber() && !QGuiApplication::overrideCursor(); };
    const std::vector<std::function<void()>> waysOut = {[] { controller().closePanel(); },
                                                        [] { window().close(); },
                                                        [] { controller().done(); },
                                                        [] { press(Qt::Key_Escape), press(Qt::Key_Escape); },
                                                        [] { inkory::abortModal(); },
                                                        [] {
                                                            window().hide();
                                                            controller().closePanel();
                                                        }};
    for (const auto &leave : waysOut) {
        run([&] {
            choose("drawMethodMatrix", 2);
            QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
            EXPECT_TRUE(pad().isTouchDrawing());
            EXPECT_EQ(QWidget::mouseGrabber(), &pad());
            EXPECT_TRUE(part<QLabel>("adviceLabel").text().contains(u"input"_qs));
            leave();
        });
        EXPECT_TRUE(isFree());
        EXPECT_FALSE(pad().isTouchDrawing() || window().isVisible());
    }
    run([&] { // Escape with the button held: its release starts nothing
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
        QTest::mousePress(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
        press(Qt::Key_Escape);
        QTest::mouseRelease(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
        EXPECT_TRUE(isFree() && !pad().isTouchDrawing());
        controller().closePanel();
    });
    run([&] {
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
        QEvent away(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(&window(), &away);
        EXPECT_TRUE(isFree() && pad().isTouchDrawing());
        QCursor::setPos(pad().mapToGlobal(QPoint(80, 50)));
        QEvent back(QEvent::WindowActivate);
        QCoreApplication::sendEvent(&window(), &back);
        EXPECT_EQ(QWidget::mouseGrabber(), &pad());
        QCoreApplication::sendEvent(&window(), &away);
        QCursor::setPos(window().mapToGlobal(QPoint(-5, -5)));
        QCoreApplication::sendEvent(&window(), &back);
        EXPECT_TRUE(isFree() && !pad().isTouchDrawing()) << "back for something else";
        controller().closePanel();
    });
}

// Whoever has the touchpad must give it back: nothing else would move the pointer.
TEST_F(SignatureWindowTest, GivesTheTouchpadBackWhicheverWayItIsLeft)
{
    QList<bool> grabs;
    QList<int> openEnds; // a pipe without a writer is a lost device
    CaptureDevices::setTouchpadOpener([&] {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC), 0);
        openEnds.append(ends[1]);
        const inkory::TouchpadReader::Surface surface{{0, 1000}, {0, 500}};
        return Touchpad{Touchpad::State::Open, std::make_unique<inkory::TouchpadReader>(ends[0], surface),
                        [&grabs](bool grabbed) {
                            grabs.append(grabbed);
                            return true;
                        }};
    });
    SignatureWindowController::releaseShared(); // the devices are opened by what is set when they are made
    const std::vector<std::function<void()>> waysOut = {[] { controller().closePanel(); }, [] { window().close(); },
                                                        [] { press(Qt::Key_Escape), press(Qt::Key_Escape); },
                                                        [] {
                                                            QEvent away(QEvent::WindowDeactivate);
                                                            QCoreApplication::sendEvent(&window(), &away);
                                                            controller().closePanel();
                                                        }};
    for (const auto &leave : waysOut) {
        grabs.clear();
        run([&] {
            choose("drawMethodMatrix", 2);
            QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
            EXPECT_EQ(grabs, QList<bool>{true});
            leave();
        });
        EXPECT_EQ(grabs, (QList<bool>{true, false}));
    }
    SignatureWindowController::releaseShared();
    std::for_each(openEnds.cbegin(), openEnds.cend(), ::close);
}

// A press and a drag draw as with a finger; a click lets the finger lie until the next one. The pad's edges are walls.
TEST_F(SignatureWindowTest, TheHeldPointerDrawsAsAFinger)
{
    run([] {
        choose("drawMethodMatrix", 2);
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({80, 50}));
        const auto inkAt = [](QPoint at) {
            return qAlpha(pad().image().pixel((QPointF(at) * pad().image().devicePixelRatio()).toPoint())) > 0;
        };
        QTest::mouseMove(window().windowHandle(), onPad({100, 80}));
        EXPECT_TRUE(isEmpty());
        drag({100, 80}, {140, 80});
        QTest::mouseMove(window().windowHandle(), onPad({140, 100}));
        EXPECT_TRUE(inkAt({120, 80}));
        EXPECT_FALSE(inkAt({140, 90}));
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({140, 100}));
        QTest::mouseMove(window().windowHandle(), onPad({-30, 100}));
        EXPECT_TRUE(inkAt({1, 100}));
        QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {}, onPad({10, 100}));
        QTest::mouseMove(window().windowHandle(), onPad({10, 60}));
        EXPECT_FALSE(inkAt({10, 80}));
        controller().closePanel();
    });
}

} // namespace
